// What turns one layout into another: both trees are walked in step, and children are paired by
// tag, id and class.
#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "kelp0lang/XmlDiffIndex.h"
#include "kelp0lang/XmlDiffManager.h"

namespace kelp {
namespace {

using WideView = std::basic_string_view<WChar>;

constexpr const WChar* kNoId = KTEXT("-1");
constexpr const WChar* kClass = KTEXT("Class");
constexpr const WChar* kCommandBar = KTEXT("CommandBar");
constexpr const WChar* kPopupControl = KTEXT("CXTPControlPopupEx");
constexpr const WChar* kPopupBar = KTEXT("CXTPPopupBar");
constexpr int kBarIdGap = 1000;

// The texts that a program translates, and ids that each layout numbers in its own way.
constexpr std::array<WideView, 8> kSkippedAttributes = {
    KTEXT("HideFlags"), KTEXT("Category"),     KTEXT("TooltipText"), KTEXT("DescriptionText"),
    KTEXT("Caption"),   KTEXT("CommandBarId"), KTEXT("BarID"),       KTEXT("KeyboardTip")};

// The tags above the bars of the normal layout.
constexpr std::array<WideView, 4> kBarList = {KTEXT("Settings"), KTEXT("NormalLayout"),
                                              KTEXT("CommandBars"), KTEXT("CommandBars")};

WideView ClassOf(const sarn::XmlElement& element) {
  return element.getOptAttribValue(kClass, KTEXT(""));
}

// A sum that would leave int stays at its end.
int AddUpToEnd(int a, int b) {
  return a > INT_MAX - b ? INT_MAX : a + b;
}

// Without line feeds and tabs, and without blanks at the ends.
WString CleanContent(const WChar* text) {
  WString clean(text);
  clean.ReplaceInPlace(KTEXT("\n"), KTEXT(""));
  clean.ReplaceInPlace(KTEXT("\t"), KTEXT(""));
  return clean.Trim();
}

std::size_t Mix(std::size_t hash, WideView text) {
  constexpr std::size_t kFactor = 0x9E3779B97F4A7C15u;
  return (hash ^ std::hash<WideView>()(text)) * kFactor;
}

}  // namespace

// Finds children of an element by tag, id and class without a walk over all of them.
class CXmlDiffManager::CChildIndex {
 public:
  // The texts of the element are used as long as the index is.
  explicit CChildIndex(const sarn::XmlElement& parent);

  // The place of the first child with the tag, and with the id and the class unless these are
  // empty; -1 where there is none.
  int Find(WideView tag, WideView id, WideView className) const;

 private:
  // What a search asks for besides the tag.
  enum Kind { kTag = 0, kId = 1, kClass = 2, kKinds = 4 };
  struct Child {
    WideView tag;
    WideView id;
    WideView className;
  };

  static bool Matches(const Child& child, const Child& wanted, unsigned kind);
  static std::size_t HashOf(const Child& child, unsigned kind);
  const detail::HashedNumbers& PlacesOf(unsigned kind) const;

  std::vector<Child> m_children;
  // For each kind, made for the first search: the place of the first child of each key.
  mutable std::array<std::optional<detail::HashedNumbers>, kKinds> m_places;
};

CXmlDiffManager::CChildIndex::CChildIndex(const sarn::XmlElement& parent) {
  m_children.reserve(static_cast<std::size_t>(parent.getChildCount()));
  sarn::XmlElement::ChildEnumerator children(parent, KTEXT(""));
  for (boost::shared_ptr<const sarn::XmlElement> child; children.getNext(child);) {
    m_children.push_back({child->getTag().c_str(), GetXmlElementId(*child),
                          child->getOptAttribValue(KTEXT("Class"), KTEXT(""))});
  }
}

int CXmlDiffManager::CChildIndex::Find(WideView tag, WideView id, WideView className) const {
  if (m_children.empty()) return -1;
  const unsigned kind = (id.empty() ? kTag : kId) | (className.empty() ? kTag : kClass);
  const Child wanted{tag, id, className};
  return PlacesOf(kind).Find(HashOf(wanted, kind), [&](std::int32_t place) {
    return Matches(m_children[static_cast<std::size_t>(place)], wanted, kind);
  });
}

bool CXmlDiffManager::CChildIndex::Matches(const Child& child, const Child& wanted, unsigned kind) {
  return child.tag == wanted.tag && ((kind & kId) == 0 || child.id == wanted.id) &&
         ((kind & kClass) == 0 || child.className == wanted.className);
}

std::size_t CXmlDiffManager::CChildIndex::HashOf(const Child& child, unsigned kind) {
  std::size_t hash = Mix(0, child.tag);
  if ((kind & kId) != 0) hash = Mix(hash, child.id);
  if ((kind & kClass) != 0) hash = Mix(hash, child.className);
  return hash;
}

const detail::HashedNumbers& CXmlDiffManager::CChildIndex::PlacesOf(unsigned kind) const {
  std::optional<detail::HashedNumbers>& places = m_places[kind];
  if (places) return *places;
  places.emplace(m_children.size());
  for (std::size_t place = 0; place < m_children.size(); ++place) {
    const Child& child = m_children[place];
    places->FindOrAdd(HashOf(child, kind), static_cast<std::int32_t>(place),
                      [&](std::int32_t other) {
                        return Matches(m_children[static_cast<std::size_t>(other)], child, kind);
                      });
  }
  return *places;
}

bool CXmlDiffManager::GenerateDiffRules(const boost::shared_ptr<const sarn::XmlElement>& first,
                                        const boost::shared_ptr<const sarn::XmlElement>& second) {
  if (first == nullptr || second == nullptr) return false;
  ExtractMaxOrigBarId(*first);
  return ProcessElements(TPath(), *first, *second);
}

int CXmlDiffManager::ExtractMaxOrigBarId(const sarn::XmlElement& root) {
  int max = 0;
  std::vector<const sarn::XmlElement*> pending{&root};
  while (!pending.empty()) {
    const sarn::XmlElement& element = *pending.back();
    pending.pop_back();
    if (element.getTag().Compare(kCommandBar) == 0) {
      max = std::max(max, element.getOptAttribValueAsInt(KTEXT("BarID"), max));
    }
    sarn::XmlElement::ChildEnumerator children(element, KTEXT(""));
    for (boost::shared_ptr<const sarn::XmlElement> child; children.getNext(child);) {
      pending.push_back(child.get());
    }
  }
  m_nNextBarId = AddUpToEnd(max, kBarIdGap);
  return m_nNextBarId;
}

bool CXmlDiffManager::ProcessElements(TPath path, const sarn::XmlElement& first,
                                      const sarn::XmlElement& second) {
  if (first.getTag().Compare(second.getTag().c_str()) != 0) return false;
  const WChar* const id = GetXmlElementId(first);
  path.emplace_back(first.getTag().c_str(), *id == 0 ? kNoId : id);
  MatchPopupBarIds(first, second);
  ProcessAttribs(path, first, second);
  ProcessContent(path, first, second);
  ProcessChildren(path, first, second);
  return true;
}

void CXmlDiffManager::MatchPopupBarIds(const sarn::XmlElement& first,
                                       const sarn::XmlElement& second) {
  const WChar* firstId = nullptr;
  const WChar* secondId = nullptr;
  if (ClassOf(first) != kPopupControl || !first.findAttribValue(KTEXT("CommandBarId"), firstId) ||
      !second.findAttribValue(KTEXT("CommandBarId"), secondId)) {
    return;
  }
  m_OrigToNewBarIds[firstId] = secondId;
  m_NewToOrigBarIds[secondId] = firstId;
}

void CXmlDiffManager::ProcessAttribs(const TPath& path, const sarn::XmlElement& first,
                                     const sarn::XmlElement& second) {
  const WChar* name = nullptr;
  const WChar* value = nullptr;
  const WChar* other = nullptr;
  sarn::XmlElement::AttribEnumerator firstAttribs(first);
  while (firstAttribs.getNext(name, value)) {
    if (IsSkipAttribute(name)) continue;
    if (!second.findAttribValue(name, other)) {
      AddRuleDelAttrib(path, first, name);
    } else if (WideView(value) != other) {
      AddRuleEditAttrib(path, first, name, other);
    }
  }
  sarn::XmlElement::AttribEnumerator secondAttribs(second);
  while (secondAttribs.getNext(name, value)) {
    if (IsSkipAttribute(name) || first.findAttribValue(name, other)) continue;
    AddRuleInsAttrib(path, first, name, value);
  }
}

bool CXmlDiffManager::IsSkipAttribute(const WChar* name) {
  return std::find(kSkippedAttributes.begin(), kSkippedAttributes.end(), name) !=
         kSkippedAttributes.end();
}

void CXmlDiffManager::ProcessContent(const TPath& path, const sarn::XmlElement& first,
                                     const sarn::XmlElement& second) {
  const WChar* const content = first.getOptContent(KTEXT(""));
  const WChar* const wanted = second.getOptContent(KTEXT(""));
  if (WideView(content) == wanted || CleanContent(content) == CleanContent(wanted)) return;
  AddRuleEditContent(path, first, wanted);
}

void CXmlDiffManager::ProcessChildren(const TPath& path, const sarn::XmlElement& first,
                                      const sarn::XmlElement& second) {
  const bool moved = ProcessFirstChildren(path, first, second);
  const std::vector<WString> order = ProcessSecondChildren(path, first, second, moved);
  const bool hasId = std::any_of(order.begin(), order.end(),
                                 [](const WString& id) { return id.Compare(kNoId) != 0; });
  if (hasId && order.size() >= 2) AddRuleSortChild(path, first, order);
}

// What becomes of the first element's children; whether any of the others has another place.
bool CXmlDiffManager::ProcessFirstChildren(const TPath& path, const sarn::XmlElement& first,
                                           const sarn::XmlElement& second) {
  bool moved = false;
  const CChildIndex index(second);
  sarn::XmlElement::ChildEnumerator children(first, KTEXT(""));
  boost::shared_ptr<const sarn::XmlElement> child;
  for (int place = 0; children.getNext(child); ++place) {
    if (IsSkipElement(path, *child, true)) continue;
    const int found = FindChild(child, index, true);
    if (found == -1) {
      AddRuleDelChild(path, first, *child);
      if (ClassOf(*child) == kPopupControl) moved = true;
    } else {
      ProcessElements(path, *child, *second.getChildAt(found));
      if (found != place) moved = true;
    }
  }
  return moved;
}

// Inserts what the first element lacks; where children have moved, the order of them all.
std::vector<WString> CXmlDiffManager::ProcessSecondChildren(const TPath& path,
                                                            const sarn::XmlElement& first,
                                                            const sarn::XmlElement& second,
                                                            bool moved) {
  std::vector<WString> order;
  const CChildIndex index(first);
  sarn::XmlElement::ChildEnumerator children(second, KTEXT(""));
  for (boost::shared_ptr<const sarn::XmlElement> child; children.getNext(child);) {
    if (moved) order.emplace_back(child->getOptAttribValue(KTEXT("Id"), kNoId));
    if (IsSkipElement(path, *child, false) || FindChild(child, index, false) != -1) continue;
    CGenericXmlElement inserted(*child);
    AdjustCommandBarId(inserted);
    AddRuleInsChild(path, first, inserted);
  }
  return order;
}

int CXmlDiffManager::FindChild(const boost::shared_ptr<const sarn::XmlElement>& child,
                               const CChildIndex& otherParent, bool isFromFirst) {
  const WideView className = ClassOf(*child);
  const WideView tag = child->getTag().c_str();
  const WChar* const id = GetXmlElementId(*child);
  if (className != kPopupBar) return otherParent.Find(tag, id, className);
  // The other layout may number its popup bars in another way.
  const WString& mapped = BarIdsFrom(isFromFirst)[id];
  return mapped.empty() ? -1 : otherParent.Find(tag, mapped.c_str(), className);
}

std::map<WString, WString>& CXmlDiffManager::BarIdsFrom(bool isFromFirst) {
  return isFromFirst ? m_OrigToNewBarIds : m_NewToOrigBarIds;
}

// Lists that the program fills itself, and popup bars that no control opens.
bool CXmlDiffManager::IsSkipElement(const TPath& path, const sarn::XmlElement& element,
                                    bool isFromFirst) {
  if (element.getTag().Compare(kCommandBar) != 0) return false;
  const bool isBarList =
      std::equal(path.begin(), path.end(), kBarList.begin(), kBarList.end(),
                 [](const auto& level, WideView tag) {
                   return level.first.c_str() == tag && level.second.Compare(kNoId) == 0;
                 });
  if (!isBarList) return false;
  const WideView className = ClassOf(element);
  if (className == kPopupBar) return BarIdsFrom(isFromFirst)[GetXmlElementId(element)].empty();
  return className == KTEXT("CCtrlComboBoxListLayers") ||
         className == KTEXT("CCtrlComboBoxListTooltip");
}

// Gives an inserted popup control and the bar that it opens a number above all of the first layout.
// A bar that stands before its control keeps its own.
void CXmlDiffManager::AdjustCommandBarId(CGenericXmlElement& element) {
  static const WString kCommandBarId(KTEXT("CommandBarId"));
  static const WString kBarId(KTEXT("BarID"));
  std::vector<CGenericXmlElement*> pending{&element};
  while (!pending.empty()) {
    CGenericXmlElement& current = *pending.back();
    pending.pop_back();
    const WString old = current.GetOptAttribValue(kCommandBarId, WString());
    const WString barId = current.GetOptAttribValue(kBarId, WString());
    if (!old.empty()) {
      const WString added = WString::ValueOf(m_nNextBarId);
      m_nNextBarId = AddUpToEnd(m_nNextBarId, 1);
      m_OrigToNewBarIds[added] = old;
      m_NewToOrigBarIds[old] = added;
      current.m_Attribs[kCommandBarId] = added;
    } else if (!barId.empty()) {
      const WString& mapped = m_NewToOrigBarIds[barId];
      if (!mapped.empty()) current.m_Attribs[kBarId] = mapped;
    }
    pending.insert(pending.end(), current.m_Children.rbegin(), current.m_Children.rend());
  }
}

}  // namespace kelp
