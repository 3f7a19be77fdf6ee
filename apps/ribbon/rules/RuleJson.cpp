#include "ribbon/rules/RuleJson.h"

#include <iterator>

namespace ribbon {
namespace {

// By the value of the type.
constexpr const WChar* kTypes[] = {
    KTEXT("delete_attrib"), KTEXT("insert_attrib"), KTEXT("edit_attrib"), KTEXT("delete_child"),
    KTEXT("insert_child"),  KTEXT("sort_children"), KTEXT("edit_content")};
static_assert(std::size(kTypes) == Manager::eEditContent + 1);

// By the value of the event.
constexpr const WChar* kEvents[] = {KTEXT("old_value"),
                                    KTEXT("no_target"),
                                    KTEXT("root"),
                                    KTEXT("no_child"),
                                    KTEXT("no_element"),
                                    KTEXT("unknown_control"),
                                    KTEXT("unknown_control_within"),
                                    KTEXT("own_bar"),
                                    KTEXT("content")};
static_assert(std::size(kEvents) == static_cast<int>(Manager::ERuleEvent::eContent) + 1);

void AppendElement(Json& json, const kelp::CGenericXmlElement& element) {
  json.BeginObject();
  json.Member("tag", element.m_sTag);
  json.Key("attributes");
  json.BeginObject();
  for (const auto& [name, value] : element.m_Attribs) {
    json.Key(name);
    json.Value(value);
  }
  json.EndObject();
  json.Key("children");
  json.BeginArray();
  for (const kelp::CGenericXmlElement* child : element.m_Children) AppendElement(json, *child);
  json.EndArray();
  json.EndObject();
}

// What belongs to each type of rule.
class Appender {
 public:
  explicit Appender(Json& json) : m_json(json) {}

  void operator()(const Manager::TDiffRule_DelAttrib& rule) const {
    m_json.Member("attribute", rule.m_sAttribLabel);
  }
  void operator()(const Manager::TDiffRule_InsAttrib& rule) const {
    m_json.Member("attribute", rule.m_sAttribLabel);
    m_json.Member("to", rule.m_sAttribValue);
  }
  void operator()(const Manager::TDiffRule_EditAttrib& rule) const {
    m_json.Member("attribute", rule.m_sAttribLabel);
    m_json.Member("to", rule.m_sAttribValue);
  }
  void operator()(const Manager::TDiffRule_DelChild& rule) const {
    m_json.Member("tag", rule.m_sChildTag);
    m_json.Member("id", rule.m_sChildId);
  }
  void operator()(const Manager::TDiffRule_InsChild& rule) const {
    if (rule.m_pElement == nullptr) return;
    m_json.Key("element");
    AppendElement(m_json, *rule.m_pElement);
  }
  void operator()(const Manager::TDiffRule_SortChild& rule) const {
    m_json.Key("order");
    m_json.BeginArray();
    for (const WString& id : rule.m_SortedChildren) m_json.Value(id);
    m_json.EndArray();
  }
  void operator()(const Manager::TDiffRule_EditContent& rule) const {
    m_json.Member("to", rule.m_sContent);
  }

 private:
  Json& m_json;
};

// What stands in front of each: which rule it is.
void AppendPlace(Json& json, const DiffFile& diff, std::size_t place) {
  const Rule& rule = *diff.Rules()[place];
  json.Member("rule", static_cast<int>(place) + 1);
  json.Member("line", diff.LineOf(place));
  json.Member("type", WString(kTypes[rule.m_eType]));
  json.Key("path");
  json.BeginArray();
  for (const auto& [tag, id] : rule.m_ParentTags) {
    json.BeginObject();
    json.Member("tag", tag);
    json.Member("id", id);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

void AppendRule(Json& json, const DiffFile& diff, std::size_t place,
                const std::vector<RuleEvent>& events) {
  json.BeginObject();
  AppendPlace(json, diff, place);
  for (const RuleEvent& event : events) {
    if (!IsFault(event.event)) json.Member("from", event.text);
  }
  Manager::VisitRule(*diff.Rules()[place], Appender(json));
  json.EndObject();
}

void AppendFault(Json& json, const DiffFile& diff, const RuleEvent& event) {
  json.BeginObject();
  AppendPlace(json, diff, event.rule);
  json.Member("fault", WString(kEvents[static_cast<int>(event.event)]));
  json.Member("about", event.text);
  json.EndObject();
}

}  // namespace ribbon
