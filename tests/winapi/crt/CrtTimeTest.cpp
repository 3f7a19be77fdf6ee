// The C runtime's local time.
#include <gtest/gtest.h>
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <ctime>
#include <cwchar>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr __time64_t kDay = 86400, kLastDay = 32'535'215'999 - kDay;

TEST(CrtTime, FieldsAndTimeAreInverse) {
  for (__time64_t time = kDay; time < kLastDay; time += 123'456'789) {
    const tm* const fields = _localtime64(&time);
    ASSERT_NE(fields, nullptr) << time;
    tm copy = *fields;
    EXPECT_EQ(_mktime64(&copy), time);
    copy.tm_mon += 12;
    copy.tm_year -= 1;
    copy.tm_wday = copy.tm_yday = -5;
    EXPECT_EQ(_mktime64(&copy), time);
    const tm* const again = _localtime64(&time);
    EXPECT_EQ(copy.tm_mon, again->tm_mon);
    EXPECT_EQ(copy.tm_wday, again->tm_wday);
    EXPECT_EQ(copy.tm_yday, again->tm_yday);
  }
}

TEST(CrtTime, OnlyTimesFrom1970To3000) {
  for (const __time64_t time : {__time64_t{-1}, __time64_t{-kDay}, kLastDay + 2 * kDay}) {
    errno = 0;
    EXPECT_EQ(_localtime64(&time), nullptr);
    EXPECT_EQ(errno, EINVAL);
  }
  for (const int year : {65, 1102}) {
    tm fields = {};
    fields.tm_year = year;
    fields.tm_mday = 40;
    EXPECT_EQ(_mktime64(&fields), -1);
    EXPECT_EQ(fields.tm_mday, 40);
  }
}

TEST(CrtTime, TextOfTwentyFourCharacters) {
  tm fields = {};
  fields.tm_year = 80;
  fields.tm_mday = 2;
  fields.tm_wday = 3;
  fields.tm_hour = 2;
  fields.tm_min = 3;
  fields.tm_sec = 55;
  EXPECT_EQ(Wide(_wasctime(&fields)), WTEXT("Wed Jan 02 02:03:55 1980\n"));
  const struct {
    int tm::*field;
    int lowest, highest;
  } ranges[] = {{&tm::tm_mon, 0, 11},   {&tm::tm_wday, 0, 6}, {&tm::tm_hour, 0, 23},
                {&tm::tm_min, 0, 59},   {&tm::tm_sec, 0, 59}, {&tm::tm_mday, 1, 31},
                {&tm::tm_year, 0, 8099}};
  for (const auto& range : ranges) {
    for (const int value : {range.lowest, range.highest}) {
      tm good = fields;
      good.*range.field = value;
      EXPECT_NE(_wasctime(&good), nullptr) << value;
    }
    for (const int value : {range.lowest - 1, range.highest + 1}) {
      // Wine takes the day 0 and years of five digits.
      if (UnderWine() && (value == 0 || value == 8100)) continue;
      tm bad = fields;
      bad.*range.field = value;
      errno = 0;
      EXPECT_EQ(_wasctime(&bad), nullptr) << value;
      EXPECT_EQ(errno, EINVAL);
    }
  }
}

}  // namespace
