#include "tests/XmlDiffModel.h"

#include <algorithm>
#include <cstdlib>

#include "kelp0lang/LegacyNumber.h"
#include "sarnutils/XmlWriter.h"

namespace model {
namespace {

const Text kNoId = KTEXT("-1");
const std::set<Text> kSkipped = {
    KTEXT("HideFlags"), KTEXT("Category"),     KTEXT("TooltipText"), KTEXT("DescriptionText"),
    KTEXT("Caption"),   KTEXT("CommandBarId"), KTEXT("BarID"),       KTEXT("KeyboardTip")};
const std::vector<std::pair<Text, Text>> kBarList = {{KTEXT("Settings"), kNoId},
                                                     {KTEXT("NormalLayout"), kNoId},
                                                     {KTEXT("CommandBars"), kNoId},
                                                     {KTEXT("CommandBars"), kNoId}};

Text NoId(const Text& id) {
  return id.empty() ? kNoId : id;
}
Text FromNoId(const Text& id) {
  return id == kNoId ? Text() : id;
}
Text Number(int value) {
  const std::string text = std::to_string(value);
  return Text(text.begin(), text.end());
}

Text Clean(Text text) {
  std::erase(text, KTEXT('\n'));
  std::erase(text, KTEXT('\t'));
  const std::size_t begin = text.find_first_not_of(KTEXT(" \r"));
  return begin == text.npos ? Text()
                            : text.substr(begin, text.find_last_not_of(KTEXT(" \r")) + 1 - begin);
}

int MaxBarId(const Node& node) {
  const Text barId = node.tag == KTEXT("CommandBar") ? node.Get(KTEXT("BarID")) : Text();
  int max = std::max(0, std::atoi(std::string(barId.begin(), barId.end()).c_str()));
  for (const NodePtr& child : node.children) max = std::max(max, MaxBarId(*child));
  return max;
}

void AddControls(const Node& node, std::set<Text>& controls) {
  if (node.tag == KTEXT("Control") && !node.Id().empty()) controls.insert(node.Id());
  for (const NodePtr& child : node.children) AddControls(*child, controls);
}

void WriteNode(XmlWriter& writer, const Node& node, bool isRoot) {
  XmlStartTag tag(node.tag.c_str());
  for (const auto& [name, value] : std::map<Text, Text>(node.attribs.begin(), node.attribs.end())) {
    writer.appendReqAttrib(tag, name.c_str(), value.c_str());
  }
  writer.writeStartTagWithAttribs(tag, node.children.empty());
  for (const NodePtr& child : node.children) WriteNode(writer, *child, false);
  if (!node.children.empty() && !isRoot) writer.writeEndTag(node.tag.c_str());
}

}  // namespace

const Text* Node::Find(const Text& name) const {
  const auto found = std::find_if(attribs.begin(), attribs.end(),
                                  [&](const auto& attrib) { return attrib.first == name; });
  return found == attribs.end() ? nullptr : &found->second;
}
Text Node::Get(const Text& name, const Text& def) const {
  const Text* const value = Find(name);
  return value == nullptr ? def : *value;
}
void Node::Set(const Text& name, const Text& value) {
  std::erase_if(attribs, [&](const auto& attrib) { return attrib.first == name; });
  attribs.emplace_back(name, value);
}
Text Node::Id() const {
  const Text id = Get(KTEXT("Id"));
  return id.empty() ? Get(KTEXT("BarID")) : id;
}
NodePtr Node::Copy() const {
  auto copy = std::make_shared<Node>(*this);
  for (NodePtr& child : copy->children) child = child->Copy();
  return copy;
}

void Diff::Generate(const Node& first, const Node& second) {
  m_nextBarId = MaxBarId(first) + 1000;
  Process({}, first, second);
}

void Diff::Process(Path path, const Node& first, const Node& second) {
  path.emplace_back(first.tag, NoId(first.Id()));
  const auto add = [&](int type, const Text& name = {}, const Text& value = {},
                       const NodePtr& element = nullptr, const std::vector<Text>& order = {}) {
    m_rules.push_back({type, path, first.Id(), name, value, element, order});
  };
  const Text* const firstBar = first.Find(KTEXT("CommandBarId"));
  const Text* const secondBar = second.Find(KTEXT("CommandBarId"));
  const bool isPopup = first.Get(KTEXT("Class")) == KTEXT("CXTPControlPopupEx");
  if (isPopup && firstBar != nullptr && secondBar != nullptr) {
    m_toNew[*firstBar] = *secondBar;
    m_toOrig[*secondBar] = *firstBar;
  }
  for (const auto& [name, value] : first.attribs) {
    const Text* const other = second.Find(name);
    if (kSkipped.contains(name)) continue;
    if (other == nullptr) add(0, name);
    if (other != nullptr && *other != value) add(2, name, *other);
  }
  for (const auto& [name, value] : second.attribs) {
    if (!kSkipped.contains(name) && first.Find(name) == nullptr) add(1, name, value);
  }
  if (Clean(first.content) != Clean(second.content)) add(6, {}, second.content);

  bool moved = false;
  for (std::size_t i = 0; i < first.children.size(); ++i) {
    const Node& child = *first.children[i];
    if (IsSkipped(path, child, true)) continue;
    const int found = Match(child, second, true);
    if (found == -1) {
      add(3, child.tag, child.Id());
      moved = moved || child.Get(KTEXT("Class")) == KTEXT("CXTPControlPopupEx");
    } else {
      Process(path, child, *second.children[found]);
      moved = moved || found != static_cast<int>(i);
    }
  }
  std::vector<Text> order;
  for (const NodePtr& child : second.children) {
    if (moved) order.push_back(child->Get(KTEXT("Id"), kNoId));
    if (IsSkipped(path, *child, false) || Match(*child, first, false) != -1) continue;
    const NodePtr copy = child->Copy();
    Renumber(*copy);
    add(4, {}, {}, copy);
  }
  if (order.size() >= 2 && std::count(order.begin(), order.end(), kNoId) != std::ssize(order)) {
    add(5, {}, {}, nullptr, order);
  }
}

int Diff::Match(const Node& child, const Node& other, bool isFromFirst) {
  Text id = child.Id();
  const Text className = child.Get(KTEXT("Class"));
  if (className == KTEXT("CXTPPopupBar")) {
    id = BarIds(isFromFirst)[id];
    if (id.empty()) return -1;
  }
  for (std::size_t i = 0; i < other.children.size(); ++i) {
    const Node& candidate = *other.children[i];
    if (candidate.tag == child.tag && (id.empty() || candidate.Id() == id) &&
        (className.empty() || candidate.Get(KTEXT("Class")) == className)) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

bool Diff::IsSkipped(const Path& path, const Node& node, bool isFromFirst) {
  if (node.tag != KTEXT("CommandBar") || path != kBarList) return false;
  const Text className = node.Get(KTEXT("Class"));
  if (className == KTEXT("CXTPPopupBar")) return BarIds(isFromFirst)[node.Id()].empty();
  return className == KTEXT("CCtrlComboBoxListLayers") ||
         className == KTEXT("CCtrlComboBoxListTooltip");
}

void Diff::Renumber(Node& node) {
  const Text old = node.Get(KTEXT("CommandBarId"));
  const Text barId = node.Get(KTEXT("BarID"));
  if (!old.empty()) {
    const Text added = Number(m_nextBarId++);
    m_toNew[added] = old;
    m_toOrig[old] = added;
    node.Set(KTEXT("CommandBarId"), added);
  } else if (!barId.empty() && !m_toOrig[barId].empty()) {
    node.Set(KTEXT("BarID"), m_toOrig[barId]);
  }
  for (const NodePtr& child : node.children) Renumber(*child);
}

void Diff::Write(const Text& path, const Text& origName) const {
  static const WChar* const kTypes[] = {
      KTEXT("delete_attrib"), KTEXT("insert_attrib"), KTEXT("edit_attrib"), KTEXT("delete_child"),
      KTEXT("insert_child"),  KTEXT("sort_children"), KTEXT("edit_content")};
  XmlWriter writer(path.c_str(), KTEXT("RibbonDiffRules"), nullptr);
  if (!writer.openFile()) return;
  const auto put = [&](const WChar* tag, const Text& text) {
    writer.writeReqXmlStringElement(tag, text.c_str());
  };
  writer.writeStartTagWithAttrib(KTEXT("RibbonDiffRules"), KTEXT("version"), KTEXT("1.0"), false);
  put(KTEXT("OrigFile"), origName);
  writer.writeStartTag(KTEXT("Rules"));
  for (const Rule& rule : m_rules) {
    writer.writeStartTagWithAttrib(KTEXT("Rule"), KTEXT("type"), kTypes[rule.type], false);
    Text tags;
    for (const auto& [tag, id] : rule.path) tags += KTEXT(' ') + tag + KTEXT(' ') + id;
    put(KTEXT("ParentTags"), tags.substr(1));
    if (!rule.elementId.empty()) put(KTEXT("ElementId"), rule.elementId);
    if (rule.type <= 2) put(KTEXT("AttribLabel"), rule.name);
    if (rule.type == 1 || rule.type == 2) put(KTEXT("AttribValue"), rule.value);
    if (rule.type == 3) put(KTEXT("ChildTag"), rule.name);
    if (rule.type == 3 && !rule.value.empty()) put(KTEXT("ChildId"), rule.value);
    if (rule.type == 4) {
      writer.writeStartTag(KTEXT("Element"));
      WriteNode(writer, *rule.element, false);
      writer.writeEndTag(KTEXT("Element"));
    }
    if (rule.type == 5) {
      Text ids;
      for (const Text& id : rule.order) ids += KTEXT(' ') + NoId(id);
      put(KTEXT("SortedChildren"), ids.substr(1));
    }
    if (rule.type == 6) put(KTEXT("Content"), rule.value);
    writer.writeEndTag(KTEXT("Rule"));
  }
  writer.writeEndTag(KTEXT("Rules"));
  writer.closeFile();
}

void Diff::Apply(Node& layout) {
  m_controls.clear();
  m_nextBarId = MaxBarId(layout) + 1000;
  for (const Rule& rule : m_rules) ApplyRule(layout, rule);
}

void Diff::ApplyRule(Node& root, const Rule& rule) {
  if (rule.path[0].first != root.tag ||
      (!FromNoId(rule.path[0].second).empty() && FromNoId(rule.path[0].second) != root.Id())) {
    return;
  }
  Node* current = &root;
  Node* found = nullptr;
  for (std::size_t level = 1; level < rule.path.size(); ++level) {
    const Text id = FromNoId(rule.path[level].second);
    found = nullptr;
    for (const NodePtr& child : current->children) {
      if (child->tag != rule.path[level].first || (!id.empty() && child->Id() != id)) continue;
      found = child.get();
      break;
    }
    if (found != nullptr) current = found;
  }
  if (found == nullptr) return;
  auto& children = found->children;
  if (rule.type == 0) {
    std::erase_if(found->attribs, [&](const auto& attrib) { return attrib.first == rule.name; });
  } else if (rule.type <= 2) {
    found->Set(rule.name, rule.value);
  } else if (rule.type == 3) {
    const auto taken = std::find_if(children.begin(), children.end(), [&](const NodePtr& child) {
      return child->tag == rule.name && (rule.value.empty() || child->Id() == rule.value);
    });
    if (taken != children.end()) children.erase(taken);
  } else if (rule.type == 4) {
    const NodePtr inserted = rule.element->Copy();
    if (Validate(root, *inserted)) children.push_back(inserted);
  } else if (rule.type == 5) {
    for (std::size_t i = 0; i < rule.order.size() && i < children.size(); ++i) {
      for (std::size_t j = i; j < children.size(); ++j) {
        if (children[j]->Id() != FromNoId(rule.order[i])) continue;
        std::swap(children[i], children[j]);
        break;
      }
    }
  }
}

bool Diff::Validate(const Node& root, Node& node) {
  const Text barId = node.Get(KTEXT("CommandBarId"));
  if (!barId.empty() && IntDaString(barId.c_str()) < m_nextBarId) {
    std::erase_if(node.attribs, [](const auto& a) { return a.first == KTEXT("CommandBarId"); });
  }
  if (node.tag == KTEXT("Control") && !node.Id().empty()) {
    if (m_controls.empty()) AddControls(root, m_controls);
    if (!m_controls.contains(node.Id())) return false;
  }
  std::erase_if(node.children, [&](const NodePtr& child) { return !Validate(root, *child); });
  return true;
}

void Export(const Node& root, const Text& path) {
  XmlWriter writer(path.c_str(), root.tag.c_str(), nullptr);
  if (!writer.openFile()) return;
  WriteNode(writer, root, true);
  writer.closeFile();
}

}  // namespace model
