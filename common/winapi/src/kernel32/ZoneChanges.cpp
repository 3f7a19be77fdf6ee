#include "kernel32/ZoneChanges.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <iterator>

using std::chrono::days;
using std::chrono::floor;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year;

namespace {

seconds OffsetAt(sys_seconds moment) {
  return PeriodAt(moment).offset;
}

// The moment at which a year begins on the local clock.
sys_seconds BeginOf(year y) {
  const sys_seconds midnight = sys_days(y / 1 / 1);
  return midnight - OffsetAt(midnight);
}

// The first moment of another offset than the one before.
sys_seconds ChangeBetween(sys_seconds before, sys_seconds after) {
  const seconds old = OffsetAt(before);
  while (after - before > seconds(1)) {
    const sys_seconds middle = before + (after - before) / 2;
    (OffsetAt(middle) == old ? before : after) = middle;
  }
  return after;
}

ZoneDate DayOfYear(days day, seconds time) {
  ZoneDate date;
  date.form = ZoneDate::Form::DayOfYear;
  date.day = static_cast<int>(day.count());
  date.time = time;
  return date;
}

// What the clock reads as a change comes.
ZoneDate DateOf(const ZoneChange& change, year y) {
  const sys_seconds clock = change.moment + change.before.offset;
  const sys_days day = floor<days>(clock);
  return DayOfYear(day - sys_days(y / 1 / 1), clock - day);
}

ZoneRule RuleOfOne(const ZoneChange& change, year y) {
  if (change.after.offset > change.before.offset) {
    const ZoneDate end = DayOfYear(sys_days(y / 12 / 31) - sys_days(y / 1 / 1), days(1));
    return {change.before, ZoneDaylight{change.after, DateOf(change, y), end}};
  }
  const ZoneDate begin = DayOfYear(days(0), seconds(0));
  return {change.after, ZoneDaylight{change.before, begin, DateOf(change, y)}};
}

ZoneRule RuleOfTwo(const ZoneChange& first, const ZoneChange& second, year y) {
  const bool begins = first.after.offset > first.before.offset;
  const ZoneChange& begin = begins ? first : second;
  const ZoneChange& end = begins ? second : first;
  return {end.after, ZoneDaylight{begin.after, DateOf(begin, y), DateOf(end, y)}};
}

}  // namespace

ZonePeriod PeriodAt(sys_seconds moment) {
  const std::time_t time = moment.time_since_epoch().count();
  tm local;
  localtime_r(&time, &local);
  return {local.tm_zone, seconds(local.tm_gmtoff)};
}

ZoneChanges ChangesIn(year y) {
  ZoneChanges changes;
  const sys_seconds end = BeginOf(y + std::chrono::years(1));
  for (sys_seconds from = BeginOf(y); from < end;) {
    const sys_seconds to = std::min<sys_seconds>(from + days(1), end);
    const ZonePeriod before = PeriodAt(from);
    // The change at the end itself is the next year's.
    const ZonePeriod after = PeriodAt(to == end ? to - seconds(1) : to);
    if (before.offset != after.offset) {
      changes.push_back({ChangeBetween(from, to), before, after});
    }
    from = to;
  }
  return changes;
}

bool Foretells(const ZoneRule& rule, const ZoneChanges& changes, year y) {
  if (!rule.daylight) {
    return changes.empty() && rule.standard.offset == OffsetAt(BeginOf(y));
  }
  const auto isChange = [&](const ZoneChange& change) {
    const bool begins = change.moment == rule.BeginIn(y);
    return (begins || change.moment == rule.EndIn(y)) &&
           change.after.offset == (begins ? rule.daylight->period : rule.standard).offset;
  };
  return changes.size() == 2 && std::all_of(changes.begin(), changes.end(), isChange);
}

ZoneRule RuleOf(const ZoneChanges& changes, year y, sys_seconds now) {
  if (changes.empty()) return {PeriodAt(now), {}};
  const auto next = std::find_if(changes.begin(), changes.end(),
                                 [now](const ZoneChange& change) { return change.moment > now; });
  const auto second = next == changes.begin() ? std::min(next + 1, std::prev(changes.end()))
                      : next == changes.end() ? std::prev(next)
                                              : next;
  const auto first = second == changes.begin() ? second : std::prev(second);
  if (first != second && first->before.offset == second->after.offset) {
    return RuleOfTwo(*first, *second, y);
  }
  return RuleOfOne(next == changes.end() ? changes.back() : *next, y);
}
