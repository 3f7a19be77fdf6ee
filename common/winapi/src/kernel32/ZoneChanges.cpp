#include "kernel32/ZoneChanges.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <iterator>
#include <utility>

using std::chrono::days;
using std::chrono::floor;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year;

namespace {

// The moment at which a year begins on the zone's clock.
sys_seconds BeginOf(year y, const ZoneClock& clock) {
  const sys_seconds midnight = sys_days(y / 1 / 1);
  return midnight - clock(midnight).offset;
}

// The first moment of another offset than the one before.
sys_seconds ChangeBetween(sys_seconds before, sys_seconds after, const ZoneClock& clock) {
  const seconds old = clock(before).offset;
  while (after - before > seconds(1)) {
    const sys_seconds middle = before + (after - before) / 2;
    (clock(middle).offset == old ? before : after) = middle;
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

ZonePeriod LocalPeriodAt(sys_seconds moment) {
  const std::time_t time = moment.time_since_epoch().count();
  tm local;
  localtime_r(&time, &local);
  return {local.tm_zone, seconds(local.tm_gmtoff)};
}

ZoneNow::ZoneNow(ZoneClock zoneClock)
    : clock(std::move(zoneClock)),
      moment(floor<seconds>(std::chrono::system_clock::now())),
      year(std::chrono::year_month_day(floor<days>(moment + clock(moment).offset)).year()) {}

ZoneChanges ChangesOfYear(const ZoneNow& now) {
  ZoneChanges changes;
  const sys_seconds end = BeginOf(now.year + std::chrono::years(1), now.clock);
  for (sys_seconds from = BeginOf(now.year, now.clock); from < end;) {
    const sys_seconds to = std::min<sys_seconds>(from + days(1), end);
    const ZonePeriod before = now.clock(from);
    // The change at the end itself is the next year's.
    const ZonePeriod after = now.clock(to == end ? to - seconds(1) : to);
    if (before.offset != after.offset) {
      changes.push_back({ChangeBetween(from, to, now.clock), before, after});
    }
    from = to;
  }
  return changes;
}

bool Foretells(const ZoneRule& rule, const ZoneChanges& changes, const ZoneNow& now) {
  if (!rule.daylight) {
    const seconds offset = now.clock(BeginOf(now.year, now.clock)).offset;
    return changes.empty() && rule.standard.offset == offset;
  }
  const auto isChange = [&](const ZoneChange& change) {
    const bool begins = change.moment == rule.BeginIn(now.year);
    return (begins || change.moment == rule.EndIn(now.year)) &&
           change.after.offset == (begins ? rule.daylight->period : rule.standard).offset;
  };
  return changes.size() == 2 && std::all_of(changes.begin(), changes.end(), isChange);
}

ZoneRule RuleOf(const ZoneChanges& changes, const ZoneNow& now) {
  if (changes.empty()) return {now.clock(now.moment), {}};
  const auto next = std::find_if(changes.begin(), changes.end(), [&now](const ZoneChange& change) {
    return change.moment > now.moment;
  });
  const auto second = next == changes.begin() ? std::min(next + 1, std::prev(changes.end()))
                      : next == changes.end() ? std::prev(next)
                                              : next;
  const auto first = second == changes.begin() ? second : std::prev(second);
  if (first != second && first->before.offset == second->after.offset) {
    return RuleOfTwo(*first, *second, now.year);
  }
  return RuleOfOne(next == changes.end() ? changes.back() : *next, now.year);
}
