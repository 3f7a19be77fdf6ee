// The machine's time zone, whatever it is, and that of Rome where TZ is kRome.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/winapi/WideText.h"

namespace {

constexpr const char* kRome = "CET-1CEST,M3.5.0,M10.5.0/3";

std::int64_t ToMinutes(const SYSTEMTIME& date) {
  FILETIME time = {};
  EXPECT_TRUE(SystemTimeToFileTime(&date, &time));
  const std::uint64_t ticks = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  return static_cast<std::int64_t>(ticks / 600'000'000);
}

// UTC minus local time now, taken within one minute.
std::int64_t BiasOfClock() {
  SYSTEMTIME before, local, after;
  do {
    GetSystemTime(&before);
    GetLocalTime(&local);
    GetSystemTime(&after);
  } while (ToMinutes(before) != ToMinutes(after));
  return ToMinutes(before) - ToMinutes(local);
}

TEST(TimeZone, ItsBiasesAreThoseOfTheClock) {
  TIME_ZONE_INFORMATION zone;
  const DWORD part = GetTimeZoneInformation(&zone);
  const bool hasDaylight = zone.DaylightDate.wMonth != 0;
  EXPECT_EQ(hasDaylight, zone.StandardDate.wMonth != 0);
  EXPECT_EQ(part == TIME_ZONE_ID_UNKNOWN, !hasDaylight);
  ASSERT_LE(part, static_cast<DWORD>(TIME_ZONE_ID_DAYLIGHT));
  LONG bias = zone.Bias;
  if (part == TIME_ZONE_ID_STANDARD) bias += zone.StandardBias;
  if (part == TIME_ZONE_ID_DAYLIGHT) bias += zone.DaylightBias;
  EXPECT_EQ(bias, BiasOfClock());
}

TEST(TimeZone, Rome) {
  const char* const text = std::getenv("TZ");
  if (text == nullptr || std::string(text) != kRome) GTEST_SKIP() << "TZ isn't " << kRome;
  TIME_ZONE_INFORMATION zone;
  EXPECT_NE(GetTimeZoneInformation(&zone), static_cast<DWORD>(TIME_ZONE_ID_UNKNOWN));
  EXPECT_EQ(zone.Bias, -60);
  EXPECT_EQ(zone.StandardBias, 0);
  EXPECT_EQ(zone.DaylightBias, -60);
  const auto expectSunday = [](const SYSTEMTIME& date, int month, int hour) {
    EXPECT_EQ(date.wYear, 0);
    EXPECT_EQ(date.wMonth, month);
    EXPECT_EQ(date.wDayOfWeek, 0);
    EXPECT_EQ(date.wDay, 5) << "the last";
    EXPECT_EQ(date.wHour, hour);
    EXPECT_EQ(date.wMinute, 0);
  };
  expectSunday(zone.DaylightDate, 3, 2);
  expectSunday(zone.StandardDate, 10, 3);
}

#ifdef _WIN32
// There from Windows 8 on, while programs of this tree ask for 7.
DWORD EnumDynamicTimeZoneInformation(DWORD index, PDYNAMIC_TIME_ZONE_INFORMATION zone) {
  using Call = DWORD(WINAPI*)(DWORD, PDYNAMIC_TIME_ZONE_INFORMATION);
  static const auto call = reinterpret_cast<Call>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"advapi32.dll"), "EnumDynamicTimeZoneInformation")));
  return call(index, zone);
}
#endif

TEST(TimeZone, TheSystemsZonesHaveTheirNames) {
  EXPECT_EQ(EnumDynamicTimeZoneInformation(0, nullptr), DWORD{ERROR_INVALID_PARAMETER});
  const std::vector<Wide> romes = {WTEXT("Europe/Rome"), WTEXT("W. Europe Standard Time")};
  int found = 0;
  DYNAMIC_TIME_ZONE_INFORMATION zone;
  DWORD result, i = 0;
  for (; (result = EnumDynamicTimeZoneInformation(i, &zone)) == ERROR_SUCCESS; ++i) {
    if (std::find(romes.begin(), romes.end(), zone.TimeZoneKeyName) == romes.end()) continue;
    ++found;
    EXPECT_EQ(zone.Bias, -60);
    EXPECT_EQ(zone.DaylightBias, -60);
    EXPECT_EQ(zone.DaylightDate.wMonth, 3);
    EXPECT_EQ(zone.StandardDate.wMonth, 10);
  }
  if (i == 0) GTEST_SKIP() << "there is no database of zones";
  EXPECT_EQ(result, DWORD{ERROR_NO_MORE_ITEMS});
  EXPECT_EQ(found, 1);
}

}  // namespace
