// A diff file with its rules, as the commands look at it.
#pragma once

#include <vector>

#include "kelp0lang/XmlDiffManager.h"
#include "ribbon/files/XmlProbe.h"

namespace ribbon {

using Manager = kelp::CXmlDiffManager;
using Rule = Manager::TDiffRule;
using RuleEvent = Manager::TRuleEvent;
using RuleEvents = Manager::TRuleEvents;

class DiffFile {
 public:
  // Reads the file whose path this is. Throws Failure where it isn't a diff file, or a rule of it
  // lacks something.
  DiffFile(const Argument& file, const WString& path);

  const Argument& File() const { return m_file; }
  const Manager::TRules& Rules() const { return m_manager.GetRules(); }
  // Of the file, where the rule begins.
  int LineOf(std::size_t rule) const { return m_lines.at(rule); }
  // The name of the layout that the rules were made from.
  const WString& OrigName() const { return m_origName; }

 private:
  Argument m_file;
  Manager m_manager;
  std::vector<int> m_lines;
  WString m_origName;
};

// What came of the rules on a layout.
struct Outcome {
  // For each rule its events.
  std::vector<std::vector<RuleEvent>> events;

  Outcome(const DiffFile& diff, const RuleEvents& all);
};

// Whether the event is one that the user has to hear of.
bool IsFault(Manager::ERuleEvent event);

}  // namespace ribbon
