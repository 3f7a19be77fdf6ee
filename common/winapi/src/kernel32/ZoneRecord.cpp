#include "kernel32/ZoneRecord.h"

#include <chrono>
#include <cstdlib>
#include <iterator>
#include <optional>

#include "kernel32/PathName.h"

using std::chrono::days;
using std::chrono::floor;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;

namespace {

constexpr const char* kZoneFolder = "/usr/share/zoneinfo";
constexpr int kDaysOfWeek = 7;

LONG ToBias(seconds offset) {
  return static_cast<LONG>(-floor<minutes>(offset).count());
}

void SetTimeOfDay(std::chrono::milliseconds sinceMidnight, SYSTEMTIME& date) {
  const std::chrono::hh_mm_ss time(sinceMidnight);
  date.wHour = static_cast<WORD>(time.hours().count());
  date.wMinute = static_cast<WORD>(time.minutes().count());
  date.wSecond = static_cast<WORD>(time.seconds().count());
  date.wMilliseconds = static_cast<WORD>(time.subseconds().count());
}

// The weekday and week of a day. The last of its kind in the month, though it be the fourth, is
// taken for week 5 where its rule speaks of the last.
void SetDay(sys_days day, bool prefersLast, SYSTEMTIME& date) {
  const std::chrono::year_month_day calendar = day;
  const auto dayOfMonth = static_cast<unsigned>(calendar.day());
  const std::chrono::year_month_day nextWeek = day + days(kDaysOfWeek);
  const bool isLast = nextWeek.month() != calendar.month();
  const unsigned week = (dayOfMonth - 1) / kDaysOfWeek + 1;
  date.wMonth = static_cast<WORD>(static_cast<unsigned>(calendar.month()));
  date.wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
  date.wDay = static_cast<WORD>(prefersLast && isLast ? kLastWeek : week);
}

SYSTEMTIME DateRecord(const ZoneDate& date, std::chrono::year year) {
  constexpr std::chrono::milliseconds kEndOfDay = days(1) - std::chrono::milliseconds(1);
  const bool endsDay = date.time == days(1);
  const days shift = endsDay ? days(0) : floor<days>(date.time);
  const bool isWeek = date.form == ZoneDate::Form::WeekOfMonth;
  SYSTEMTIME record = {};
  if (isWeek && shift == days(0)) {
    record.wMonth = static_cast<WORD>(date.month);
    record.wDayOfWeek = static_cast<WORD>(date.weekday);
    record.wDay = static_cast<WORD>(date.week);
  } else {
    SetDay(date.DayIn(year) + shift, isWeek && date.week == kLastWeek, record);
  }
  SetTimeOfDay(endsDay ? kEndOfDay : date.time - shift, record);
  return record;
}

void SetName(const std::string& name, WCHAR (&target)[32]) {
  FromUtf8(name).copy(target, std::size(target) - 1);
}

}  // namespace

std::string ZoneFolder() {
  const char* const folder = std::getenv("TZDIR");
  return folder == nullptr ? kZoneFolder : folder;
}

ZoneRule RuleOfFile(const std::string& lastLine, const ZoneNow& now) {
  const ZoneChanges changes = ChangesOfYear(now);
  const std::optional<ZoneRule> rule = ParseZoneRule(lastLine);
  return rule && Foretells(*rule, changes, now) ? *rule : RuleOf(changes, now);
}

DWORD ToRecord(const ZoneRule& rule, const ZoneNow& now, TIME_ZONE_INFORMATION& record) {
  record = {};
  record.Bias = ToBias(rule.standard.offset);
  SetName(rule.standard.name, record.StandardName);
  if (!rule.daylight) return TIME_ZONE_ID_UNKNOWN;
  record.StandardDate = DateRecord(rule.daylight->end, now.year);
  SetName(rule.daylight->period.name, record.DaylightName);
  record.DaylightDate = DateRecord(rule.daylight->begin, now.year);
  record.DaylightBias = ToBias(rule.daylight->period.offset) - record.Bias;
  return rule.IsDaylight(now.moment) ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
}
