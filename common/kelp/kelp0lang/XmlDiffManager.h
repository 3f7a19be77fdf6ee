// Carries the changes that a user made to a ribbon layout over to the next layout that is shipped.
//
//   // The user's layout differs from the shipped one by these rules:
//   kelp::CXmlDiffManager().GenerateDiffFile(shipped, users, diff);
//   // The next version's layout, with the same changes:
//   kelp::CXmlDiffManager().ApplyDiffFile(nextShipped, diff, nextUsers);
//
// Layouts are XML files with the root Settings. Children are paired by tag, id and class, where the
// id is the attribute Id or, without one, BarID; no rule knows more of a layout than a few names.
// Texts that a program translates (Caption, TooltipText and their like) make no rule.
//
// A diff file is XML too: the root RibbonDiffRules with OrigFile, the name of the first layout, and
// Rules, each Rule with the path of the element that it is about:
//
//   <Rule type="edit_attrib">
//     <ParentTags>Settings -1 NormalLayout -1 CommandBars -1 CommandBar 7</ParentTags>
//     <ElementId>7</ElementId>
//     <AttribLabel>Visible</AttribLabel>
//     <AttribValue>0</AttribValue>
//   </Rule>
//
// Tags and ids in a path are parted by blanks, "-1" stands for no id; an id that holds a blank
// can't be told. Text content is compared, but the layout that is written holds none.
//
// Time grows as n log n with the number of an element's children. Layouts and diff files may have
// 1000 levels of elements; deeper ones count as unreadable.
//
// Use one manager for one operation: the bar ids that it has met outlive the operation. Threads: a
// manager belongs to one thread at a time.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelp0lang/XmlGeneric.h"
#include "sarnutils/SarnString.h"
#include "sarnutils/XmlElement.h"

namespace kelp {

class KELP0LANG_API CXmlDiffManager {
 public:
  enum EDiffRule : std::int32_t {
    eDelAttrib = 0,
    eInsAttrib = 1,
    eEditAttrib = 2,
    eDelChild = 3,
    eInsChild = 4,
    eSortChild = 5,
    eEditContent = 6,
  };
  // Tag and id of each element from the root down to that which a rule is about.
  using TPath = std::vector<std::pair<WString, WString>>;

  struct TDiffRule {
    TDiffRule(EDiffRule type, const TPath& path, const WString& elementId)
        : m_eType(type), m_ParentTags(path), m_sElementId(elementId) {}
    TDiffRule(const TDiffRule&) = default;
    TDiffRule& operator=(const TDiffRule&) = delete;
    virtual ~TDiffRule();
    // With a deep copy of what it inserts.
    std::unique_ptr<TDiffRule> Copy() const;

    EDiffRule m_eType;
    TPath m_ParentTags;
    WString m_sElementId;
  };
  struct TDiffRule_Attrib : TDiffRule {
    using TDiffRule::TDiffRule;
    WString m_sAttribLabel;
  };
  struct TDiffRule_DelAttrib : TDiffRule_Attrib {
    using TDiffRule_Attrib::TDiffRule_Attrib;
  };
  struct TDiffRule_InsAttrib : TDiffRule_Attrib {
    using TDiffRule_Attrib::TDiffRule_Attrib;
    WString m_sAttribValue;
  };
  struct TDiffRule_EditAttrib : TDiffRule_Attrib {
    using TDiffRule_Attrib::TDiffRule_Attrib;
    WString m_sAttribValue;
  };
  struct TDiffRule_DelChild : TDiffRule {
    using TDiffRule::TDiffRule;
    WString m_sChildTag;
    WString m_sChildId;
  };
  struct TDiffRule_InsChild : TDiffRule {
    using TDiffRule::TDiffRule;
    TDiffRule_InsChild(const TDiffRule_InsChild& other);
    // Null in a rule that inserts nothing.
    std::unique_ptr<CGenericXmlElement> m_pElement;
  };
  struct TDiffRule_SortChild : TDiffRule {
    using TDiffRule::TDiffRule;
    std::vector<WString> m_SortedChildren;
  };
  struct TDiffRule_EditContent : TDiffRule {
    using TDiffRule::TDiffRule;
    WString m_sContent;
  };
  using TRules = std::vector<std::unique_ptr<TDiffRule>>;

  // What came of a rule, beyond its taking effect.
  enum class ERuleEvent {
    eOldValue,        // the attribute had the value that is told
    eNoTarget,        // the layout has no such element
    eRoot,            // the element is the root, which no rule reaches
    eNoChild,         // there is no such child to delete
    eNoElement,       // the rule holds nothing to insert
    eUnknownControl,  // the layout doesn't know the control of the id; nothing is inserted
    eUnknownWithin,   // likewise a control within what is inserted, which goes in without it
    eOwnBar,          // a popup control goes in without the number of its bar, which is not above
                      // those of the layout
    eContent,         // the text is another, but layouts are written without text
  };
  struct TRuleEvent {
    std::size_t rule;  // its place in GetRules
    ERuleEvent event;
    WString text;
  };
  using TRuleEvents = std::vector<TRuleEvent>;

  // Of a layout.
  static constexpr int kMaxLevels = 1000;
  static constexpr const WChar* kRootTag = KTEXT("Settings");

  CXmlDiffManager();
  // Deep copies.
  CXmlDiffManager(const CXmlDiffManager& other);
  CXmlDiffManager& operator=(const CXmlDiffManager& other);
  ~CXmlDiffManager();

  // Writes what turns the first layout into the second. False, and no file, where a layout can't be
  // read or the first has another root; false too where the file can't be opened for writing.
  bool GenerateDiffFile(const WString& firstPath, const WString& secondPath,
                        const WString& diffPath);
  // Writes a diff file without rules. False where it can't be opened for writing.
  bool GenerateEmptyDiffFile(const WString& diffPath, const WString& origName);
  // Reads the name of the first layout from a diff file. False where the file can't be read; the
  // name then is as it was, and so it is where the file has none.
  bool GetOrigName(const WString& diffPath, WString& origName);

  // Writes a layout with the rules of a diff file applied. False where the layout can't be read or
  // the output can't be opened for writing. A rule that finds no target does nothing, a control
  // that the layout doesn't know isn't inserted, and of a diff file that can't be read those rules
  // count that stand before the fault.
  bool ApplyDiffFile(const WString& layoutPath, const WString& diffPath, const WString& outputPath);
  // The same, and tells what came of the rules, in their order.
  bool ApplyDiffFile(const WString& layoutPath, const WString& diffPath, const WString& outputPath,
                     TRuleEvents& events);
  // Tells what would come of them, and writes nothing.
  bool CheckDiffFile(const WString& layoutPath, const WString& diffPath, TRuleEvents& events);

  // Reads the rules of a diff file. False where it can't be read as a whole; the rules are then
  // those before the fault. Unless null, error and line receive what is wrong, and where (0: in the
  // file as a whole).
  bool ReadDiffFile(const WString& diffPath, sarn_text::CSarnStringT<WChar>* error = nullptr,
                    int* line = nullptr);
  // Those that were read or generated last. Applying takes out of them what isn't inserted.
  const TRules& GetRules() const { return m_Rules; }
  // Calls visit with a rule as the structure of its type.
  template <class Rule, class Visit>
  static auto VisitRule(Rule& rule, Visit visit);

 private:
  class CXmlDiffRulesExporter;
  class CXmlDiffRulesImporter;
  class CChildIndex;
  class CEditedLayout;

  // The attribute Id, or BarID where that is missing or empty; empty without either.
  static WString GetXmlElementId(const CGenericXmlElement& element);
  static const WChar* GetXmlElementId(const sarn::XmlElement& element);

  // Rules and the file that holds them.
  static std::unique_ptr<TDiffRule> MakeRule(EDiffRule type);
  void Clear();
  bool WriteDiffFile(const WString& diffPath, const WString& origName) const;
  template <class Rule>
  Rule& AddRule(EDiffRule type, const TPath& path, const sarn::XmlElement& element);
  void AddRuleDelAttrib(const TPath& path, const sarn::XmlElement& element, const WString& label);
  void AddRuleInsAttrib(const TPath& path, const sarn::XmlElement& element, const WString& label,
                        const WString& value);
  void AddRuleEditAttrib(const TPath& path, const sarn::XmlElement& element, const WString& label,
                         const WString& value);
  void AddRuleDelChild(const TPath& path, const sarn::XmlElement& element,
                       const sarn::XmlElement& child);
  void AddRuleInsChild(const TPath& path, const sarn::XmlElement& element,
                       const CGenericXmlElement& child);
  void AddRuleSortChild(const TPath& path, const sarn::XmlElement& element,
                        const std::vector<WString>& sortedChildren);
  void AddRuleEditContent(const TPath& path, const sarn::XmlElement& element,
                          const WString& content);

  // Generation: what turns the first tree into the second.
  bool GenerateDiffRules(const boost::shared_ptr<const sarn::XmlElement>& first,
                         const boost::shared_ptr<const sarn::XmlElement>& second);
  bool ProcessElements(TPath path, const sarn::XmlElement& first, const sarn::XmlElement& second);
  void ProcessAttribs(const TPath& path, const sarn::XmlElement& first,
                      const sarn::XmlElement& second);
  void ProcessContent(const TPath& path, const sarn::XmlElement& first,
                      const sarn::XmlElement& second);
  void ProcessChildren(const TPath& path, const sarn::XmlElement& first,
                       const sarn::XmlElement& second);
  bool ProcessFirstChildren(const TPath& path, const sarn::XmlElement& first,
                            const sarn::XmlElement& second);
  std::vector<WString> ProcessSecondChildren(const TPath& path, const sarn::XmlElement& first,
                                             const sarn::XmlElement& second, bool moved);
  int FindChild(const boost::shared_ptr<const sarn::XmlElement>& child,
                const CChildIndex& otherParent, bool isFromFirst);
  static bool IsSkipAttribute(const WChar* name);
  bool IsSkipElement(const TPath& path, const sarn::XmlElement& element, bool isFromFirst);
  void MatchPopupBarIds(const sarn::XmlElement& first, const sarn::XmlElement& second);
  void AdjustCommandBarId(CGenericXmlElement& element);
  int ExtractMaxOrigBarId(const sarn::XmlElement& root);
  std::map<WString, WString>& BarIdsFrom(bool isFromFirst);

  // Application: each gives whether the rule took effect.
  std::unique_ptr<CGenericXmlElement> ReadAndChange(const WString& layoutPath,
                                                    const WString& diffPath, TRuleEvents& events);
  void ApplyDiffRules(CGenericXmlElement& root, TRuleEvents& events);
  struct TFound;
  // The id is that of the path's last pair.
  static TFound FindElementFromRoot(const TPath& path, const WString& id, CEditedLayout& layout);
  // The same, and tells where there is none.
  static TFound FindTarget(const TDiffRule& rule, CEditedLayout& layout);
  bool SetAttrib(const TDiffRule_Attrib& rule, const WString* value, CEditedLayout& layout);
  bool ApplyRuleDelAttrib(const TDiffRule_DelAttrib& rule, CEditedLayout& layout);
  bool ApplyRuleInsAttrib(const TDiffRule_InsAttrib& rule, CEditedLayout& layout);
  bool ApplyRuleEditAttrib(const TDiffRule_EditAttrib& rule, CEditedLayout& layout);
  bool ApplyRuleDelChild(const TDiffRule_DelChild& rule, CEditedLayout& layout);
  bool ApplyRuleInsChild(const TDiffRule_InsChild& rule, CEditedLayout& layout);
  bool ApplyRuleSortChild(const TDiffRule_SortChild& rule, CEditedLayout& layout);
  bool ApplyRuleEditContent(const TDiffRule_EditContent& rule, CEditedLayout& layout);
  bool ValidateElement(CEditedLayout& layout, CGenericXmlElement& element, int index);
  void RemoveInvalidAttribs(CEditedLayout& layout, CGenericXmlElement& element) const;
  bool FindValidatedElementId(const WString& id, CEditedLayout& layout);
  void AddValidatedElement(const CGenericXmlElement& element);

  TRules m_Rules;
  std::set<WString> m_ValidatedIds;  // of the controls of a layout
  std::map<WString, WString> m_OrigToNewBarIds;
  std::map<WString, WString> m_NewToOrigBarIds;
  int m_nNextBarId = 0;
};

template <class Rule, class Visit>
auto CXmlDiffManager::VisitRule(Rule& rule, Visit visit) {
  const auto as = [&]<class Typed>(Typed*) {
    using Wanted = std::conditional_t<std::is_const_v<Rule>, const Typed, Typed>;
    return visit(static_cast<Wanted&>(rule));
  };
  switch (rule.m_eType) {
    case eDelAttrib:
      return as(static_cast<TDiffRule_DelAttrib*>(nullptr));
    case eInsAttrib:
      return as(static_cast<TDiffRule_InsAttrib*>(nullptr));
    case eEditAttrib:
      return as(static_cast<TDiffRule_EditAttrib*>(nullptr));
    case eDelChild:
      return as(static_cast<TDiffRule_DelChild*>(nullptr));
    case eInsChild:
      return as(static_cast<TDiffRule_InsChild*>(nullptr));
    case eSortChild:
      return as(static_cast<TDiffRule_SortChild*>(nullptr));
    case eEditContent:
      break;
  }
  return as(static_cast<TDiffRule_EditContent*>(nullptr));
}

}  // namespace kelp
