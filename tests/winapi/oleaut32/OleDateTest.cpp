// Dates read out of text, in the locale of the process.
#include <gtest/gtest.h>
#include <windows.h>
// Behind the types that it needs.
#include <oleauto.h>

#include <ctime>
#include <iterator>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr double kFailed = -1e9;

// The result, or kFailed.
double DateOf(Wide text, ULONG flags = 0, LCID locale = 0) {
  DATE date = kFailed;
  const HRESULT result = VarDateFromStr(text.data(), locale, flags, &date);
  EXPECT_EQ(result, result == S_OK ? S_OK : static_cast<HRESULT>(DISP_E_TYPEMISMATCH));
  return result == S_OK ? date : kFailed;
}

struct Case {
  const WCHAR* text;
  double date;
};

template <std::size_t N>
void ExpectDates(const Case (&cases)[N]) {
  for (const Case& test : cases) {
    EXPECT_NEAR(DateOf(test.text), test.date, 1e-9)
        << Wide(test.text).size() << " units, case " << &test - cases;
  }
}

constexpr double kHour = 1 / 24.0;

TEST(OleDate, ThreeNumbersInTheLocalesOrderOrAnother) {
  ExpectDates({{WTEXT("1/2/2000"), 36527},
               {WTEXT("13/1/2000"), 36538},
               {WTEXT("2000-01-31"), 36556},
               {WTEXT("2000/1/31"), 36556},
               {WTEXT("1999/13/1"), 36173},
               {WTEXT("1-2-2000"), 36527},
               {WTEXT("1 2 2000"), 36527},
               {WTEXT("1,2,2000"), 36527},
               {WTEXT(" 1 / 2 / 2000 "), 36527},
               {WTEXT("31/1/2"), 47850},
               {WTEXT("00001/2/2000"), 36527},
               {WTEXT("2/29/2000"), 36585},
               {WTEXT("1/2/0"), 36527},
               {WTEXT("1/2/49"), 54425},
               {WTEXT("1/2/50"), 18265},
               {WTEXT("1/2/99"), 36162},
               {WTEXT("1/1/100"), -657434},
               {WTEXT("12/31/9999"), 2958465}});
}

TEST(OleDate, MonthsByName) {
  ExpectDates({{WTEXT("Dec 30, 1999"), 36524},
               {WTEXT("30 december 1999"), 36524},
               {WTEXT("1999 DEC 30"), 36524},
               {WTEXT("1999 30 Dec"), 36524},
               {WTEXT("31-Dec-99"), 36525},
               {WTEXT("Dec 1999"), 36495},
               {WTEXT("Friday, December 31, 1999"), 36525},
               {WTEXT("Fri Dec 31 1999"), 36525},
               {WTEXT("1/1/2000 sat"), 36526},
               {WTEXT("Jan 2 3"), 37623}});
}

TEST(OleDate, TimesAloneAndBesideADate) {
  ExpectDates({{WTEXT("16:05"), 16 * kHour + 5 * kHour / 60},
               {WTEXT("0:00:01"), kHour / 3600},
               {WTEXT("23:59:59"), 1 - kHour / 3600},
               {WTEXT("4:30pm"), 16.5 * kHour},
               {WTEXT("4 PM"), 16 * kHour},
               {WTEXT("12 am"), 0},
               {WTEXT("12 pm"), 12 * kHour},
               {WTEXT("13 pm"), 13 * kHour},
               {WTEXT("0:30 am"), 0.5 * kHour},
               {WTEXT("1/2/2000 6:00"), 36527.25},
               {WTEXT("18:00 1/2/2000"), 36527.75},
               {WTEXT("1/2/2000, 6 am"), 36527.25},
               {WTEXT("1/1/1800 6:00"), -36522.25}});
  const Wide both = WTEXT("1/2/2000 6:00");
  EXPECT_EQ(DateOf(both, VAR_TIMEVALUEONLY), 0.25);
  EXPECT_EQ(DateOf(both, VAR_DATEVALUEONLY), 36527);
}

TEST(OleDate, WhatIsNoDateFailsAndLeavesTheResult) {
  for (const WCHAR* text : {WTEXT(""),
                            WTEXT(" "),
                            WTEXT("abc"),
                            WTEXT("Dec"),
                            WTEXT("12"),
                            WTEXT("13/32"),
                            WTEXT("2/30/2000"),
                            WTEXT("2/29/1900"),
                            WTEXT("1/1/10000"),
                            WTEXT("20000131"),
                            WTEXT("1//2/2000"),
                            WTEXT("/1/2/2000"),
                            WTEXT("1/2/2000/"),
                            WTEXT("-1/2/2000"),
                            WTEXT("1/2/3/2000"),
                            WTEXT("1/2/2000x"),
                            WTEXT("1/2/2000 5"),
                            WTEXT("24:00"),
                            WTEXT("16:60"),
                            WTEXT("16:05:60"),
                            WTEXT("1:2:3:4"),
                            WTEXT("16:"),
                            WTEXT("am 5"),
                            WTEXT("4 pm pm"),
                            WTEXT("1:00 2:00"),
                            WTEXT("Dec 1 Dec 1999"),
                            WTEXT("Dec 1 2 3"),
                            WTEXT("2000-01-31T12:30"),
                            WTEXT("99999999999999999999/1/1")}) {
    EXPECT_EQ(DateOf(text), kFailed) << Wide(text).size();
  }
  DATE date = 0;
  EXPECT_EQ(VarDateFromStr(nullptr, 0, 0, &date), static_cast<HRESULT>(DISP_E_TYPEMISMATCH));
}

int YearOf(double date) {
  return static_cast<int>((date + 693959 - 0.5) / 365.2425);
}

TEST(OleDate, WithoutAYearItIsThisOne) {
  const std::time_t now = std::time(nullptr);
  const int year = std::localtime(&now)->tm_year + 1900;
  for (const WCHAR* text : {WTEXT("6/13"), WTEXT("13/6"), WTEXT("June 13"), WTEXT("13 Jun")}) {
    EXPECT_EQ(YearOf(DateOf(text)), year);
    EXPECT_EQ(DateOf(text), DateOf(WTEXT("6/13/") + Wide(1, static_cast<WCHAR>('0' + year / 1000)) +
                                   static_cast<WCHAR>('0' + year / 100 % 10) +
                                   static_cast<WCHAR>('0' + year / 10 % 10) +
                                   static_cast<WCHAR>('0' + year % 10)));
  }
  ExpectDates({{WTEXT("2/2000"), 36557}, {WTEXT("2000/2"), 36557}, {WTEXT("2/30"), 10990 + 36525}});
}

TEST(OleDate, TheInvariantLocaleIsEnglish) {
  for (const LCID locale : {LOCALE_INVARIANT, LCID{0x0409}}) {
    EXPECT_EQ(DateOf(WTEXT("1/2/2000"), 0, locale), 36527);
    EXPECT_EQ(DateOf(WTEXT("2 January 2000"), LOCALE_NOUSEROVERRIDE, locale), 36527);
  }
}

}  // namespace
