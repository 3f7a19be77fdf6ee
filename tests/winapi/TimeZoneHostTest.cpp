// The record of the zones that TZ and zone files give.
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <ostream>
#include <string>

#include "tests/TempFolder.h"
#include "tests/ZoneScope.h"

using std::chrono::day;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year;

namespace {

// What of a record tells the date of a change: month, weekday, week, time.
struct Change {
  int month = 0;
  int weekday = 0;
  int week = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int milliseconds = 0;

  friend bool operator==(const Change&, const Change&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Change& c) {
    return out << c.month << '.' << c.week << '.' << c.weekday << '/' << c.hour << ':' << c.minute
               << ':' << c.second << '.' << c.milliseconds;
  }
};

Change ToChange(const SYSTEMTIME& date) {
  EXPECT_EQ(date.wYear, 0);
  return {date.wMonth,  date.wDayOfWeek, date.wDay,         date.wHour,
          date.wMinute, date.wSecond,    date.wMilliseconds};
}

std::u16string ToWide(const std::string& text) {
  return {text.begin(), text.end()};
}

struct Zone {
  DWORD part;
  TIME_ZONE_INFORMATION record;
};

Zone GetZone() {
  Zone zone;
  zone.part = GetTimeZoneInformation(&zone.record);
  return zone;
}

struct Case {
  const char* zone;
  LONG bias;
  const char* standardName;
  LONG daylightBias = 0;
  const char* daylightName = "";
  Change begin = {};
  Change end = {};
};

void Expect(const Case& c) {
  SCOPED_TRACE(c.zone);
  const auto [part, record] = GetZone();
  EXPECT_EQ(record.Bias, c.bias);
  EXPECT_EQ(record.StandardBias, 0);
  EXPECT_EQ(record.DaylightBias, c.daylightBias);
  EXPECT_EQ(record.StandardName, ToWide(c.standardName));
  EXPECT_EQ(record.DaylightName, ToWide(c.daylightName));
  EXPECT_EQ(ToChange(record.DaylightDate), c.begin);
  EXPECT_EQ(ToChange(record.StandardDate), c.end);
  // Which part of the year it is the C library knows too.
  const std::time_t now = std::time(nullptr);
  tm local;
  localtime_r(&now, &local);
  const bool isStandard = local.tm_gmtoff == -60 * c.bias;
  if (c.begin == Change()) {
    EXPECT_EQ(part, static_cast<DWORD>(TIME_ZONE_ID_UNKNOWN));
  } else {
    EXPECT_EQ(part, static_cast<DWORD>(isStandard ? TIME_ZONE_ID_STANDARD : TIME_ZONE_ID_DAYLIGHT));
  }
}

TEST(HostZone, ARuleIsARecord) {
  const Case kCases[] = {
      {"CET-1CEST,M3.5.0,M10.5.0/3", -60, "CET", -60, "CEST", {3, 0, 5, 2}, {10, 0, 5, 3}},
      {"GMT0BST,M3.5.0/1,M10.5.0", 0, "GMT", -60, "BST", {3, 0, 5, 1}, {10, 0, 5, 2}},
      {"EST5EDT,M3.2.0,M11.1.0", 300, "EST", -60, "EDT", {3, 0, 2, 2}, {11, 0, 1, 2}},
      {"EST5EDT", 300, "EST", -60, "EDT", {3, 0, 2, 2}, {11, 0, 1, 2}},
      {"AEST-10AEDT,M10.1.0,M4.1.0/3", -600, "AEST", -60, "AEDT", {10, 0, 1, 2}, {4, 0, 1, 3}},
      {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
       -630,
       "+1030",
       -30,
       "+11",
       {10, 0, 1, 2},
       {4, 0, 1, 2}},
      {"<-04>4<-03>,M9.1.6/24,M4.1.6/24",
       240,
       "-04",
       -60,
       "-03",
       {9, 6, 1, 23, 59, 59, 999},
       {4, 6, 1, 23, 59, 59, 999}},
      {"NST3:30NDT,M3.2.0/0:01:30,M11.1.0/+0:01",
       210,
       "NST",
       -60,
       "NDT",
       {3, 0, 2, 0, 1, 30},
       {11, 0, 1, 0, 1}},
      // Its winter time is called the daylight saving.
      {"IST-1GMT0,M10.5.0,M3.5.0/1", 0, "GMT", -60, "IST", {3, 0, 5, 1}, {10, 0, 5, 2}},
      {"IST-5:30", -330, "IST"},
      {"<+0545>-5:45", -345, "+0545"},
      {"UTC0", 0, "UTC"},
      {"", 0, "UTC"},
      // It never ends.
      {"EST5EDT,0/0,J365/25", 240, "EDT"},
      {"XXX3EDT4,0/0,J365/23", 240, "EDT"},
  };
  for (const Case& c : kCases) {
    const ZoneScope scope(c.zone);
    Expect(c);
  }
}

TEST(HostZone, WhatIsNoRuleIsUtc) {
  const char* const kTexts[] = {"Nowhere",
                                "C-1",
                                "CES",
                                "CET-25",
                                "CET-1:60",
                                "<CET-1",
                                "CET-1CEST,M3.5.0",
                                "CET-1CEST,M3.6.0,M10.5.0",
                                "CET-1CEST,M13.1.0,M10.5.0",
                                "CET-1CEST,J0,J365",
                                "CET-1CEST,M3.5.0,M10.5.0/168",
                                "CET-1CEST,M3.5.0,M10.5.0/3x",
                                "/none/such",
                                "99999999999999999999"};
  for (const char* text : kTexts) {
    const ZoneScope scope(text);
    const auto [part, record] = GetZone();
    EXPECT_EQ(part, static_cast<DWORD>(TIME_ZONE_ID_UNKNOWN)) << text;
    EXPECT_EQ(record.Bias, 0) << text;
    EXPECT_EQ(record.StandardName, ToWide("UTC")) << text;
  }
}

// The day that a change of a record means in a year.
sys_days DayOf(const Change& change, year y) {
  const auto m = y / change.month;
  if (change.week == 5) return m / weekday(change.weekday)[std::chrono::last];
  return m / weekday(change.weekday)[change.week];
}

year ThisYear() {
  const std::time_t now = std::time(nullptr);
  tm local;
  localtime_r(&now, &local);
  return year(local.tm_year + 1900);
}

// Days of the year, and times outside of their day, hold for the current year.
TEST(HostZone, OtherDatesBecomeThoseOfThisYear) {
  const year y = ThisYear();
  const sys_days firstDay = y / 1 / 1;
  struct Dates {
    const char* zone;
    sys_days begin;
    int beginHour;
    sys_days end;
    int endHour;
  };
  const Dates kCases[] = {
      // 29 February is no day of these.
      {"CET-1CEST,J60,J300/3", y / 3 / 1, 2, y / 10 / 27, 3},
      {"CET-1CEST,J59/1:00,J365/0", y / 2 / 28, 1, y / 12 / 31, 0},
      {"CET-1CEST,80,300", firstDay + std::chrono::days(80), 2, firstDay + std::chrono::days(300),
       2},
      {"IST-2IDT,M3.4.4/26,M10.5.0", sys_days(y / 3 / weekday(4)[4]) + std::chrono::days(1), 2,
       y / 10 / weekday(0)[std::chrono::last], 2},
      {"<-02>2<-01>,M3.5.0/-1,M10.5.0/0",
       sys_days(y / 3 / weekday(0)[std::chrono::last]) - std::chrono::days(1), 23,
       y / 10 / weekday(0)[std::chrono::last], 0},
  };
  for (const Dates& c : kCases) {
    SCOPED_TRACE(c.zone);
    const ZoneScope scope(c.zone);
    const auto [part, record] = GetZone();
    const Change begin = ToChange(record.DaylightDate);
    const Change end = ToChange(record.StandardDate);
    EXPECT_EQ(DayOf(begin, y), c.begin) << begin;
    EXPECT_EQ(begin.hour, c.beginHour);
    EXPECT_EQ(DayOf(end, y), c.end) << end;
    EXPECT_EQ(end.hour, c.endHour);
  }
}

// A zone file with one type of local time and no change in its tables.
std::string ZoneFile(char version, const std::string& rule) {
  const auto block = [version] {
    const std::string counts(16, '\0');  // of what the file hasn't
    const std::string types("\0\0\0\1", 4);
    const std::string nameBytes("\0\0\0\4", 4);
    const std::string type("\0\0\x0e\x10\0\0", 6);  // an hour to the east
    return std::string("TZif") + version + std::string(15, '\0') + counts + types + nameBytes +
           type + std::string("OLD", 4);
  };
  if (version < '2') return block();
  return block() + block() + '\n' + rule + '\n';
}

TEST(HostZone, AFileGivesTheRuleAtItsEnd) {
  const TempFolder folder;
  folder.Write("Rome", ZoneFile('2', "CET-1CEST,M3.5.0,M10.5.0/3"));
  folder.Write("Lord_Howe", ZoneFile('3', "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0"));
  folder.Write("None", ZoneFile('2', ""));
  folder.Write("Old", ZoneFile('\0', ""));
  folder.Write("Cut", ZoneFile('2', "CET-1CEST,M3.5.0,M10.5.0/3").substr(0, 4));
  folder.Write("Text", "CET-1CEST,M3.5.0,M10.5.0/3\n");
  const Variable zones("TZDIR", folder.Path().c_str());
  const std::string rome = folder.Path() / "Rome";
  const std::string romeToo = ":" + rome;
  const Change march = {3, 0, 5, 2}, october = {10, 0, 5, 3};
  const Case kCases[] = {
      {rome.c_str(), -60, "CET", -60, "CEST", march, october},
      {romeToo.c_str(), -60, "CET", -60, "CEST", march, october},
      {"Rome", -60, "CET", -60, "CEST", march, october},
      {"Lord_Howe", -630, "+1030", -30, "+11", {10, 0, 1, 2}, {4, 0, 1, 2}},
      // Without a rule the offset stays what it is.
      {"None", -60, "OLD"},
      {"Old", -60, "OLD"},
      {"Cut", 0, "UTC"},
      {"Text", 0, "UTC"},
      {"Missing", 0, "UTC"},
  };
  for (const Case& c : kCases) {
    const ZoneScope scope(c.zone);
    Expect(c);
  }
}

// The local clock follows a change of TZ at once.
TEST(HostZone, TheClockShowsIt) {
  for (const int hours : {-11, -3, 0, 5, 13}) {
    const ZoneScope scope(("XXX" + std::to_string(-hours)).c_str());
    SYSTEMTIME before, local, after;
    FILETIME utcTicks, localTicks;
    do {
      GetSystemTime(&before);
      GetLocalTime(&local);
      GetSystemTime(&after);
    } while (before.wSecond != after.wSecond);
    ASSERT_TRUE(SystemTimeToFileTime(&before, &utcTicks));
    ASSERT_TRUE(SystemTimeToFileTime(&local, &localTicks));
    const auto seconds = [](const FILETIME& t) {
      return static_cast<std::int64_t>((std::uint64_t{t.dwHighDateTime} << 32 | t.dwLowDateTime) /
                                       10'000'000);
    };
    EXPECT_EQ(seconds(localTicks) - seconds(utcTicks), hours * 3600);
  }
}

}  // namespace
