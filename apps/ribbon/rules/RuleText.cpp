#include "ribbon/rules/RuleText.h"

#include <algorithm>

namespace ribbon {
namespace {

using Event = Manager::ERuleEvent;

constexpr const WChar* kNoId = KTEXT("-1");

bool HasId(const WString& id) {
  return !id.empty() && id.Compare(kNoId) != 0;
}

// "CommandBar 7"
WString NameOf(const WString& tag, const WString& id) {
  return HasId(id) ? Shown((tag + KTEXT(' ')).Concat(id)) : Shown(tag);
}

WString IdOf(const kelp::CGenericXmlElement& element) {
  const WString id = element.GetOptAttribValue(KTEXT("Id"), WString());
  return id.empty() ? element.GetOptAttribValue(KTEXT("BarID"), WString()) : id;
}

// "Control 12 (Polyline)"
WString NameOf(const kelp::CGenericXmlElement& element) {
  const WString name = NameOf(element.m_sTag, IdOf(element));
  const WString caption = element.GetOptAttribValue(KTEXT("Caption"), WString());
  if (caption.empty()) return name;
  return (name + KTEXT(" (")).Concat(Quoted(caption)) + KTEXT(')');
}

int CountWithin(const kelp::CGenericXmlElement& element) {
  int count = 0;
  for (const kelp::CGenericXmlElement* child : element.m_Children) count += 1 + CountWithin(*child);
  return count;
}

const WString* OldValue(const std::vector<RuleEvent>& events) {
  const auto found = std::find_if(events.begin(), events.end(), [](const RuleEvent& event) {
    return event.event == Event::eOldValue;
  });
  return found == events.end() ? nullptr : &found->text;
}

Message Setting(const WString& place, const WString& label, const WString* from,
                const WString& to) {
  if (from == nullptr) {
    return {KTEXT("{1}: {2} is set to \"{3}\""), {place, Shown(label), Shown(to)}};
  }
  return {KTEXT("{1}: {2} changes from \"{3}\" to \"{4}\""),
          {place, Shown(label), Shown(*from), Shown(to)}};
}

// What each type of rule does.
class Describer {
 public:
  Describer(const WString& place, const WString* from) : m_place(place), m_from(from) {}

  Message operator()(const Manager::TDiffRule_DelAttrib& rule) const {
    if (m_from == nullptr) {
      return {KTEXT("{1}: {2} is taken away"), {m_place, Shown(rule.m_sAttribLabel)}};
    }
    return {KTEXT("{1}: {2} is taken away; it was \"{3}\""),
            {m_place, Shown(rule.m_sAttribLabel), Shown(*m_from)}};
  }
  Message operator()(const Manager::TDiffRule_InsAttrib& rule) const {
    return Setting(m_place, rule.m_sAttribLabel, m_from, rule.m_sAttribValue);
  }
  Message operator()(const Manager::TDiffRule_EditAttrib& rule) const {
    return Setting(m_place, rule.m_sAttribLabel, m_from, rule.m_sAttribValue);
  }
  Message operator()(const Manager::TDiffRule_DelChild& rule) const {
    return {KTEXT("{1}: {2} is taken out"), {m_place, NameOf(rule.m_sChildTag, rule.m_sChildId)}};
  }
  Message operator()(const Manager::TDiffRule_InsChild& rule) const {
    if (rule.m_pElement == nullptr) return {KTEXT("{1}: nothing is put in"), {m_place}};
    const int within = CountWithin(*rule.m_pElement);
    if (within == 0) return {KTEXT("{1}: {2} is put in"), {m_place, NameOf(*rule.m_pElement)}};
    return {KTEXT("{1}: {2} is put in, elements within it: {3}"),
            {m_place, NameOf(*rule.m_pElement), WString::ValueOf(within)}};
  }
  Message operator()(const Manager::TDiffRule_SortChild& rule) const {
    WString order;
    for (const WString& id : rule.m_SortedChildren) {
      if (!order.empty()) order += KTEXT(' ');
      order += HasId(id) ? Shown(id).c_str() : KTEXT("-");
    }
    return {KTEXT("{1}: the children are put in the order {2}"), {m_place, order}};
  }
  Message operator()(const Manager::TDiffRule_EditContent& rule) const {
    return {KTEXT("{1}: the text becomes \"{2}\""), {m_place, Shown(rule.m_sContent)}};
  }

 private:
  WString m_place;
  const WString* m_from;
};

const WChar* WordsFor(Event event) {
  switch (event) {
    case Event::eNoTarget:
      return KTEXT("{1}: there is no such element");
    case Event::eRoot:
      return KTEXT("{1}: no rule reaches the root");
    case Event::eNoChild:
      return KTEXT("{1}: there is no {2} to be taken out");
    case Event::eNoElement:
      return KTEXT("{1}: the rule holds nothing to be put in");
    case Event::eUnknownControl:
      return KTEXT("{1}: {2} isn't put in, the layout doesn't know Control {3}");
    case Event::eUnknownWithin:
      return KTEXT("{1}: {2} is put in without Control {3}, which the layout doesn't know");
    case Event::eOwnBar:
      return KTEXT("{1}: {2} is put in, but opens no bar: CommandBarId {3} is too low");
    case Event::eContent:
      return KTEXT("{1}: layouts are written without text");
    case Event::eOldValue:
      break;
  }
  return KTEXT("{1}: it was \"{3}\"");
}

// The child that a rule is about.
WString ChildOf(const Rule& rule) {
  if (rule.m_eType == Manager::eDelChild) {
    const auto& typed = static_cast<const Manager::TDiffRule_DelChild&>(rule);
    return NameOf(typed.m_sChildTag, typed.m_sChildId);
  }
  if (rule.m_eType != Manager::eInsChild) return WString();
  const auto& element = static_cast<const Manager::TDiffRule_InsChild&>(rule).m_pElement;
  return element == nullptr ? WString() : NameOf(*element);
}

}  // namespace

WString PlaceOf(const Rule& rule) {
  WString place;
  for (const auto& [tag, id] : rule.m_ParentTags) {
    if (!place.empty()) place += KTEXT('/');
    place += NameOf(tag, id).c_str();
  }
  return place;
}

WString TextOf(const Rule& rule, const std::vector<RuleEvent>& events) {
  return Manager::VisitRule(rule, Describer(PlaceOf(rule), OldValue(events))).Text();
}

WString TextOf(const RuleEvent& event, const Rule& rule) {
  return Message{WordsFor(event.event), {PlaceOf(rule), ChildOf(rule), Shown(event.text)}}.Text();
}

WString FaultLine(const DiffFile& diff, const RuleEvent& event) {
  return Message{KTEXT("{1}:{2}: {3}"),
                 {Shown(diff.File().text), WString::ValueOf(diff.LineOf(event.rule)),
                  TextOf(event, *diff.Rules()[event.rule])}}
      .Text();
}

}  // namespace ribbon
