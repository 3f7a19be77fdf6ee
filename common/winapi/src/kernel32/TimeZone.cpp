// The machine's time zone as a record.
#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "kernel32/PathName.h"
#include "kernel32/ZoneChanges.h"
#include "kernel32/ZoneRule.h"

using std::chrono::days;
using std::chrono::floor;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

namespace {

constexpr const char* kZoneOfMachine = "/etc/localtime";
constexpr const char* kZoneFolder = "/usr/share/zoneinfo";
constexpr int kDaysOfWeek = 7;

// A file of compiled zone data ("TZif"). From version 2 on the rule for times behind its tables is
// its last line.
struct ZoneFile {
  bool isZone = false;
  std::string rule;
};

ZoneFile ReadZoneFile(const std::string& path) {
  constexpr std::string_view kMagic = "TZif";
  ZoneFile result;
  std::ifstream file(path, std::ios::binary);
  char head[kMagic.size() + 1] = {};
  if (!file.read(head, sizeof head) || !std::string_view(head, sizeof head).starts_with(kMagic)) {
    return result;
  }
  result.isZone = true;
  if (head[kMagic.size()] < '2') return result;
  std::string text((std::istreambuf_iterator<char>(file)), {});
  if (!text.ends_with('\n')) return result;
  text.pop_back();
  result.rule = text.substr(text.rfind('\n') + 1);
  return result;
}

// The moment of a call, and the year that the local clock shows then.
struct Now {
  Now() : year(std::chrono::year_month_day(floor<days>(moment + PeriodAt(moment).offset)).year()) {}
  const sys_seconds moment = floor<seconds>(std::chrono::system_clock::now());
  const std::chrono::year year;
};

// A file may have other changes for this year than its rule has: those of a rule that begins later,
// or that follow another calendar.
ZoneRule RuleOfFile(const ZoneFile& file, const Now& now) {
  const ZoneChanges changes = ChangesIn(now.year);
  const std::optional<ZoneRule> rule = ParseZoneRule(file.rule);
  if (rule && Foretells(*rule, changes, now.year)) return *rule;
  return RuleOf(changes, now.year, now.moment);
}

// What TZ says: a file, by its path or its name in the folder of zones, or a rule.
ZoneRule RuleOfText(std::string_view text, const Now& now) {
  ZoneRule utc{{"UTC", seconds(0)}, {}};
  if (text.starts_with(':')) text.remove_prefix(1);
  if (text.empty()) return utc;
  const char* const folder = std::getenv("TZDIR");
  std::string path(text);
  if (path[0] != '/') path = std::string(folder == nullptr ? kZoneFolder : folder) + '/' + path;
  const ZoneFile file = ReadZoneFile(path);
  return file.isZone ? RuleOfFile(file, now) : ParseZoneRule(text).value_or(utc);
}

ZoneRule RuleOfMachine(const Now& now) {
  const char* const text = std::getenv("TZ");
  return RuleOfText(text != nullptr ? text : kZoneOfMachine, now);
}

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

SYSTEMTIME ToRecord(const ZoneDate& date, std::chrono::year year) {
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

DWORD WINAPI GetTimeZoneInformation(LPTIME_ZONE_INFORMATION zone) {
  tzset();
  const Now now;
  const ZoneRule rule = RuleOfMachine(now);
  *zone = {};
  zone->Bias = ToBias(rule.standard.offset);
  SetName(rule.standard.name, zone->StandardName);
  if (!rule.daylight) return TIME_ZONE_ID_UNKNOWN;
  zone->StandardDate = ToRecord(rule.daylight->end, now.year);
  SetName(rule.daylight->period.name, zone->DaylightName);
  zone->DaylightDate = ToRecord(rule.daylight->begin, now.year);
  zone->DaylightBias = ToBias(rule.daylight->period.offset) - zone->Bias;
  return rule.IsDaylight(now.moment) ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
}
