#include "kelp0lang/UtcTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>

using std::chrono::sys_days;
using std::chrono::year;

namespace {

constexpr std::uint64_t kDay = 86'400'000;
// 1 January 1970 and 1 January 2021.
constexpr std::uint64_t kUnixEpoch = 11'644'473'600'000;
constexpr std::uint64_t kYear2021 = kUnixEpoch + 18'628 * kDay;

auto Fields(const _SYSTEMTIME& t) {
  return std::tuple<int, int, int, int, int, int, int, int>(
      t.wYear, t.wMonth, t.wDayOfWeek, t.wDay, t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
}

TEST(UtcTime, CTimesAndBack) {
  EXPECT_EQ(kelp::CTimeToUtcMs(0), kUnixEpoch);
  EXPECT_EQ(kelp::UtcMsToCTime(kUnixEpoch + 999), 0u);
  EXPECT_EQ(kelp::UtcMsToCTime(kelp::CTimeToUtcMs(4'102'444'800)), 4'102'444'800u);

  const std::pair<std::uint64_t, _SYSTEMTIME> kCases[] = {
      {0x7FFF'FFFF, {2038, 1, 2, 19, 3, 14, 7, 0}},
      {0x8000'0000, {1901, 12, 5, 13, 20, 45, 52, 0}},
      {0xFFFF'FFFF, {1969, 12, 3, 31, 23, 59, 59, 0}},
      {0x1'0000'0001, {1970, 1, 4, 1, 0, 0, 1, 0}},
  };
  for (const auto& [seconds, expected] : kCases) {
    _SYSTEMTIME time = {};
    kelp::UnixToSystemTime(seconds, &time);
    EXPECT_EQ(Fields(time), Fields(expected)) << seconds;
  }
}

TEST(UtcTime, ADateIsAMoment) {
  const std::tuple<_SYSTEMTIME, std::uint64_t, _SYSTEMTIME> kCases[] = {
      {{1601, 1, 1, 1, 0, 0, 0, 0}, 0, {1601, 1, 1, 1, 0, 0, 0, 0}},
      {{2021, 1, 5, 1, 6, 7, 8, 9}, kYear2021 + 22'028'009, {2021, 1, 5, 1, 6, 7, 8, 9}},
      // From hour 24 on it is the midnight at the end of the day.
      {{2020, 12, 4, 31, 24, 0, 0, 0}, kYear2021, {2020, 12, 4, 31, 23, 59, 0, 0}},
      {{2020, 12, 4, 31, 99, 70, 70, 7000}, kYear2021, {2020, 12, 4, 31, 23, 59, 0, 0}},
      {{2020, 12, 4, 31, 23, 59, 59, 999}, kYear2021 - 1, {2020, 12, 4, 31, 23, 59, 59, 999}},
      {{2021, 4, 0, 31, 0, 0, 0, 0}, 0, {2021, 4, 0, 31, 0, 0, 0, 0}},
  };
  for (const auto& [before, ms, after] : kCases) {
    _SYSTEMTIME time = before;
    EXPECT_EQ(kelp::FSystemTimeToMs(&time), ms) << testing::PrintToString(Fields(before));
    EXPECT_EQ(Fields(time), Fields(after));
  }
  _SYSTEMTIME time = {};
  kelp::FMsToSystemTime(kYear2021 + 22'028'009, &time);
  EXPECT_EQ(Fields(time), Fields({2021, 1, 5, 1, 6, 7, 8, 9}));
  kelp::FMsToSystemTime(std::uint64_t{1} << 50, &time);
  EXPECT_EQ(time.wYear, 2021) << "a moment that no record holds leaves it as it was";
}

TEST(UtcTime, DaysOfUtc) {
  EXPECT_EQ(kelp::UtcMsToUtcDay1600(kDay - 1), 0);
  EXPECT_EQ(kelp::UtcMsToUtcDay1600(kDay), 1);
  EXPECT_EQ(kelp::UtcDay1600ToUtcMs(134'774), kUnixEpoch);
  // A product beyond 32 bits.
  EXPECT_EQ(kelp::UtcDay1600ToUtcMs(2'000'000), 172'800'000'000'000u);
  EXPECT_EQ(kelp::FGetUtcMidNight(kYear2021), kYear2021);
  EXPECT_EQ(kelp::FGetUtcMidNight(kYear2021 - 1), kYear2021 - kDay);
}

TEST(UtcTime, Now) {
  const auto byLibrary = [] {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return kUnixEpoch + std::chrono::floor<std::chrono::milliseconds>(now).count();
  };
  // The clock that the library reads may run behind the finer one by a tick.
  constexpr std::uint64_t kTick = 50;
  const std::uint64_t before = byLibrary();
  const std::uint64_t now = kelp::FGetUtcCurTime();
  const std::uint64_t midnight = kelp::FGetUtcMidNightOfCurUtcDay();
  const std::uint64_t localMidnight = kelp::FGetUtcMidNightOfCurLocalDay();
  const std::uint64_t after = byLibrary();
  EXPECT_LE(before, now + kTick);
  EXPECT_LE(now, after + kTick);
  EXPECT_GE(midnight, kelp::FGetUtcMidNight(now));
  EXPECT_LE(midnight, kelp::FGetUtcMidNight(after + kTick));
  // A local day has 23 to 25 hours.
  EXPECT_LE(localMidnight, after + kTick);
  EXPECT_LT(after + kTick - localMidnight, kDay + kDay / 24 + 1000);
}

// All dates that both calendars have.
TEST(Calendar, AgreesWithChrono) {
  constexpr sys_days kYear0 = year(0) / 1 / 1;
  constexpr sys_days kYear1601 = year(1601) / 1 / 1;
  constexpr sys_days kEnd = year(10000) / 1 / 1;
  _SYSTEMTIME forward = {0, 1, 6, 1, 1, 2, 3, 4};
  for (sys_days date = kYear0; date < kEnd; date += std::chrono::days(1)) {
    const std::chrono::year_month_day calendar = date;
    const int y = static_cast<int>(calendar.year());
    const int m = static_cast<int>(static_cast<unsigned>(calendar.month()));
    const int d = static_cast<int>(static_cast<unsigned>(calendar.day()));
    const int julianDay = static_cast<int>((date - sys_days(calendar.year() / 1 / 1)).count()) + 1;
    ASSERT_EQ(kelp::GetDaysFrom1stJan0({d, m, y}), (date - kYear0).count() + 1);
    ASSERT_EQ(kelp::GetUtcDay1600(d, m, y), (date - kYear1601).count());
    ASSERT_EQ(kelp::GetJulianDay(d, m, y), julianDay);
    int dayBack = 0, monthBack = 0;
    kelp::FromJulianDay(y, julianDay, dayBack, monthBack);
    ASSERT_EQ(dayBack * 100 + monthBack, d * 100 + m) << y;
    const auto last = (calendar.year() / calendar.month() / std::chrono::last).day();
    ASSERT_EQ(
        kelp::GetNoDaysInMonth(static_cast<unsigned short>(y), static_cast<unsigned short>(m)),
        static_cast<unsigned>(last));

    const int weekday = static_cast<int>(std::chrono::weekday(date).c_encoding());
    ASSERT_EQ(Fields(forward), std::tuple(y, m, weekday, d, 1, 2, 3, 4));
    _SYSTEMTIME stepped = forward;
    kelp::NextDay(stepped, 1);
    _SYSTEMTIME back = stepped;
    kelp::PrevDay(back, 1);
    ASSERT_EQ(Fields(back), Fields(forward));
    forward = stepped;
  }
}

TEST(UtcTime, IsThatOfTheStandardLibrary) {
  using namespace std::chrono;
  const sys_time<milliseconds> time = sys_days(2024y / 2 / 29) + 1ms;
  EXPECT_EQ(kelp::SysTimeToUtcMs(time),
            kelp::UtcDay1600ToUtcMs(kelp::GetUtcDay1600(29, 2, 2024)) + 1);
  EXPECT_EQ(kelp::UtcMsToSysTime(kelp::SysTimeToUtcMs(time)), time);
  EXPECT_EQ(kelp::UtcMsToSysTime(0), sys_days(1601y / 1 / 1));
}

TEST(Calendar, ManyDaysAtOnce) {
  EXPECT_EQ(kelp::ComputeDays({1, 3, 2021}, {1, 3, 2020}), -365);
  EXPECT_EQ(kelp::GetDaysFrom1stJan0({1, 1, -1}), 0);
  // Counts wrap around at 32 bits.
  constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
  EXPECT_EQ(kelp::GetDaysFrom1stJan0({10, 7, 5'879'610}), kMost);
  EXPECT_EQ(kelp::GetDaysFrom1stJan0({11, 7, 5'879'610}), kLeast);
  EXPECT_EQ(kelp::GetDaysFrom1stJan0({kMost, 2, 0}), kLeast + 30);
  EXPECT_EQ(kelp::ComputeDays({10, 7, 5'879'610}, {11, 7, 5'879'610}), 1);
  EXPECT_EQ(kelp::GetJulianDay(kMost, 3, 2024), kLeast + 59);
  // The count doesn't care for a day that the month hasn't.
  EXPECT_EQ(kelp::ComputeDays({31, 1, 2021}, {32, 1, 2021}), 1);

  _SYSTEMTIME time = {1899, 12, 0, 31, 5, 0, 0, 0};
  kelp::NextDay(time, 100'000);
  EXPECT_EQ(Fields(time), Fields({2173, 10, 5, 15, 5, 0, 0, 0}));
  kelp::PrevDay(time, 100'000);
  EXPECT_EQ(Fields(time), Fields({1899, 12, 0, 31, 5, 0, 0, 0}));
  for (const int days : {0, -1, std::numeric_limits<int>::min()}) {
    kelp::NextDay(time, days);
    kelp::PrevDay(time, days);
    EXPECT_EQ(Fields(time), Fields({1899, 12, 0, 31, 5, 0, 0, 0})) << days;
  }
  EXPECT_EQ(kelp::GetNoDaysInMonth(time), 31);
}

}  // namespace
