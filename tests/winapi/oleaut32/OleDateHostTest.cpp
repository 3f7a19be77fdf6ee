// The locale of the process, which only the layer takes from LC_TIME.
#include <gtest/gtest.h>
#include <oleauto.h>

#include <clocale>

#include "tests/winapi/WideText.h"

namespace {

TEST(OleDateHost, FollowsTheLocaleOfTheProcess) {
  if (setlocale(LC_ALL, kGermanLocale) == nullptr) GTEST_SKIP() << "no German locale";
  const struct {
    const char16_t* text;
    double date;
  } cases[] = {
      {u"1.2.2000", 36557},         {u"1/2/2000", 36557},
      {u"1/13/2000", 36538},        {u"31. Dezember 1999", 36525},
      {u"1. M\u00E4r 2000", 36586}, {u"1 M\u00C4RZ 2000", 36586},
      {u"Dec 31, 1999", 36525},     {u"Freitag, 31.12.1999", 36525},
      {u"2000-01-31", 36556},
  };
  for (const auto& test : cases) {
    DATE date = 0;
    EXPECT_EQ(VarDateFromStr(test.text, 0, 0, &date), S_OK) << &test - cases;
    EXPECT_EQ(date, test.date) << &test - cases;
  }
  DATE date = 0;
  EXPECT_EQ(VarDateFromStr(u"1/2/2000", LOCALE_INVARIANT, 0, &date), S_OK);
  EXPECT_EQ(date, 36527);
  EXPECT_EQ(VarDateFromStr(u"1/2/2000", 0x0410, 0, &date), E_INVALIDARG);
  setlocale(LC_ALL, "C");
  EXPECT_EQ(VarDateFromStr(u"1.2.2000", 0, 0, &date), DISP_E_TYPEMISMATCH);
}

}  // namespace
