#include "kelp0lang/LocalTimeComputer.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "kelp0lang/UtcTime.h"

using kelp::CLocalTimeComputer;
using std::chrono::sys_days;
using std::chrono::year;

namespace {

constexpr std::uint64_t kMinute = 60'000;
constexpr std::uint64_t kHour = 60 * kMinute;
constexpr std::uint64_t kDay = 24 * kHour;

// Milliseconds since 1601 of a date and time.
std::uint64_t At(int y, unsigned month, unsigned day, int hour = 0, int minute = 0) {
  const auto days = sys_days(year(y) / month / day) - sys_days(year(1601) / 1 / 1);
  return days.count() * kDay + hour * kHour + minute * kMinute;
}

// The date of a change: month, weekday, week, hour.
_SYSTEMTIME Rule(WORD month, WORD weekday, WORD week, WORD hour) {
  return {0, month, weekday, week, hour, 0, 0, 0};
}

_TIME_ZONE_INFORMATION Zone(LONG bias, LONG daylightBias, _SYSTEMTIME daylight,
                            _SYSTEMTIME standard) {
  _TIME_ZONE_INFORMATION zone = {};
  zone.Bias = bias;
  zone.DaylightBias = daylightBias;
  zone.DaylightDate = daylight;
  zone.StandardDate = standard;
  return zone;
}

CLocalTimeComputer For(const _TIME_ZONE_INFORMATION& zone) {
  CLocalTimeComputer computer;
  computer.SetTimeZoneInformation(zone);
  return computer;
}

const _TIME_ZONE_INFORMATION kRome = Zone(-60, -60, Rule(3, 0, 5, 2), Rule(10, 0, 5, 3));
#ifdef _WIN32
constexpr const WChar* kRomesName = KTEXT("W. Europe Standard Time");
#else
constexpr const WChar* kRomesName = KTEXT("Europe/Rome");
#endif
const _TIME_ZONE_INFORMATION kSydney = Zone(-600, -60, Rule(10, 0, 1, 2), Rule(4, 0, 1, 3));
const _TIME_ZONE_INFORMATION kLordHowe = Zone(-630, -30, Rule(10, 0, 1, 2), Rule(4, 0, 1, 2));
const _TIME_ZONE_INFORMATION kIndia = Zone(-330, 0, {}, {});

struct Case {
  _TIME_ZONE_INFORMATION zone;
  std::uint64_t moment;
  int minutes;
  bool daylight;
};

TEST(LocalTime, AddsTheOffsetInForce) {
  const Case kCases[] = {
      {kRome, At(2021, 3, 28, 1) - 1, 60, false},
      {kRome, At(2021, 3, 28, 1), 120, true},
      {kRome, At(2021, 10, 31, 1) - 1, 120, true},
      {kRome, At(2021, 10, 31, 1), 60, false},
      {kSydney, At(2023, 10, 1) - 8 * kHour - 1, 600, false},
      {kSydney, At(2023, 10, 1) - 8 * kHour, 660, true},
      {kSydney, At(2022, 4, 3) - 8 * kHour - 1, 660, true},
      {kSydney, At(2022, 4, 3) - 8 * kHour, 600, false},
      {kLordHowe, At(2022, 4, 2, 15) - 1, 660, true},
      {kLordHowe, At(2022, 4, 2, 15), 630, false},
      {kIndia, At(1601, 1, 1), 330, false},
      {kRome, At(1601, 1, 1), 60, false},
      {kSydney, At(1601, 1, 1), 660, true},
      {kRome, At(9999, 7, 1), 120, true},
      // The years of the platform's calendar end; the offset stays.
      {kRome, At(30827, 7, 1), 120, true},
      {kRome, std::uint64_t{1} << 60, 60, false},
      {kSydney, std::uint64_t{1} << 60, 660, true},
  };
  for (const auto& [zone, utc, minutes, daylight] : kCases) {
    CLocalTimeComputer computer = For(zone);
    EXPECT_EQ(computer.Utc_to_Local(utc), utc + minutes * kMinute) << zone.Bias << ' ' << utc;
    EXPECT_EQ(computer.IsUtcTimeInDaylight(utc), daylight) << zone.Bias << ' ' << utc;
  }
}

TEST(LocalTime, SkippedAndDoubledReadingsAreDaylight) {
  const Case kCases[] = {
      {kRome, At(2021, 3, 28, 2) - 1, 60, false},     {kRome, At(2021, 3, 28, 2), 120, true},
      {kRome, At(2021, 3, 28, 2, 30), 120, true},     {kRome, At(2021, 10, 31, 2, 30), 120, true},
      {kRome, At(2021, 10, 31, 3) - 1, 120, true},    {kRome, At(2021, 10, 31, 3), 60, false},
      {kLordHowe, At(2022, 10, 2, 2, 15), 660, true}, {kLordHowe, At(2022, 4, 3, 1, 45), 660, true},
      {kLordHowe, At(2022, 4, 3, 2), 630, false},     {kIndia, At(2021, 1, 2), 330, false},
  };
  for (const auto& [zone, local, minutes, daylight] : kCases) {
    CLocalTimeComputer computer = For(zone);
    EXPECT_EQ(computer.Local_to_Utc(local), local - minutes * kMinute) << zone.Bias << ' ' << local;
    EXPECT_EQ(computer.IsLocalTimeInDaylight(local), daylight) << zone.Bias << ' ' << local;
  }
}

TEST(LocalTime, ZoneTimeHasNoDaylight) {
  CLocalTimeComputer computer = For(kRome);
  const std::uint64_t july = At(2021, 7, 1);
  EXPECT_EQ(computer.Utc_to_Zone(july), july + kHour);
  EXPECT_EQ(computer.Utc_to_Local(july) - computer.Utc_to_Zone(july), kHour);
  EXPECT_EQ(computer.Zone_to_Utc(july), july - kHour);
  // Only the bias of the zone, not that of standard time.
  _TIME_ZONE_INFORMATION zone = kRome;
  zone.StandardBias = 15;
  computer = For(zone);
  EXPECT_EQ(computer.Utc_to_Zone(july), july + kHour);
  EXPECT_EQ(computer.Utc_to_Local(At(2021, 1, 1)), At(2021, 1, 1, 0, 45));
}

// A zone of which a month is missing has none; the year of a date isn't looked at.
TEST(LocalTime, HalfARuleIsNone) {
  _TIME_ZONE_INFORMATION zone = kRome;
  zone.StandardDate.wMonth = 0;
  zone.StandardBias = 15;
  CLocalTimeComputer computer = For(zone);
  EXPECT_EQ(computer.Utc_to_Local(At(2021, 7, 1)), At(2021, 7, 1, 1));
  zone = kRome;
  zone.DaylightDate.wMonth = 13;
  computer = For(zone);
  EXPECT_FALSE(computer.IsUtcTimeInDaylight(At(2021, 7, 1)));
  zone = kRome;
  zone.DaylightDate.wYear = zone.StandardDate.wYear = 2007;
  computer = For(zone);
  EXPECT_TRUE(computer.IsUtcTimeInDaylight(At(2021, 7, 1)));
}

// The day of a rule in a year, by a search through the days of the month.
std::uint64_t DayOf(int y, const _SYSTEMTIME& rule) {
  const std::chrono::year_month month = year(y) / static_cast<int>(rule.wMonth);
  const sys_days end = sys_days(month / std::chrono::last) + std::chrono::days(1);
  std::vector<sys_days> found;
  for (sys_days day = month / 1; day < end; day += std::chrono::days(1)) {
    if (std::chrono::weekday(day).c_encoding() == rule.wDayOfWeek) found.push_back(day);
  }
  const sys_days day = rule.wDay == 5 ? found.back() : found[rule.wDay - 1];
  return static_cast<std::uint64_t>((day - sys_days(year(1601) / 1 / 1)).count()) * kDay;
}

TEST(LocalTime, DaysOfRules) {
  for (WORD month = 1; month <= 12; ++month) {
    for (WORD week = 1; week <= 5; ++week) {
      for (WORD weekday = 0; weekday <= 6; ++weekday) {
        const _SYSTEMTIME begin = Rule(month, weekday, week, 2);
        const _SYSTEMTIME end = Rule((month + 5) % 12 + 1, weekday, week, 3);
        CLocalTimeComputer computer = For(Zone(0, -60, begin, end));
        for (int y = 1999; y <= 2026; ++y) {
          for (const bool daylight : {true, false}) {
            const std::uint64_t change = DayOf(y, daylight ? begin : end) + 2 * kHour;
            ASSERT_EQ(computer.IsUtcTimeInDaylight(change - 1), !daylight) << change;
            ASSERT_EQ(computer.IsUtcTimeInDaylight(change), daylight) << change;
          }
        }
      }
    }
  }
}

// The passages of a zone by whole years, as far as was asked for, and a binary search through them,
// also where they don't ascend.
class Searched {
 public:
  explicit Searched(const _TIME_ZONE_INFORMATION& zone) : m_zone(zone) {
    _SYSTEMTIME now;
    GetLocalTime(&now);
    m_first = m_last = now.wYear;
    AddYear(now.wYear, m_passages.end());
  }
  std::uint64_t ToLocal(std::uint64_t ms) { return ms + Find(&Passage::utc, ms).offset; }
  std::uint64_t ToUtc(std::uint64_t ms) { return ms - Find(&Passage::local, ms).offset; }
  // A moment or reading beside a passage.
  std::uint64_t Near(std::mt19937& random) const {
    const Passage& passage = m_passages[random() % m_passages.size()];
    const std::uint64_t steps[] = {0,         1,        kMinute,   kHour,
                                   9 * kHour, 3 * kDay, 40 * kDay, 400 * kDay};
    const std::uint64_t step = steps[random() % std::size(steps)];
    return (random() % 2 == 0 ? passage.utc : passage.local) + (random() % 2 == 0 ? step : -step);
  }

 private:
  struct Passage {
    std::uint64_t utc, local, offset;
  };
  using Column = std::uint64_t Passage::*;

  void AddYear(int y, std::vector<Passage>::iterator place) {
    const std::uint64_t standard = -m_zone.Bias * kMinute;
    const std::uint64_t daylight = standard - m_zone.DaylightBias * kMinute;
    const auto at = [y](const _SYSTEMTIME& rule) { return DayOf(y, rule) + rule.wHour * kHour; };
    const std::uint64_t begin = at(m_zone.DaylightDate), end = at(m_zone.StandardDate);
    std::array<Passage, 2> two{
        {{begin - standard, begin, daylight}, {end - daylight, end, standard}}};
    if (two[0].utc > two[1].utc) std::swap(two[0], two[1]);
    m_passages.insert(place, two.begin(), two.end());
  }
  const Passage& Find(Column column, std::uint64_t ms) {
    const bool isPast = ms < m_passages.front().*column;
    while (isPast && ms < m_passages.front().*column) AddYear(--m_first, m_passages.begin());
    while (!isPast && ms > m_passages.back().*column) AddYear(++m_last, m_passages.end());
    std::size_t low = 0, high = m_passages.size();
    while (low < high) {
      const std::size_t middle = (low + high) / 2;
      const std::uint64_t value = m_passages[middle].*column;
      if (value == ms) return m_passages[middle];
      if (value < ms) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return m_passages[low - 1];
  }

  const _TIME_ZONE_INFORMATION m_zone;
  int m_first, m_last;
  std::vector<Passage> m_passages;
};

// Also both changes in one month, on one day or at one hour, in every year or in some, and offsets
// by which they change places.
TEST(LocalTime, AnyRuleIsLookedUpAsBySearch) {
  std::mt19937 random(29);
  const auto rule = [&](WORD month) {
    return Rule(month, random() % 7, 1 + random() % 5, random() % 24);
  };
  const auto month = [&] { return static_cast<WORD>(1 + random() % 12); };
  constexpr LONG kBiases[] = {0, -60, 60, -720, -1440, 1440, -35'000, 35'000};
  for (int i = 0; i < 1000; ++i) {
    _SYSTEMTIME begin = rule(month());
    _SYSTEMTIME end = i % 8 == 0 ? begin : rule(i % 2 == 0 ? begin.wMonth : month());
    // The fourth of a month's weekdays is the last one in some years alone.
    if (i % 8 == 4) {
      begin = Rule(end.wMonth, end.wDayOfWeek, 4, 2);
      end.wDay = 5;
      end.wHour = 2;
    }
    const auto zone =
        Zone(i % 3 == 0 ? -720 : 0, kBiases[random() % std::size(kBiases)], begin, end);
    CLocalTimeComputer computer = For(zone);
    Searched searched(zone);
    for (int k = 0; k < 60; ++k) {
      const std::uint64_t ms = searched.Near(random);
      ASSERT_EQ(computer.Utc_to_Local(ms), searched.ToLocal(ms)) << "zone " << i << " at " << ms;
      ASSERT_EQ(computer.Local_to_Utc(ms), searched.ToUtc(ms)) << "zone " << i << " at " << ms;
    }
  }
}

// What has been asked before changes no answer, in either column; nor do copies share anything.
TEST(LocalTime, AnswersDontDependOnTheCache) {
  std::mt19937_64 random(31);
  std::uniform_int_distribution<std::uint64_t> moments(0, At(2400, 1, 1));
  for (const auto& zone : {kRome, kSydney, kLordHowe, kIndia}) {
    CLocalTimeComputer grown = For(zone);
    for (int i = 0; i < 100; ++i) {
      const std::uint64_t moment = moments(random);
      CLocalTimeComputer fresh = For(zone);
      CLocalTimeComputer copy = grown;
      EXPECT_EQ(grown.Utc_to_Local(moment), fresh.Utc_to_Local(moment));
      EXPECT_EQ(copy.Local_to_Utc(moment), For(zone).Local_to_Utc(moment));
    }
    grown = For(kRome);
    EXPECT_EQ(grown.Utc_to_Local(At(1990, 7, 1)), At(1990, 7, 1, 2));
    grown.SetTimeZoneInformation(kIndia);
    EXPECT_EQ(grown.Utc_to_Local(At(1990, 7, 1)), At(1990, 7, 1, 5, 30));
  }
}

// Another bias shifts all moments and no reading, also by the most that fits, and where the clock
// changes beside New Year.
TEST(LocalTime, FarOffsetsOnlyShift) {
  std::mt19937_64 random(33);
  std::uniform_int_distribution<std::uint64_t> moments(At(1900, 1, 1), At(2100, 1, 1));
  const _TIME_ZONE_INFORMATION zone = Zone(0, -60, Rule(12, 3, 5, 23), Rule(1, 6, 1, 0));
  CLocalTimeComputer computer = For(zone);
  for (const LONG bias : {-35'700, 35'700, -840}) {
    _TIME_ZONE_INFORMATION other = zone;
    other.Bias = bias;
    CLocalTimeComputer shifted = For(other);
    const std::uint64_t shift = bias * kMinute;
    for (int i = 0; i < 20'000; ++i) {
      const std::uint64_t moment = moments(random);
      ASSERT_EQ(shifted.Utc_to_Local(moment + shift), computer.Utc_to_Local(moment)) << moment;
      ASSERT_EQ(shifted.Local_to_Utc(moment), computer.Local_to_Utc(moment) + shift) << moment;
    }
  }
}

// A record that is no rule gives no defined time, but an answer.
TEST(LocalTime, ABrokenRuleEnds) {
  for (const WORD value : {0, 6, 100, 65535}) {
    CLocalTimeComputer computer =
        For(Zone(0, -60, Rule(3, value, 1, 2), Rule(10, 0, value, value)));
    for (const std::uint64_t moment : {At(1601, 1, 1), At(2021, 7, 1), ~std::uint64_t{0}}) {
      computer.Utc_to_Local(moment);
      computer.Local_to_Utc(moment);
    }
  }
}

// The rest is the machine's zone, whatever it is.

TEST(LocalTime, AZoneIsTakenByItsName) {
  const std::uint64_t july = kelp::CTimeToUtcMs(1'625'097'600);
  CLocalTimeComputer computer;
  computer.SetTimeZoneInformation({});
  for (const WChar* const none : {KTEXT(""), KTEXT("Europe"), KTEXT("No Such Standard Time")}) {
    EXPECT_FALSE(computer.SetTimeZone(none));
  }
  EXPECT_EQ(computer.Utc_to_Local(july), july) << "it has the zone that it had";
#ifndef _WIN32
  DYNAMIC_TIME_ZONE_INFORMATION first;
  if (EnumDynamicTimeZoneInformation(0, &first) != ERROR_SUCCESS) {
    GTEST_SKIP() << "there is no database of zones";
  }
#endif
  ASSERT_TRUE(computer.SetTimeZone(kRomesName));
  EXPECT_EQ(computer.Utc_to_Local(july), july + 7'200'000);
  EXPECT_EQ(computer.Utc_to_Zone(july), july + 3'600'000);
}

TEST(GlobalLocalTime, IsTheMachines) {
  kelp::FResetGlobalLocalTimeComputer();
  CLocalTimeComputer computer;
  _TIME_ZONE_INFORMATION zone;
  GetTimeZoneInformation(&zone);
  const std::uint64_t bias = static_cast<std::uint64_t>(std::int64_t{zone.Bias}) * kMinute;
  for (const std::uint64_t utc : {At(2021, 1, 15, 12), At(2021, 7, 15, 12), At(1700, 7, 15)}) {
    const std::uint64_t local = computer.Utc_to_Local(utc);
    EXPECT_EQ(kelp::FUtcMsToZoneMs(utc), utc - bias);
    EXPECT_EQ(kelp::FZoneMsToUtcMs(utc), utc + bias);
    EXPECT_EQ(kelp::FUtcMsToUserMs(kelp::tsUtc, utc), utc);
    EXPECT_EQ(kelp::FUtcMsToUserMs(kelp::tsZone, utc), utc - bias);
    EXPECT_EQ(kelp::FUtcMsToUserMs(kelp::tsLocal, utc), local);
    EXPECT_EQ(kelp::FUtcMsToUserMs(static_cast<kelp::enumTimeSystem>(3), utc), utc);
    EXPECT_EQ(kelp::FUserMsToUtcMs(kelp::tsUtc, utc), utc);
    EXPECT_EQ(kelp::FUserMsToUtcMs(kelp::tsZone, utc - bias), utc);
    EXPECT_EQ(kelp::FUserMsToUtcMs(kelp::tsLocal, local), utc);
    EXPECT_EQ(kelp::FUserMsToUtcMs(static_cast<kelp::enumTimeSystem>(-1), utc), utc);

    _SYSTEMTIME byLocal = {}, byUser = {};
    kelp::FUtcMsToLocalTime(utc, &byLocal);
    kelp::FUtcMsToUserTime(kelp::tsLocal, utc, &byUser);
    EXPECT_EQ(kelp::FSystemTimeToMs(&byLocal), local);
    EXPECT_EQ(kelp::FSystemTimeToMs(&byUser), local);
    EXPECT_EQ(kelp::FLocalTimeToUtcMs(&byLocal), utc);
    EXPECT_EQ(kelp::FUserTimeToUtcMs(kelp::tsLocal, &byLocal), utc);
  }
  _SYSTEMTIME endOfDay = {2021, 1, 0, 14, 24, 0, 0, 0};
  EXPECT_EQ(kelp::FUserTimeToUtcMs(kelp::tsZone, &endOfDay), At(2021, 1, 15) + bias);
  EXPECT_EQ(endOfDay.wHour, 23);
}

// Threads that ask for ever other years make the cache grow under one another.
TEST(GlobalLocalTime, ThreadsShareIt) {
  kelp::FResetGlobalLocalTimeComputer();
  CLocalTimeComputer computer;
  std::vector<std::uint64_t> moments, expected;
  for (int y = 1700; y < 2300; ++y) {
    moments.push_back(At(y, 7, 15));
    expected.push_back(computer.Utc_to_Local(moments.back()));
  }
  std::vector<std::thread> threads;
  for (const bool backwards : {false, true, false, true}) {
    threads.emplace_back([&, backwards] {
      for (std::size_t i = 0; i < moments.size(); ++i) {
        const std::size_t place = backwards ? moments.size() - 1 - i : i;
        const std::uint64_t local = kelp::FUtcMsToUserMs(kelp::tsLocal, moments[place]);
        EXPECT_EQ(local, expected[place]);
        EXPECT_EQ(kelp::FUserMsToUtcMs(kelp::tsLocal, local), moments[place]);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
