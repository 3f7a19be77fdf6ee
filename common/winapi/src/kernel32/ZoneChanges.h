// The changes of the offset in the zone of the process, as the C library knows them; internal to
// the layer.
#pragma once

#include <chrono>
#include <vector>

#include "kernel32/ZoneRule.h"

// What is in force at a moment. A change of TZ is taken up by tzset.
ZonePeriod PeriodAt(std::chrono::sys_seconds moment);

struct ZoneChange {
  std::chrono::sys_seconds moment;
  ZonePeriod before;
  ZonePeriod after;
};
using ZoneChanges = std::vector<ZoneChange>;

// Those of a year of the local clock, in their order. Two within one day aren't told apart.
ZoneChanges ChangesIn(std::chrono::year year);

// Whether a rule foretells just these.
bool Foretells(const ZoneRule& rule, const ZoneChanges& changes, std::chrono::year year);

// A rule for the year alone. It has two changes: of more, the last before now and the next one, so
// that it holds now; a single one stays alone, with daylight saving from the begin of the year or
// to its end. Without a change it is the offset of now.
ZoneRule RuleOf(const ZoneChanges& changes, std::chrono::year year, std::chrono::sys_seconds now);
