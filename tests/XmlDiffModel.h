// Generation and application of layout diffs in the plainest form: a walk over all children for
// every search. What the library does by indexes has to come out the same, byte for byte.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kelptext/WideChar.h"

namespace model {

using Text = std::basic_string<WChar>;

struct Node {
  Text tag;
  std::vector<std::pair<Text, Text>> attribs;
  Text content;
  std::vector<std::shared_ptr<Node>> children;

  const Text* Find(const Text& name) const;
  Text Get(const Text& name, const Text& def = {}) const;
  void Set(const Text& name, const Text& value);
  Text Id() const;
  std::shared_ptr<Node> Copy() const;
};
using NodePtr = std::shared_ptr<Node>;

struct Rule {
  int type;
  std::vector<std::pair<Text, Text>> path;
  Text elementId;
  Text name;   // of the attribute or the child
  Text value;  // of the attribute, the content, or the id of the child
  NodePtr element;
  std::vector<Text> order;
};

class Diff {
 public:
  void Generate(const Node& first, const Node& second);
  void Write(const Text& path, const Text& origName) const;
  // Reads back what Write does to empty ids, and applies the rules.
  void Apply(Node& layout);

 private:
  using Path = std::vector<std::pair<Text, Text>>;
  void Process(Path path, const Node& first, const Node& second);
  int Match(const Node& child, const Node& other, bool isFromFirst);
  bool IsSkipped(const Path& path, const Node& node, bool isFromFirst);
  void Renumber(Node& node);
  bool Validate(const Node& root, Node& node);
  void ApplyRule(Node& root, const Rule& rule);
  std::map<Text, Text>& BarIds(bool isFromFirst) { return isFromFirst ? m_toNew : m_toOrig; }

  std::vector<Rule> m_rules;
  std::map<Text, Text> m_toNew;
  std::map<Text, Text> m_toOrig;
  std::set<Text> m_controls;
  int m_nextBarId = 0;
};

// Writes a layout as an export does.
void Export(const Node& root, const Text& path);

}  // namespace model
