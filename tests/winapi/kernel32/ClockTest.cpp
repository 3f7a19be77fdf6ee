// The clock, and file times as dates.
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <thread>
#include <tuple>
#include <utility>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"

namespace {

constexpr std::int64_t kTicksPerMs = 10'000;
constexpr std::int64_t kTicksPerDay = 86'400'000 * kTicksPerMs;

std::int64_t ToTicks(const FILETIME& time) {
  return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

FILETIME FromTicks(std::uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// Year, month, weekday, day, and the time of day.
auto Fields(const SYSTEMTIME& t) {
  return std::tuple<int, int, int, int, int, int, int, int>(
      t.wYear, t.wMonth, t.wDayOfWeek, t.wDay, t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
}

SYSTEMTIME Date(WORD year, WORD month, WORD day) {
  return {year, month, 0, day, 0, 0, 0, 0};
}

TEST(FileTime, IsADateAndBack) {
  const std::pair<std::uint64_t, SYSTEMTIME> kCases[] = {
      {0, {1601, 1, 1, 1, 0, 0, 0, 0}},
      {116'444'736'000'000'000, {1970, 1, 4, 1, 0, 0, 0, 0}},
      {125'963'423'999'990'000, {2000, 2, 2, 29, 23, 59, 59, 999}},
      {132'613'668'000'010'000, {2021, 3, 0, 28, 1, 0, 0, 1}},
      {2'650'467'743'999'990'000, {9999, 12, 5, 31, 23, 59, 59, 999}},
      {9'223'149'887'999'990'000, {30827, 12, 5, 31, 23, 59, 59, 999}},
  };
  for (const auto& [ticks, expected] : kCases) {
    SYSTEMTIME date = {};
    const FILETIME source = FromTicks(ticks + 9'999);  // what is below a millisecond is left out
    ASSERT_TRUE(FileTimeToSystemTime(&source, &date));
    EXPECT_EQ(Fields(date), Fields(expected));
    FILETIME back;
    date.wDayOfWeek = 9;
    ASSERT_TRUE(SystemTimeToFileTime(&date, &back)) << "the weekday doesn't matter";
    EXPECT_EQ(ToTicks(back), static_cast<std::int64_t>(ticks));
  }
}

// Each day follows the one before, through three periods of the calendar.
TEST(FileTime, DaysFollowOneAnother) {
  constexpr int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  SYSTEMTIME expected = {1601, 1, 1, 1, 0, 0, 0, 0};
  for (std::int64_t ticks = 0; expected.wYear < 2801; ticks += kTicksPerDay) {
    SYSTEMTIME date = {};
    const FILETIME source = FromTicks(ticks);
    ASSERT_TRUE(FileTimeToSystemTime(&source, &date));
    ASSERT_EQ(Fields(date), Fields(expected)) << ticks;
    FILETIME back;
    ASSERT_TRUE(SystemTimeToFileTime(&date, &back));
    ASSERT_EQ(ToTicks(back), ticks);

    const bool isLeapYear = date.wYear % 4 == 0 && (date.wYear % 100 != 0 || date.wYear % 400 == 0);
    const int length = kLengths[date.wMonth - 1] + (date.wMonth == 2 && isLeapYear ? 1 : 0);
    expected.wDayOfWeek = (expected.wDayOfWeek + 1) % 7;
    if (++expected.wDay <= length) continue;
    expected.wDay = 1;
    if (++expected.wMonth <= 12) continue;
    expected.wMonth = 1;
    ++expected.wYear;
  }
}

TEST(FileTime, RefusesWhatIsNoDate) {
  struct Case {
    SYSTEMTIME date;
    bool wineDiffers = false;  // it takes years beyond the last one, and any 29 February
  };
  const Case kCases[] = {{Date(1600, 12, 31)},
                         {Date(30828, 1, 1), true},
                         {Date(2021, 0, 1)},
                         {Date(2021, 13, 1)},
                         {Date(2021, 257, 1)},
                         {Date(2021, 1, 0)},
                         {Date(2021, 1, 32)},
                         {Date(2021, 1, 257)},
                         {Date(2021, 4, 31)},
                         {Date(2021, 2, 29), true},
                         {Date(1900, 2, 29), true},
                         {{2021, 1, 0, 1, 24, 0, 0, 0}},
                         {{2021, 1, 0, 1, 0, 60, 0, 0}},
                         {{2021, 1, 0, 1, 0, 0, 60, 0}},
                         {{2021, 1, 0, 1, 0, 0, 0, 1000}}};
  for (const Case& c : kCases) {
    if (c.wineDiffers && UnderWine()) continue;
    FILETIME ticks;
    EXPECT_EQ(ErrorOf(SystemTimeToFileTime(&c.date, &ticks)), ERROR_INVALID_PARAMETER)
        << testing::PrintToString(Fields(c.date));
  }

  SYSTEMTIME date = {};
  const FILETIME last = FromTicks(0x7FFF'FFFF'FFFF'FFFF);
  EXPECT_TRUE(FileTimeToSystemTime(&last, &date));
  EXPECT_EQ(Fields(date), Fields({30828, 9, 4, 14, 2, 48, 5, 477}));
  const FILETIME beyond = FromTicks(0x8000'0000'0000'0000);
  EXPECT_EQ(ErrorOf(FileTimeToSystemTime(&beyond, &date)), ERROR_INVALID_PARAMETER);
}

TEST(Clock, ItsFormsAgree) {
  FILETIME before, asTicks, after;
  SYSTEMTIME date;
  GetSystemTimeAsFileTime(&before);
  GetSystemTime(&date);
  GetSystemTimeAsFileTime(&after);
  ASSERT_TRUE(SystemTimeToFileTime(&date, &asTicks));
  EXPECT_LE(ToTicks(before) / kTicksPerMs, ToTicks(asTicks) / kTicksPerMs);
  EXPECT_LE(ToTicks(asTicks), ToTicks(after));
  SYSTEMTIME again;
  FileTimeToSystemTime(&asTicks, &again);
  EXPECT_EQ(date.wDayOfWeek, again.wDayOfWeek);

  const std::int64_t seconds = ToTicks(after) / 10'000'000 - 11'644'473'600;
  EXPECT_NEAR(static_cast<double>(seconds), static_cast<double>(std::time(nullptr)), 2);
}

TEST(Clock, TicksAreMillisecondsThatGoOn) {
  const ULONGLONG first = GetTickCount64();
  const DWORD low = GetTickCount();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const ULONGLONG second = GetTickCount64();
  EXPECT_LE(low - static_cast<DWORD>(first), static_cast<DWORD>(second - first));
  // The ticks of Windows come every 16 milliseconds.
  EXPECT_GE(second - first, 80u);
}

}  // namespace
