// The changes of the offset in a zone, this year; internal to the layer.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "kernel32/ZoneRule.h"

// What is in force at a moment, in some zone.
using ZoneClock = std::function<ZonePeriod(std::chrono::sys_seconds)>;

// In the zone of the process, as the C library knows it. A change of TZ is taken up by tzset.
ZonePeriod LocalPeriodAt(std::chrono::sys_seconds moment);

// The moment of a call, and the year that the zone's clock shows then.
struct ZoneNow {
  explicit ZoneNow(ZoneClock zoneClock);
  const ZoneClock clock;
  const std::chrono::sys_seconds moment;
  const std::chrono::year year;
};

struct ZoneChange {
  std::chrono::sys_seconds moment;
  ZonePeriod before;
  ZonePeriod after;
};
using ZoneChanges = std::vector<ZoneChange>;

// Those of the year, in their order. Two within one day aren't told apart.
ZoneChanges ChangesOfYear(const ZoneNow& now);

// Whether a rule foretells just these.
bool Foretells(const ZoneRule& rule, const ZoneChanges& changes, const ZoneNow& now);

// A rule for the year alone. It has two changes: of more, the last before now and the next one, so
// that it holds now; a single one stays alone, with daylight saving from the begin of the year or
// to its end. Without a change it is the offset of now.
ZoneRule RuleOf(const ZoneChanges& changes, const ZoneNow& now);
