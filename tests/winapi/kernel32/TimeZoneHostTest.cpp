// The record of the zones that TZ and zone files give.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/ZoneScope.h"

using std::chrono::days;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year;
using Hours = std::chrono::sys_time<hours>;
using Milliseconds = std::chrono::sys_time<milliseconds>;

namespace {

tm LocalNow() {
  const std::time_t now = std::time(nullptr);
  tm local;
  localtime_r(&now, &local);
  return local;
}

// The month, the week, the weekday and the time of a change, such as 3.5.0/2.
std::string TextOf(const SYSTEMTIME& date) {
  EXPECT_EQ(date.wYear, 0);
  std::string text;
  for (const auto& [value, separator] :
       {std::pair(date.wMonth, '.'), std::pair(date.wDay, '.'), std::pair(date.wDayOfWeek, '/'),
        std::pair(date.wHour, ':'), std::pair(date.wMinute, ':'), std::pair(date.wSecond, '.')}) {
    text += std::to_string(value) + separator;
  }
  text += std::to_string(date.wMilliseconds);
  return text.substr(0, text.find(":0:0.0"));
}

// The record of a zone: its bias and name, and those of its daylight saving with its dates.
std::string RecordOf(const char* name) {
  const ZoneScope scope(name);
  TIME_ZONE_INFORMATION zone;
  const DWORD part = GetTimeZoneInformation(&zone);
  EXPECT_EQ(zone.StandardBias, 0);
  std::string text =
      std::to_string(zone.Bias) + ' ' + std::filesystem::path(zone.StandardName).string();
  const bool hasDates = zone.DaylightDate.wMonth != 0 || zone.StandardDate.wMonth != 0;
  if (hasDates || zone.DaylightBias != 0 || zone.DaylightName[0] != 0) {
    text += ", " + std::to_string(zone.DaylightBias) + ' ' +
            std::filesystem::path(zone.DaylightName).string() + ' ' + TextOf(zone.DaylightDate) +
            ' ' + TextOf(zone.StandardDate);
  }
  // Which part of the year it is the C library knows too.
  const bool isStandard = LocalNow().tm_gmtoff == -60 * zone.Bias;
  EXPECT_EQ(part, !hasDates    ? DWORD{TIME_ZONE_ID_UNKNOWN}
                  : isStandard ? DWORD{TIME_ZONE_ID_STANDARD}
                               : DWORD{TIME_ZONE_ID_DAYLIGHT})
      << name;
  return text;
}

TEST(HostZone, ARuleIsARecord) {
  const std::pair<const char*, const char*> kCases[] = {
      {"CET-1CEST,M3.5.0,M10.5.0/3", "-60 CET, -60 CEST 3.5.0/2 10.5.0/3"},
      {"GMT0BST,M3.5.0/1,M10.5.0", "0 GMT, -60 BST 3.5.0/1 10.5.0/2"},
      {"EST5EDT,M3.2.0,M11.1.0", "300 EST, -60 EDT 3.2.0/2 11.1.0/2"},
      {"EST5EDT", "300 EST, -60 EDT 3.2.0/2 11.1.0/2"},
      {"AEST-10AEDT,M10.1.0,M4.1.0/3", "-600 AEST, -60 AEDT 10.1.0/2 4.1.0/3"},
      {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", "-630 +1030, -30 +11 10.1.0/2 4.1.0/2"},
      {"<-04>4<-03>,M9.1.6/24,M4.1.6/24", "240 -04, -60 -03 9.1.6/23:59:59.999 4.1.6/23:59:59.999"},
      {"NST3:30NDT,M3.2.0/0:01:30,M11.1.0/+0:01", "210 NST, -60 NDT 3.2.0/0:1:30.0 11.1.0/0:1:0.0"},
      // Its winter time is called the daylight saving.
      {"IST-1GMT0,M10.5.0,M3.5.0/1", "0 GMT, -60 IST 3.5.0/1 10.5.0/2"},
      {"IST-5:30", "-330 IST"},
      {"", "0 UTC"},
      // It never ends.
      {"EST5EDT,0/0,J365/25", "240 EDT"},
      {"LMT3EDT4,0/0,J365/23", "240 EDT"},
  };
  for (const auto& [zone, record] : kCases) EXPECT_EQ(RecordOf(zone), record) << zone;
}

TEST(HostZone, WhatIsNoRuleIsUtc) {
  for (const char* text : {"Nowhere", "C-1", "CES", "CET-25", "CET-1:60", "<CET-1", "/none/such",
                           "99999999999999999999", "CET-1CEST,M3.5.0", "CET-1CEST,M3.6.0,M10.5.0",
                           "CET-1CEST,M13.1.0,M10.5.0", "CET-1CEST,J0,J365",
                           "CET-1CEST,M3.5.0,M10.5.0/168", "CET-1CEST,M3.5.0,M10.5.0/3x"}) {
    EXPECT_EQ(RecordOf(text), "0 UTC") << text;
  }
}

// What a date of a record means in a year; 23:59:59.999 is the end of its day.
Milliseconds Meant(const SYSTEMTIME& date, year y) {
  const auto m = y / date.wMonth;
  const weekday day(date.wDayOfWeek);
  const sys_days last = m / day[std::chrono::last], counted = m / day[date.wDay];
  return (date.wDay == 5 ? last : counted) + hours(date.wHour) + minutes(date.wMinute) +
         seconds(date.wSecond) + milliseconds(date.wMilliseconds);
}

// Local time minus UTC over a year, by the record.
class Offsets {
 public:
  Offsets(const TIME_ZONE_INFORMATION& zone, year y)
      : m_standard(-60 * zone.Bias), m_daylight(m_standard - 60 * zone.DaylightBias) {
    if (zone.DaylightDate.wMonth == 0) return;
    m_begin = Meant(zone.DaylightDate, y) - seconds(m_standard);
    m_end = Meant(zone.StandardDate, y) - seconds(m_daylight);
  }
  long At(std::time_t moment) const {
    const Milliseconds at{seconds(moment)};
    const bool between = at >= std::min(m_begin, m_end) && at < std::max(m_begin, m_end);
    return between == (m_begin < m_end) ? m_daylight : m_standard;
  }

 private:
  long m_standard, m_daylight;
  Milliseconds m_begin = Milliseconds::max(), m_end = Milliseconds::min();
};

struct Agreement {
  int changes = 0;
  int hoursApart = 0;
  bool isNow = false;
};

// Of the record with the C library's clock, over the hours of this year.
Agreement AgreementOf(const char* name) {
  const ZoneScope scope(name);
  TIME_ZONE_INFORMATION zone;
  GetTimeZoneInformation(&zone);
  const year y(LocalNow().tm_year + 1900);
  Agreement agreement;
  const Offsets offsets(zone, y);
  agreement.isNow = offsets.At(std::time(nullptr)) == LocalNow().tm_gmtoff;
  std::time_t moment = seconds(sys_days(y / 1 / 1).time_since_epoch()).count() - 48 * 3600;
  long before = 0;
  for (bool first = true;; moment += 3600) {
    tm local;
    localtime_r(&moment, &local);
    if (local.tm_year + 1901 == int{y}) continue;
    if (local.tm_year + 1900 != int{y}) return agreement;
    agreement.changes += !first && local.tm_gmtoff != before;
    agreement.hoursApart += local.tm_gmtoff != offsets.At(moment);
    before = local.tm_gmtoff;
    first = false;
  }
}

TEST(HostZone, EveryZoneOfTheDatabaseAgreesWithTheClock) {
  const std::vector<std::filesystem::path> zones = ZonesOfTheDatabase();
  if (zones.empty()) GTEST_SKIP() << "there is no database of zones";
  for (const std::filesystem::path& path : zones) {
    const Agreement agreement = AgreementOf(path.c_str());
    EXPECT_TRUE(agreement.isNow) << path;
    if (agreement.changes != 0 && agreement.changes != 2) continue;  // more than a record holds
    EXPECT_EQ(agreement.hoursApart, 0) << path;
  }
}

// The list reads the files itself; a process reads its own zone through the C library.
TEST(HostZone, EachOfTheListIsAsIfItWereTheMachines) {
  DYNAMIC_TIME_ZONE_INFORMATION listed;
  std::size_t count = 0;
  for (; EnumDynamicTimeZoneInformation(static_cast<DWORD>(count), &listed) == ERROR_SUCCESS;
       ++count) {
    const std::string name = std::filesystem::path(listed.TimeZoneKeyName).string();
    const ZoneScope scope(name.c_str());
    TIME_ZONE_INFORMATION zone;
    GetTimeZoneInformation(&zone);
    EXPECT_EQ(std::memcmp(&zone, &listed, sizeof zone), 0) << name;
  }
  EXPECT_EQ(count, ZonesOfTheDatabase().size());
}

// Days of the year, and times outside of their day, hold for the current year.
TEST(HostZone, OtherDatesBecomeThoseOfThisYear) {
  const year y(LocalNow().tm_year + 1900);
  const sys_days firstDay = y / 1 / 1, lastOfMarch = y / 3 / weekday(0)[std::chrono::last],
                 lastOfOctober = y / 10 / weekday(0)[std::chrono::last],
                 thursday = y / 3 / weekday(4)[4];
  const struct {
    const char* zone;
    Hours begin, end;
  } kCases[] = {
      // 29 February is no day of these.
      {"CET-1CEST,J60,J300/3", sys_days(y / 3 / 1) + hours(2), sys_days(y / 10 / 27) + hours(3)},
      {"CET-1CEST,J59/1:00,J365/0", sys_days(y / 2 / 28) + hours(1), sys_days(y / 12 / 31)},
      {"CET-1CEST,80,300", firstDay + days(80) + hours(2), firstDay + days(300) + hours(2)},
      {"IST-2IDT,M3.4.4/26,M10.5.0", thursday + hours(26), lastOfOctober + hours(2)},
      {"<-02>2<-01>,M3.5.0/-1,M10.5.0/0", lastOfMarch - hours(1), lastOfOctober},
  };
  for (const auto& c : kCases) {
    const ZoneScope scope(c.zone);
    TIME_ZONE_INFORMATION zone;
    GetTimeZoneInformation(&zone);
    EXPECT_EQ(Meant(zone.DaylightDate, y), c.begin) << c.zone << ' ' << TextOf(zone.DaylightDate);
    EXPECT_EQ(Meant(zone.StandardDate, y), c.end) << c.zone << ' ' << TextOf(zone.StandardDate);
  }
}

std::string BigEndian(std::int64_t number, int size) {
  std::string bytes;
  for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>(number >> 8 * i);
  return bytes;
}

// Moments, and the hours to the east, 0 to 2, from there on.
using Changes = std::vector<std::pair<std::time_t, int>>;

// A zone file that begins an hour to the east.
std::string ZoneFile(char version, const std::string& rule, const Changes& changes = {}) {
  const auto block = [version](const Changes& table) {
    std::string bytes = std::string("TZif") + version + std::string(15 + 12, '\0');
    bytes +=
        BigEndian(static_cast<std::int64_t>(table.size()), 4) + BigEndian(4, 4) + BigEndian(4, 4);
    for (const auto& [moment, hours] : table) bytes += BigEndian(moment, 8);
    for (const auto& [moment, hours] : table) bytes += static_cast<char>(hours + 1);
    for (const int hours : {1, 0, 1, 2}) bytes += BigEndian(hours * 3600, 4) + std::string(2, '\0');
    return bytes + std::string("OLD", 4);
  };
  return version < '2' ? block({}) : block({}) + block(changes) + '\n' + rule + '\n';
}

TEST(HostZone, AFileGivesTheChangesOfThisYearThoughItsRuleKnowsNone) {
  const TempFolder folder;
  const std::time_t now = std::time(nullptr);
  const year y(LocalNow().tm_year + 1900);
  const auto toSeconds = [](sys_days day) { return seconds(day.time_since_epoch()).count(); };
  const std::time_t begin = toSeconds(y / 1 / 2), end = toSeconds(y / 12 / 30);
  const auto part = [](std::time_t from, std::time_t to, int thirds) {
    return (from + (to - from) * thirds / 3) / 3600 * 3600;
  };
  const std::time_t past1 = part(begin, now, 1), past2 = part(begin, now, 2),
                    next1 = part(now, end, 1), next2 = part(now, end, 2);
  const std::time_t spring = toSeconds(y / 3 / 29) + 3600, autumn = toSeconds(y / 10 / 30);
  const struct {
    Changes changes;
    int hoursApart;  // -1: those of a year that no record can tell
  } kCases[] = {
      {{}, 0},
      {{{spring, 0}, {autumn, 1}}, 0},
      {{{spring, 2}, {autumn, 1}}, 0},
      {{{spring, 2}}, 0},
      // Its year begins with an hour that the record counts to the year before.
      {{{autumn, 0}}, 1},
      {{{past1, 2}, {past2, 1}, {next1, 2}}, -1},
      {{{past1, 0}, {next1, 1}, {next2, 2}}, -1},
      {{{past1, 0}, {past2, 1}, {next1, 2}, {next2, 0}}, -1},
      {{{past1, 0}, {past2, 2}}, -1},
      {{{next1, 2}, {next2, 0}}, -1},
  };
  constexpr std::time_t kRoom = 9 * 86400;
  const bool hasRoom = now - begin > kRoom && end - now > kRoom;
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    if (kCases[i].hoursApart < 0 && !hasRoom) continue;  // for changes on both sides of now
    const Changes& changes = kCases[i].changes;
    const std::string last = std::to_string(changes.empty() ? 1 : changes.back().second);
    folder.Write("Zone" + std::to_string(i), ZoneFile('2', "<+0" + last + ">-" + last, changes));
    const std::string path = folder.Path() / ("Zone" + std::to_string(i));
    const Agreement agreement = AgreementOf(path.c_str());
    EXPECT_EQ(agreement.changes, static_cast<int>(changes.size())) << i;
    EXPECT_TRUE(agreement.isNow) << i;
    if (kCases[i].hoursApart < 0) continue;
    EXPECT_EQ(agreement.hoursApart, kCases[i].hoursApart) << i;
  }
}

TEST(HostZone, AFileGivesTheRuleAtItsEnd) {
  const TempFolder folder;
  const Changes past = {{0, 1}};  // behind which the rule holds
  folder.Write("Rome", ZoneFile('2', "CET-1CEST,M3.5.0,M10.5.0/3", past));
  folder.Write("Lord_Howe", ZoneFile('3', "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", past));
  folder.Write("None", ZoneFile('2', ""));
  folder.Write("Old", ZoneFile('\0', ""));
  folder.Write("Cut", ZoneFile('2', "CET-1CEST,M3.5.0,M10.5.0/3").substr(0, 4));
  folder.Write("Text", "CET-1CEST,M3.5.0,M10.5.0/3\n");
  const Variable zones("TZDIR", folder.Path().c_str());
  const std::string path = folder.Path() / "Rome", kRome = "-60 CET, -60 CEST 3.5.0/2 10.5.0/3";
  const std::pair<std::string, std::string> kCases[] = {
      {path, kRome},
      {":" + path, kRome},
      {"Rome", kRome},
      {"Lord_Howe", "-630 +1030, -30 +11 10.1.0/2 4.1.0/2"},
      // Without a rule the offset stays what it is.
      {"None", "-60 OLD"},
      {"Old", "-60 OLD"},
      {"Cut", "0 UTC"},
      {"Text", "0 UTC"},
  };
  for (const auto& [zone, record] : kCases) EXPECT_EQ(RecordOf(zone.c_str()), record) << zone;
}

// No length of a file makes the list read behind its end.
TEST(HostZone, AListedFileMayBeCut) {
  const TempFolder folder;
  const Variable zones("TZDIR", folder.Path().c_str());
  const std::string whole = ZoneFile('2', "CET-1CEST,M3.5.0,M10.5.0/3", {{0, 1}});
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    folder.Write("Zone", whole.substr(0, size));
    DYNAMIC_TIME_ZONE_INFORMATION zone;
    const bool isZone = size > 4;
    ASSERT_EQ(EnumDynamicTimeZoneInformation(0, &zone),
              isZone ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_NO_MORE_ITEMS})
        << size;
    if (!isZone) continue;
    const bool hasRule = size == whole.size();
    EXPECT_EQ(zone.DaylightBias, hasRule ? -60 : 0) << size;
    EXPECT_TRUE(zone.Bias == -60 || (zone.Bias == 0 && !hasRule)) << size;
  }
}

std::int64_t SecondsOf(const SYSTEMTIME& date) {
  FILETIME time;
  EXPECT_TRUE(SystemTimeToFileTime(&date, &time));
  return static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime) /
                                   10'000'000);
}

// The local clock follows a change of TZ at once.
TEST(HostZone, TheClockShowsIt) {
  for (const int east : {-11, -3, 0, 5, 13}) {
    const ZoneScope scope(("LMT" + std::to_string(-east)).c_str());
    SYSTEMTIME before, local, after;
    do {
      GetSystemTime(&before);
      GetLocalTime(&local);
      GetSystemTime(&after);
    } while (before.wSecond != after.wSecond);
    EXPECT_EQ(SecondsOf(local) - SecondsOf(before), east * 3600);
  }
}

}  // namespace
