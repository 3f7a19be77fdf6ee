#include "ribbon/rules/DiffFile.h"

namespace ribbon {

DiffFile::DiffFile(const Argument& file, const WString& path)
    : m_file(file), m_lines(RequireDiff(file, path)) {
  sarn_text::CSarnStringT<WChar> error;
  int line = 0;
  if (!m_manager.ReadDiffFile(path, &error, &line)) FailInFile(file, line, error.c_str());
  m_manager.GetOrigName(path, m_origName);
}

Outcome::Outcome(const DiffFile& diff, const RuleEvents& all) : events(diff.Rules().size()) {
  for (const RuleEvent& event : all) events.at(event.rule).push_back(event);
}

bool IsFault(Manager::ERuleEvent event) {
  return event != Manager::ERuleEvent::eOldValue;
}

}  // namespace ribbon
