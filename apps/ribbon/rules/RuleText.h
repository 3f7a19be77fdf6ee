// Rules in plain words, in the user's language.
//
//   Settings/NormalLayout/CommandBars/CommandBars/CommandBar 7: Visible changes from "1" to "0"
#pragma once

#include <vector>

#include "ribbon/rules/DiffFile.h"

namespace ribbon {

// The element that a rule is about: "Settings/NormalLayout/CommandBar 7".
WString PlaceOf(const Rule& rule);

// Where and what. The events, which may be none, give the value that an attribute had.
WString TextOf(const Rule& rule, const std::vector<RuleEvent>& events);

// Why a rule has no effect, or not all of it.
WString TextOf(const RuleEvent& event, const Rule& rule);

// The same, as "FILE:LINE: PLACE: why".
WString FaultLine(const DiffFile& diff, const RuleEvent& event);

// Prints the line of each fault; gives how many rules have one.
template <class Print>
int TellFaults(const DiffFile& diff, const Outcome& outcome, Print print) {
  int count = 0;
  for (const std::vector<RuleEvent>& events : outcome.events) {
    bool hasFault = false;
    for (const RuleEvent& event : events) {
      if (!IsFault(event.event)) continue;
      hasFault = true;
      print(FaultLine(diff, event));
    }
    count += hasFault;
  }
  return count;
}

}  // namespace ribbon
