// Rules applied to a layout.
#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/XmlDiffIndex.h"
#include "kelp0lang/XmlDiffManager.h"

namespace kelp {
namespace {

using Children = decltype(CGenericXmlElement::m_Children);
// Places of children, of which the least is wanted. The first of them takes no memory of its own,
// since most keys have one child.
class Places {
 public:
  void Add(std::size_t place) {
    if (m_least == kNone) {
      m_least = place;
      return;
    }
    m_others.push_back(std::max(m_least, place));
    std::push_heap(m_others.begin(), m_others.end(), std::greater<>());
    m_least = std::min(m_least, place);
  }

  // The least place for which the test holds. Places before it for which it doesn't hold are
  // dropped.
  template <class Test>
  const std::size_t* First(Test test) {
    while (m_least != kNone && !test(m_least)) DropLeast();
    return m_least == kNone ? nullptr : &m_least;
  }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  void DropLeast() {
    m_least = kNone;
    if (m_others.empty()) return;
    std::pop_heap(m_others.begin(), m_others.end(), std::greater<>());
    m_least = m_others.back();
    m_others.pop_back();
  }

  std::size_t m_least = kNone;
  std::vector<std::size_t> m_others;  // a heap, the least one in front
};

// Places by keys that are texts.
template <class Key>
class PlacesByKey {
 public:
  explicit PlacesByKey(std::size_t count = 0) : m_numbers(count) { m_entries.reserve(count); }

  // The number of a key; kNone where there is none.
  std::int32_t Find(const Key& key) const {
    return m_numbers.Find(HashOf(key), [&](std::int32_t number) { return KeyAt(number) == key; });
  }
  // The same; a key that isn't there is added.
  std::int32_t FindOrAdd(Key key) {
    const auto next = static_cast<std::int32_t>(m_entries.size());
    const std::int32_t number = m_numbers.FindOrAdd(
        HashOf(key), next, [&](std::int32_t other) { return KeyAt(other) == key; });
    if (number == next) m_entries.push_back({std::move(key), {}});
    return number;
  }
  Places& At(std::int32_t number) { return m_entries[static_cast<std::size_t>(number)].places; }

  static constexpr std::int32_t kNone = detail::HashedNumbers::kNone;

 private:
  struct Entry {
    Key key;
    Places places;
  };

  static std::size_t HashOf(const WString& text) { return std::hash<WString>()(text); }
  static std::size_t HashOf(const std::pair<WString, WString>& key) {
    constexpr std::size_t kFactor = 0x9E3779B97F4A7C15u;
    return HashOf(key.first) * kFactor + HashOf(key.second);
  }
  const Key& KeyAt(std::int32_t number) const {
    return m_entries[static_cast<std::size_t>(number)].key;
  }

  std::vector<Entry> m_entries;
  detail::HashedNumbers m_numbers;
};

}  // namespace

// A layout while rules change it.
//
// The children of an element that rules look into are found by tag and id through places that are
// kept for each key. A change of an id adds a place and leaves the old one, which is dropped when a
// search meets it. A child that is taken out leaves a null in its place until the parent is
// settled.
class CXmlDiffManager::CEditedLayout {
 public:
  CEditedLayout(CGenericXmlElement& root, TRuleEvents& events) : m_root(root), m_events(events) {}
  ~CEditedLayout() {
    for (auto& [parent, siblings] : m_siblings) siblings.Settle();
  }
  CEditedLayout(const CEditedLayout&) = delete;
  CEditedLayout& operator=(const CEditedLayout&) = delete;

  // The children of an element, by tag and id.
  class CSiblings {
   public:
    explicit CSiblings(CGenericXmlElement& parent) : m_parent(&parent) {}

    // The place of the first child with a tag, and with an id unless that is empty; null where
    // there is none.
    const std::size_t* Find(const WString& tag, const WString& id) {
      if (!m_isBuilt) Build();
      const std::int32_t found = m_places.Find({tag, id});
      if (found == m_places.kNone) return nullptr;
      return m_places.At(found).First([&](std::size_t place) {
        const CGenericXmlElement* const child = At(place);
        return child != nullptr && (id.empty() || GetXmlElementId(*child) == id);
      });
    }
    CGenericXmlElement* At(std::size_t place) const { return m_parent->m_Children[place]; }

    void Append(std::unique_ptr<CGenericXmlElement> child) {
      m_parent->m_Children.push_back(child.get());
      const CGenericXmlElement& added = *child.release();
      if (m_isBuilt) Add(added, m_parent->m_Children.size() - 1);
    }
    std::unique_ptr<CGenericXmlElement> TakeOut(std::size_t place) {
      m_hasGaps = true;
      return std::unique_ptr<CGenericXmlElement>(
          std::exchange(m_parent->m_Children[place], nullptr));
    }
    // Follows a child whose id has changed.
    void Renamed(std::size_t place) {
      const CGenericXmlElement& child = *At(place);
      const WString id = GetXmlElementId(child);
      if (!id.empty()) AddPlace(child.m_sTag, id, place);
    }
    // Closes the gaps.
    void Settle() {
      if (!std::exchange(m_hasGaps, false)) return;
      std::erase(m_parent->m_Children, nullptr);
      m_isBuilt = false;
    }
    void Sort(const std::vector<WString>& ids);

   private:
    void Build() {
      m_isBuilt = true;
      m_places = PlacesByKey<std::pair<WString, WString>>(m_parent->m_Children.size());
      for (std::size_t place = 0; place < m_parent->m_Children.size(); ++place) {
        Add(*At(place), place);
      }
    }
    void Add(const CGenericXmlElement& child, std::size_t place) {
      AddPlace(child.m_sTag, WString(), place);
      const WString id = GetXmlElementId(child);
      if (!id.empty()) AddPlace(child.m_sTag, id, place);
    }
    void AddPlace(const WString& tag, const WString& id, std::size_t place) {
      m_places.At(m_places.FindOrAdd({tag, id})).Add(place);
    }

    CGenericXmlElement* m_parent;
    PlacesByKey<std::pair<WString, WString>> m_places;
    bool m_hasGaps = false;
    bool m_isBuilt = false;  // the places, for the first search since children have moved
  };

  CGenericXmlElement& Root() { return m_root; }

  // What is told from then on is about the rule at this place.
  void BeginRule(std::size_t rule) { m_rule = rule; }
  // Gives false, so that a rule that has no effect can end with it.
  bool Tell(ERuleEvent event, const WString& text = WString()) {
    m_events.push_back({m_rule, event, text});
    return false;
  }

  CSiblings& ChildrenOf(CGenericXmlElement& parent) {
    return m_siblings.try_emplace(&parent, parent).first->second;
  }
  // Elements that are taken out stay until the end, so that none that is made later can be taken
  // for one of them.
  void Keep(std::unique_ptr<CGenericXmlElement> element) {
    m_takenOut.push_back(std::move(element));
  }

  // Whether the controls may have become others since the last time that this was asked.
  bool TakeControlsChanged() { return std::exchange(m_controlsChanged, false); }
  void ChangedId(const TFound& found);

 private:
  CGenericXmlElement& m_root;
  TRuleEvents& m_events;
  std::size_t m_rule = 0;
  std::unordered_map<const CGenericXmlElement*, CSiblings> m_siblings;
  std::vector<std::unique_ptr<CGenericXmlElement>> m_takenOut;
  bool m_controlsChanged = true;
};

// Where an element was found; without one, null.
struct CXmlDiffManager::TFound {
  CGenericXmlElement* element = nullptr;
  CEditedLayout::CSiblings* siblings = nullptr;
  std::size_t place = 0;
};

void CXmlDiffManager::CEditedLayout::ChangedId(const TFound& found) {
  found.siblings->Renamed(found.place);
  m_controlsChanged = true;
}

// For each place in turn the first child at or behind it with the wanted id is swapped there; where
// there is none the place stays as it is.
void CXmlDiffManager::CEditedLayout::CSiblings::Sort(const std::vector<WString>& ids) {
  Settle();
  m_isBuilt = false;
  Children& children = m_parent->m_Children;
  // Each id as a number, by which the places of its children are kept.
  PlacesByKey<WString> places(children.size());
  std::vector<std::int32_t> numberAt;
  numberAt.reserve(children.size());
  for (std::size_t place = 0; place < children.size(); ++place) {
    numberAt.push_back(places.FindOrAdd(GetXmlElementId(*children[place])));
    places.At(numberAt.back()).Add(place);
  }
  for (std::size_t place = 0; place < std::min(children.size(), ids.size()); ++place) {
    const std::int32_t number = places.Find(ids[place]);
    if (number == places.kNone) continue;
    const std::size_t* const from = places.At(number).First(
        [&](std::size_t candidate) { return candidate >= place && numberAt[candidate] == number; });
    if (from == nullptr || *from == place) continue;
    const std::size_t source = *from;
    std::swap(children[place], children[source]);
    std::swap(numberAt[place], numberAt[source]);
    places.At(numberAt[source]).Add(source);
  }
}

namespace {

template <class... Works>
struct Overloaded : Works... {
  using Works::operator()...;
};
template <class... Works>
Overloaded(Works...) -> Overloaded<Works...>;

constexpr const WChar* kControl = KTEXT("Control");

bool IsIdName(const WString& name) {
  return name.Compare(KTEXT("Id")) == 0 || name.Compare(KTEXT("BarID")) == 0;
}

}  // namespace

void CXmlDiffManager::ApplyDiffRules(CGenericXmlElement& root, TRuleEvents& events) {
  CEditedLayout layout(root, events);
  const Overloaded apply{
      [&](const TDiffRule_DelAttrib& rule) { return ApplyRuleDelAttrib(rule, layout); },
      [&](const TDiffRule_InsAttrib& rule) { return ApplyRuleInsAttrib(rule, layout); },
      [&](const TDiffRule_EditAttrib& rule) { return ApplyRuleEditAttrib(rule, layout); },
      [&](const TDiffRule_DelChild& rule) { return ApplyRuleDelChild(rule, layout); },
      [&](const TDiffRule_InsChild& rule) { return ApplyRuleInsChild(rule, layout); },
      [&](const TDiffRule_SortChild& rule) { return ApplyRuleSortChild(rule, layout); },
      [&](const TDiffRule_EditContent& rule) { return ApplyRuleEditContent(rule, layout); }};
  for (std::size_t i = 0; i < m_Rules.size(); ++i) {
    layout.BeginRule(i);
    VisitRule(*m_Rules[i], apply);
  }
}

// A level that the layout lacks is passed over, except the last. No rule reaches the root.
CXmlDiffManager::TFound CXmlDiffManager::FindElementFromRoot(const TPath& path, const WString&,
                                                             CEditedLayout& layout) {
  CGenericXmlElement& root = layout.Root();
  if (path.empty() || path[0].first != root.m_sTag ||
      (!path[0].second.empty() && path[0].second != GetXmlElementId(root))) {
    return {};
  }
  TFound found;
  CGenericXmlElement* current = &root;
  for (std::size_t level = 1; level < path.size(); ++level) {
    CEditedLayout::CSiblings& siblings = layout.ChildrenOf(*current);
    const std::size_t* const place = siblings.Find(path[level].first, path[level].second);
    found = {};
    if (place == nullptr) continue;
    current = siblings.At(*place);
    found = {current, &siblings, *place};
  }
  return found;
}

CXmlDiffManager::TFound CXmlDiffManager::FindTarget(const TDiffRule& rule, CEditedLayout& layout) {
  const TFound found = FindElementFromRoot(rule.m_ParentTags, rule.m_sElementId, layout);
  if (found.element == nullptr) {
    const bool isRoot =
        rule.m_ParentTags.size() == 1 && rule.m_ParentTags[0].first == layout.Root().m_sTag;
    layout.Tell(isRoot ? ERuleEvent::eRoot : ERuleEvent::eNoTarget);
  }
  return found;
}

bool CXmlDiffManager::SetAttrib(const TDiffRule_Attrib& rule, const WString* value,
                                CEditedLayout& layout) {
  const auto found = FindTarget(rule, layout);
  if (found.element == nullptr) return false;
  auto& attribs = found.element->m_Attribs;
  const auto attrib = attribs.find(rule.m_sAttribLabel);
  if (attrib != attribs.end()) layout.Tell(ERuleEvent::eOldValue, attrib->second);
  if (value != nullptr) {
    attribs[rule.m_sAttribLabel] = *value;
  } else if (attrib != attribs.end()) {
    attribs.erase(attrib);
  }
  if (IsIdName(rule.m_sAttribLabel)) layout.ChangedId(found);
  return true;
}

bool CXmlDiffManager::ApplyRuleDelAttrib(const TDiffRule_DelAttrib& rule, CEditedLayout& layout) {
  return SetAttrib(rule, nullptr, layout);
}

bool CXmlDiffManager::ApplyRuleInsAttrib(const TDiffRule_InsAttrib& rule, CEditedLayout& layout) {
  return SetAttrib(rule, &rule.m_sAttribValue, layout);
}

bool CXmlDiffManager::ApplyRuleEditAttrib(const TDiffRule_EditAttrib& rule, CEditedLayout& layout) {
  return SetAttrib(rule, &rule.m_sAttribValue, layout);
}

bool CXmlDiffManager::ApplyRuleEditContent(const TDiffRule_EditContent& rule,
                                           CEditedLayout& layout) {
  const auto found = FindTarget(rule, layout);
  if (found.element == nullptr) return false;
  found.element->m_sContent = rule.m_sContent;
  layout.Tell(ERuleEvent::eContent);
  return true;
}

bool CXmlDiffManager::ApplyRuleDelChild(const TDiffRule_DelChild& rule, CEditedLayout& layout) {
  const auto parent = FindTarget(rule, layout);
  if (parent.element == nullptr) return false;
  CEditedLayout::CSiblings& children = layout.ChildrenOf(*parent.element);
  const std::size_t* const place = children.Find(rule.m_sChildTag, rule.m_sChildId);
  if (place == nullptr) return layout.Tell(ERuleEvent::eNoChild);
  layout.Keep(children.TakeOut(*place));
  return true;
}

bool CXmlDiffManager::ApplyRuleInsChild(const TDiffRule_InsChild& rule, CEditedLayout& layout) {
  const auto parent = FindTarget(rule, layout);
  if (parent.element == nullptr) return false;
  if (rule.m_pElement == nullptr) return layout.Tell(ERuleEvent::eNoElement);
  if (!ValidateElement(layout, *rule.m_pElement, -1)) return false;
  layout.ChildrenOf(*parent.element).Append(std::make_unique<CGenericXmlElement>(*rule.m_pElement));
  return true;
}

bool CXmlDiffManager::ApplyRuleSortChild(const TDiffRule_SortChild& rule, CEditedLayout& layout) {
  const auto parent = FindTarget(rule, layout);
  if (parent.element == nullptr) return false;
  layout.ChildrenOf(*parent.element).Sort(rule.m_SortedChildren);
  return true;
}

// The element itself, or its child at an index, which goes where it is invalid. Null is left in its
// place, for the caller to close the gaps of all children in one step.
bool CXmlDiffManager::ValidateElement(CEditedLayout& layout, CGenericXmlElement& element,
                                      int index) {
  CGenericXmlElement& checked =
      index == -1 ? element : *element.m_Children[static_cast<std::size_t>(index)];
  RemoveInvalidAttribs(layout, checked);
  const bool isValid = checked.m_sTag.Compare(kControl) != 0 ||
                       FindValidatedElementId(GetXmlElementId(checked), layout);
  if (!isValid) {
    layout.Tell(index == -1 ? ERuleEvent::eUnknownControl : ERuleEvent::eUnknownWithin,
                GetXmlElementId(checked));
  }
  if (isValid) {
    for (auto i = static_cast<int>(checked.m_Children.size()) - 1; i >= 0; --i) {
      ValidateElement(layout, checked, i);
    }
    std::erase(checked.m_Children, nullptr);
  } else if (index != -1) {
    delete std::exchange(element.m_Children[static_cast<std::size_t>(index)], nullptr);
  }
  return isValid;
}

// A popup control whose number belongs to the layout's own bars opens none.
void CXmlDiffManager::RemoveInvalidAttribs(CEditedLayout& layout,
                                           CGenericXmlElement& element) const {
  const auto found = element.m_Attribs.find(KTEXT("CommandBarId"));
  if (found == element.m_Attribs.end() || found->second.empty()) return;
  if (IntDaString(found->second) >= m_nNextBarId) return;
  layout.Tell(ERuleEvent::eOwnBar, found->second);
  element.m_Attribs.erase(found);
}

// The controls are those at the time of the first insertion. Without any, they are looked for again
// once there may be some.
bool CXmlDiffManager::FindValidatedElementId(const WString& id, CEditedLayout& layout) {
  if (id.empty()) return true;
  if (m_ValidatedIds.empty() && layout.TakeControlsChanged()) AddValidatedElement(layout.Root());
  return m_ValidatedIds.contains(id);
}

void CXmlDiffManager::AddValidatedElement(const CGenericXmlElement& element) {
  std::vector<const CGenericXmlElement*> pending{&element};
  while (!pending.empty()) {
    const CGenericXmlElement* const current = pending.back();
    pending.pop_back();
    if (current == nullptr) continue;
    const WString id = GetXmlElementId(*current);
    if (current->m_sTag.Compare(kControl) == 0 && !id.empty()) m_ValidatedIds.insert(id);
    pending.insert(pending.end(), current->m_Children.begin(), current->m_Children.end());
  }
}

}  // namespace kelp
