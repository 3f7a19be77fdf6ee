// Rules, and the file that holds them.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kelp0lang/XmlDiffManager.h"

namespace kelp {

using sarn_text::CSarnStringT;

namespace {

constexpr const WChar* kSource = KTEXT("common/kelp/kelp0lang/XmlDiffManager");
constexpr int kNoElement = 10;
constexpr int kBufferSize = 4096;
// What stands above an inserted element in a diff file: RibbonDiffRules, Rules, Rule, Element.
constexpr int kLevelsOfRule = 4;

constexpr const WChar* kRoot = KTEXT("RibbonDiffRules");
constexpr const WChar* kOrigFile = KTEXT("OrigFile");
constexpr const WChar* kRules = KTEXT("Rules");
constexpr const WChar* kRule = KTEXT("Rule");
constexpr const WChar* kType = KTEXT("type");
constexpr const WChar* kParentTags = KTEXT("ParentTags");
constexpr const WChar* kElementId = KTEXT("ElementId");
constexpr const WChar* kAttribLabel = KTEXT("AttribLabel");
constexpr const WChar* kAttribValue = KTEXT("AttribValue");
constexpr const WChar* kChildTag = KTEXT("ChildTag");
constexpr const WChar* kChildId = KTEXT("ChildId");
constexpr const WChar* kElement = KTEXT("Element");
constexpr const WChar* kSortedChildren = KTEXT("SortedChildren");
constexpr const WChar* kContent = KTEXT("Content");
// In a list, an id that is empty.
constexpr const WChar* kNoId = KTEXT("-1");

// By the value of the type.
constexpr std::array<std::basic_string_view<WChar>, 7> kTypeNames = {
    KTEXT("delete_attrib"), KTEXT("insert_attrib"), KTEXT("edit_attrib"), KTEXT("delete_child"),
    KTEXT("insert_child"),  KTEXT("sort_children"), KTEXT("edit_content")};

using Words = std::basic_string<WChar>;

void AddWord(Words& words, const WString& word) {
  if (!words.empty()) words += KTEXT(' ');
  words += word.empty() ? kNoId : word.c_str();
}

// An id that is empty stands as "-1", a tag never is.
template <class Take>
void SplitWords(const WChar* text, Take take) {
  Words word;
  for (const WChar* end = text; *end != 0;) {
    const WChar* const begin = end;
    while (*end != 0 && *end != KTEXT(' ')) ++end;
    word.assign(begin, end);
    if (!word.empty()) take(WString(word.c_str()));
    while (*end == KTEXT(' ')) ++end;
  }
}

// A path is mostly that of the rule before, but for its end, and shares the texts with it.
void ShareTexts(CXmlDiffManager::TPath& path, const CXmlDiffManager::TPath& before) {
  for (std::size_t level = 0; level < std::min(path.size(), before.size()); ++level) {
    if (path[level] != before[level]) return;
    path[level] = before[level];
  }
}

WString IdOfWord(const WString& word) {
  return word.Compare(kNoId) == 0 ? WString() : word;
}

}  // namespace

CXmlDiffManager::TDiffRule::~TDiffRule() = default;

CXmlDiffManager::TDiffRule_InsChild::TDiffRule_InsChild(const TDiffRule_InsChild& other)
    : TDiffRule(other) {
  if (other.m_pElement == nullptr) return;
  m_pElement = std::make_unique<CGenericXmlElement>(*other.m_pElement);
}

std::unique_ptr<CXmlDiffManager::TDiffRule> CXmlDiffManager::TDiffRule::Copy() const {
  return VisitRule(*this, [](const auto& rule) -> std::unique_ptr<TDiffRule> {
    return std::make_unique<std::remove_cvref_t<decltype(rule)>>(rule);
  });
}

// Writes rules to a diff file.
class CXmlDiffManager::CXmlDiffRulesExporter : public ::XmlWriter {
 public:
  explicit CXmlDiffRulesExporter(const WString& diffPath)
      : ::XmlWriter(diffPath.c_str(), kRoot, nullptr) {}
  ~CXmlDiffRulesExporter() override = default;

  bool Export(const WString& origName, const TRules& rules) {
    if (!openFile()) return false;
    writeStartTagWithAttrib(kRoot, KTEXT("version"), KTEXT("1.0"), false);
    Write(kOrigFile, origName);
    writeStartTag(kRules);
    for (const auto& rule : rules) WriteRule(*rule);
    writeEndTag(kRules);
    closeFile();
    return true;
  }

 private:
  void Write(const WChar* tag, const WString& text) { writeReqXmlStringElement(tag, text.c_str()); }
  void WriteOpt(const WChar* tag, const WString& text) {
    writeOptXmlStringElement(tag, text.c_str(), KTEXT(""));
  }

  void WriteRule(const TDiffRule& rule) {
    writeStartTagWithAttrib(kRule, kType, kTypeNames[rule.m_eType].data(), false);
    Words path;
    for (const auto& [tag, id] : rule.m_ParentTags) {
      AddWord(path, tag);
      AddWord(path, id);
    }
    writeReqXmlStringElement(kParentTags, path.c_str());
    WriteOpt(kElementId, rule.m_sElementId);
    VisitRule(rule, [this](const auto& typed) { WriteFields(typed); });
    writeEndTag(kRule);
  }

  void WriteFields(const TDiffRule_DelAttrib& rule) { Write(kAttribLabel, rule.m_sAttribLabel); }
  void WriteFields(const TDiffRule_InsAttrib& rule) {
    Write(kAttribLabel, rule.m_sAttribLabel);
    Write(kAttribValue, rule.m_sAttribValue);
  }
  void WriteFields(const TDiffRule_EditAttrib& rule) {
    Write(kAttribLabel, rule.m_sAttribLabel);
    Write(kAttribValue, rule.m_sAttribValue);
  }
  void WriteFields(const TDiffRule_DelChild& rule) {
    Write(kChildTag, rule.m_sChildTag);
    WriteOpt(kChildId, rule.m_sChildId);
  }
  void WriteFields(const TDiffRule_InsChild& rule) {
    writeStartTag(kElement);
    if (rule.m_pElement != nullptr) detail::WriteXmlElementTo(*this, *rule.m_pElement, true);
    writeEndTag(kElement);
  }
  void WriteFields(const TDiffRule_SortChild& rule) {
    Words ids;
    for (const WString& id : rule.m_SortedChildren) AddWord(ids, id);
    writeReqXmlStringElement(kSortedChildren, ids.c_str());
  }
  void WriteFields(const TDiffRule_EditContent& rule) { Write(kContent, rule.m_sContent); }
};

// Reads rules, or the name alone, from a diff file.
class CXmlDiffManager::CXmlDiffRulesImporter : public sarn::XmlExpatHybridParser {
 public:
  CXmlDiffRulesImporter() : XmlExpatHybridParser(nullptr, false) {
    InitParser(nullptr);
    setMaxDepth(kMaxLevels + kLevelsOfRule);
  }

  // What stands before a fault is kept.
  bool ImportRules(const WString& diffPath, TRules& rules, CSarnStringT<WChar>* error, int* line) {
    m_pRules = &rules;
    registerXmlDomCallback(&CXmlDiffRulesImporter::ImportRule, 3, kRoot, kRules, kRule);
    return Process(diffPath, error, line);
  }
  bool ImportOrigName(const WString& diffPath, WString& origName) {
    m_pOrigName = &origName;
    registerXmlDomCallback(&CXmlDiffRulesImporter::ImportOrigFile, 2, kRoot, kOrigFile);
    return Process(diffPath, nullptr, nullptr);
  }

 protected:
  bool processXmlSaxElementStart(const CSarnStringT<WChar>&) override { return false; }
  bool processXmlSaxElementEnd(const sarn::XmlElement&) override { return false; }

 private:
  bool Process(const WString& diffPath, CSarnStringT<WChar>* error, int* line) {
    try {
      return ProcessXmlFile(diffPath.c_str(), kBufferSize, error, line);
    } catch (const Exception&) {
      return false;
    }
  }

  void ImportRule(const boost::shared_ptr<const sarn::XmlElement>& element) {
    if (element == nullptr || m_pRules == nullptr) riseError(kSource, 102, kNoElement, KTEXT(""));
    std::unique_ptr<TDiffRule> rule = MakeRule(TypeOf(element->getReqAttribValue(kType)));
    WString tag;
    bool isTag = true;
    SplitWords(element->getReqChildContent(kParentTags), [&](const WString& word) {
      if (isTag) {
        tag = word;
      } else {
        rule->m_ParentTags.emplace_back(tag, IdOfWord(word));
      }
      isTag = !isTag;
    });
    if (!m_pRules->empty()) ShareTexts(rule->m_ParentTags, m_pRules->back()->m_ParentTags);
    rule->m_sElementId = element->getOptChildContent(kElementId, KTEXT(""));
    VisitRule(*rule, [&element](auto& typed) { ReadFields(typed, *element); });
    m_pRules->push_back(std::move(rule));
  }

  void ImportOrigFile(const boost::shared_ptr<const sarn::XmlElement>& element) {
    if (element == nullptr || m_pOrigName == nullptr) {
      riseError(kSource, 136, kNoElement, KTEXT(""));
    }
    *m_pOrigName = element->getReqContent();
  }

  // A text that is none of the names means the last type.
  static EDiffRule TypeOf(const WChar* name) {
    const auto* const found = std::find(kTypeNames.begin(), kTypeNames.end() - 1, name);
    return static_cast<EDiffRule>(found - kTypeNames.begin());
  }

  static void ReadFields(TDiffRule_DelAttrib& rule, const sarn::XmlElement& element) {
    rule.m_sAttribLabel = element.getReqChildContent(kAttribLabel);
  }
  static void ReadFields(TDiffRule_InsAttrib& rule, const sarn::XmlElement& element) {
    rule.m_sAttribLabel = element.getReqChildContent(kAttribLabel);
    rule.m_sAttribValue = element.getReqChildContent(kAttribValue);
  }
  static void ReadFields(TDiffRule_EditAttrib& rule, const sarn::XmlElement& element) {
    rule.m_sAttribLabel = element.getReqChildContent(kAttribLabel);
    rule.m_sAttribValue = element.getReqChildContent(kAttribValue);
  }
  static void ReadFields(TDiffRule_DelChild& rule, const sarn::XmlElement& element) {
    rule.m_sChildTag = element.getReqChildContent(kChildTag);
    rule.m_sChildId = element.getOptChildContent(kChildId, KTEXT(""));
  }
  static void ReadFields(TDiffRule_InsChild& rule, const sarn::XmlElement& element) {
    const auto inserted = element.getReqChildByTag(kElement);
    if (inserted->getChildCount() == 0) return;
    rule.m_pElement = std::make_unique<CGenericXmlElement>(*inserted->getChildAt(0));
  }
  static void ReadFields(TDiffRule_SortChild& rule, const sarn::XmlElement& element) {
    SplitWords(element.getReqChildContent(kSortedChildren),
               [&rule](const WString& word) { rule.m_SortedChildren.push_back(IdOfWord(word)); });
  }
  static void ReadFields(TDiffRule_EditContent& rule, const sarn::XmlElement& element) {
    rule.m_sContent = element.getReqChildContent(kContent);
  }

  TRules* m_pRules = nullptr;
  WString* m_pOrigName = nullptr;
};

std::unique_ptr<CXmlDiffManager::TDiffRule> CXmlDiffManager::MakeRule(EDiffRule type) {
  const TPath path;
  const WString id;
  switch (type) {
    case eDelAttrib:
      return std::make_unique<TDiffRule_DelAttrib>(type, path, id);
    case eInsAttrib:
      return std::make_unique<TDiffRule_InsAttrib>(type, path, id);
    case eEditAttrib:
      return std::make_unique<TDiffRule_EditAttrib>(type, path, id);
    case eDelChild:
      return std::make_unique<TDiffRule_DelChild>(type, path, id);
    case eInsChild:
      return std::make_unique<TDiffRule_InsChild>(type, path, id);
    case eSortChild:
      return std::make_unique<TDiffRule_SortChild>(type, path, id);
    case eEditContent:
      break;
  }
  return std::make_unique<TDiffRule_EditContent>(type, path, id);
}

void CXmlDiffManager::Clear() {
  m_Rules.clear();
}

bool CXmlDiffManager::WriteDiffFile(const WString& diffPath, const WString& origName) const {
  return CXmlDiffRulesExporter(diffPath).Export(origName, m_Rules);
}

bool CXmlDiffManager::ReadDiffFile(const WString& diffPath, CSarnStringT<WChar>* error, int* line) {
  Clear();
  return CXmlDiffRulesImporter().ImportRules(diffPath, m_Rules, error, line);
}

bool CXmlDiffManager::GetOrigName(const WString& diffPath, WString& origName) {
  return CXmlDiffRulesImporter().ImportOrigName(diffPath, origName);
}

template <class Rule>
Rule& CXmlDiffManager::AddRule(EDiffRule type, const TPath& path, const sarn::XmlElement& element) {
  auto rule = std::make_unique<Rule>(type, path, GetXmlElementId(element));
  Rule& added = *rule;
  m_Rules.push_back(std::move(rule));
  return added;
}

void CXmlDiffManager::AddRuleDelAttrib(const TPath& path, const sarn::XmlElement& element,
                                       const WString& label) {
  AddRule<TDiffRule_DelAttrib>(eDelAttrib, path, element).m_sAttribLabel = label;
}

void CXmlDiffManager::AddRuleInsAttrib(const TPath& path, const sarn::XmlElement& element,
                                       const WString& label, const WString& value) {
  auto& rule = AddRule<TDiffRule_InsAttrib>(eInsAttrib, path, element);
  rule.m_sAttribLabel = label;
  rule.m_sAttribValue = value;
}

void CXmlDiffManager::AddRuleEditAttrib(const TPath& path, const sarn::XmlElement& element,
                                        const WString& label, const WString& value) {
  auto& rule = AddRule<TDiffRule_EditAttrib>(eEditAttrib, path, element);
  rule.m_sAttribLabel = label;
  rule.m_sAttribValue = value;
}

void CXmlDiffManager::AddRuleDelChild(const TPath& path, const sarn::XmlElement& element,
                                      const sarn::XmlElement& child) {
  auto& rule = AddRule<TDiffRule_DelChild>(eDelChild, path, element);
  rule.m_sChildTag = child.getTag().c_str();
  rule.m_sChildId = GetXmlElementId(child);
}

void CXmlDiffManager::AddRuleInsChild(const TPath& path, const sarn::XmlElement& element,
                                      const CGenericXmlElement& child) {
  AddRule<TDiffRule_InsChild>(eInsChild, path, element).m_pElement =
      std::make_unique<CGenericXmlElement>(child);
}

void CXmlDiffManager::AddRuleSortChild(const TPath& path, const sarn::XmlElement& element,
                                       const std::vector<WString>& sortedChildren) {
  AddRule<TDiffRule_SortChild>(eSortChild, path, element).m_SortedChildren = sortedChildren;
}

void CXmlDiffManager::AddRuleEditContent(const TPath& path, const sarn::XmlElement& element,
                                         const WString& content) {
  AddRule<TDiffRule_EditContent>(eEditContent, path, element).m_sContent = content;
}

}  // namespace kelp
