// Local time beside that of the C library, for every hour of many years under the same rules.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "kelp0lang/LocalTimeComputer.h"
#include "kelp0lang/UtcTime.h"
#include "tests/ZoneScope.h"

using kelp::CLocalTimeComputer;

namespace {

constexpr std::time_t kHour = 3600;

struct Offset {
  std::time_t seconds;
  bool daylight;
};

Offset OffsetAt(std::time_t moment) {
  tm local;
  localtime_r(&moment, &local);
  return {local.tm_gmtoff, local.tm_isdst != 0};
}

// The first second at which the offset is another one.
std::time_t ChangeBetween(std::time_t before, std::time_t after) {
  const std::time_t old = OffsetAt(before).seconds;
  while (after - before > 1) {
    const std::time_t middle = before + (after - before) / 2;
    (OffsetAt(middle).seconds == old ? before : after) = middle;
  }
  return after;
}

std::uint64_t Ms(std::time_t seconds) {
  return kelp::CTimeToUtcMs(static_cast<std::uint64_t>(seconds));
}

// The readings that a change skips or doubles, from the first on; at the change itself only whole
// seconds that lie behind it, as a rule's 24:00 is a millisecond early in the record.
void ExpectDaylightAround(CLocalTimeComputer& computer, std::time_t change, std::time_t before,
                          std::time_t after) {
  const std::time_t first = change + std::min(before, after);
  const std::time_t length = std::abs(after - before);
  const std::time_t daylight = std::max(before, after);
  for (const std::time_t within : {std::time_t{0}, length / 2, length - 1}) {
    ASSERT_EQ(computer.Local_to_Utc(Ms(first + within)), Ms(first + within - daylight)) << change;
    ASSERT_TRUE(computer.IsLocalTimeInDaylight(Ms(first + within)));
  }
}

void ExpectAgreement() {
  CLocalTimeComputer computer;
  const std::time_t begin = 315'532'800;              // 1980
  const std::time_t end = begin + 61 * 8766 * kHour;  // 2041
  Offset old = OffsetAt(begin - kHour);
  std::time_t change = begin - 10 * kHour;  // the last one
  std::time_t doubled = 0;                  // how much it doubled
  for (std::time_t moment = begin; moment < end; moment += kHour) {
    const Offset now = OffsetAt(moment);
    if (now.seconds != old.seconds) {
      change = ChangeBetween(moment - kHour, moment);
      doubled = old.seconds - now.seconds;
      ExpectDaylightAround(computer, change, old.seconds, now.seconds);
      old = now;
    }
    const std::uint64_t local = Ms(moment + now.seconds);
    ASSERT_EQ(computer.Utc_to_Local(Ms(moment)), local) << moment;
    ASSERT_EQ(computer.IsUtcTimeInDaylight(Ms(moment)), now.daylight) << moment;
    const bool isSecond = moment - change < doubled;
    ASSERT_EQ(computer.Local_to_Utc(local), Ms(moment - (isSecond ? doubled : 0))) << moment;
  }
}

TEST(HostLocalTime, AgreesWithTheCLibrary) {
  const char* const kZones[] = {
      "CET-1CEST,M3.5.0,M10.5.0/3",            // Rome
      "GMT0BST,M3.5.0/1,M10.5.0",              // London
      "EST5EDT,M3.2.0,M11.1.0",                // New York
      "AEST-10AEDT,M10.1.0,M4.1.0/3",          // Sydney
      "<-04>4<-03>,M9.1.6/24,M4.1.6/24",       // Santiago
      "IST-5:30",                              // Kolkata
      "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",  // Lord Howe
      "UTC0",
  };
  for (const char* zone : kZones) {
    SCOPED_TRACE(zone);
    const ZoneScope scope(zone);
    ASSERT_NO_FATAL_FAILURE(ExpectAgreement());
  }
}

// The first hour of this year by the local clock, or of the next one.
std::time_t BeginOfYear(int yearsOn) {
  const std::time_t now = std::time(nullptr);
  tm local;
  localtime_r(&now, &local);
  tm begin = {};
  begin.tm_year = local.tm_year + yearsOn;
  begin.tm_mday = 1;
  begin.tm_isdst = -1;
  return std::mktime(&begin);
}

// A computer that knows many years looks only at those around a moment's own; one that knows this
// year alone looks at all that it has.
void ExpectAgreementOfThisYear() {
  CLocalTimeComputer young, old;
  old.Utc_to_Local(0);
  old.Utc_to_Local(Ms(BeginOfYear(100)));
  int changes = 0, apart = 0;
  const std::time_t begin = BeginOfYear(0), end = BeginOfYear(1);
  Offset before = OffsetAt(begin);
  for (std::time_t moment = begin; moment < end; moment += kHour) {
    const Offset now = OffsetAt(moment);
    changes += now.seconds != before.seconds;
    before = now;
    const std::uint64_t local = Ms(moment + now.seconds);
    apart += young.Utc_to_Local(Ms(moment)) != local;
    ASSERT_EQ(old.Utc_to_Local(Ms(moment)), young.Utc_to_Local(Ms(moment))) << moment;
    ASSERT_EQ(old.Local_to_Utc(local), young.Local_to_Utc(local)) << moment;
  }
  // Other numbers of changes are none that the record of a zone can tell.
  EXPECT_TRUE(apart == 0 || (changes != 0 && changes != 2)) << apart << " hours";
}

TEST(HostLocalTime, AgreesInEveryZoneOfTheDatabaseThisYear) {
  const std::vector<std::filesystem::path> zones = ZonesOfTheDatabase();
  if (zones.empty()) GTEST_SKIP() << "there is no database of zones";
  for (const std::filesystem::path& path : zones) {
    SCOPED_TRACE(path);
    const ZoneScope scope(path.c_str());
    ASSERT_NO_FATAL_FAILURE(ExpectAgreementOfThisYear());
  }
}

TEST(HostLocalTime, TheProcessTakesUpANewZone) {
  const std::uint64_t july = Ms(1'625'097'600);
  {
    const ZoneScope scope("CET-1CEST,M3.5.0,M10.5.0/3");
    kelp::FResetGlobalLocalTimeComputer();
    EXPECT_EQ(kelp::FUtcMsToUserMs(kelp::tsLocal, july), july + 7'200'000);
    EXPECT_EQ(kelp::FUtcMsToUserMs(kelp::tsZone, july), july + 3'600'000);
    const ZoneScope other("IST-5:30");
    EXPECT_EQ(kelp::FUtcMsToUserMs(kelp::tsLocal, july), july + 7'200'000) << "not by itself";
    kelp::FResetGlobalLocalTimeComputer();
    EXPECT_EQ(kelp::FUtcMsToUserMs(kelp::tsLocal, july), july + 19'800'000);
    EXPECT_EQ((kelp::FGetUtcMidNightOfCurLocalDay() + 19'800'000) % 86'400'000, 0u);
  }
  kelp::FResetGlobalLocalTimeComputer();
}

}  // namespace
