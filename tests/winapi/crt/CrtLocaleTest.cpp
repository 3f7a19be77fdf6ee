// The C runtime's locale objects, and its wide output.
#include <gtest/gtest.h>
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <string>
#include <type_traits>

#include "tests/TempFolder.h"
#include "tests/winapi/WideText.h"

namespace {

struct FreeLocale {
  void operator()(_locale_t locale) const { _free_locale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<_locale_t>, FreeLocale>;

TEST(CrtLocale, ReadsNumbersUnderALocaleObject) {
  const Locale c(_create_locale(LC_ALL, "C"));
  const Locale german(_create_locale(LC_NUMERIC, kGermanLocale));
  ASSERT_NE(c, nullptr);
  ASSERT_NE(german, nullptr);
  EXPECT_EQ(_atof_l(" -1.5x", c.get()), -1.5);
  EXPECT_EQ(_atof_l("1,5", c.get()), 1);
  EXPECT_EQ(_wtof_l(WTEXT(".5\x20AC"), c.get()), 0.5);
  EXPECT_EQ(_atof_l("1,5", german.get()), 1.5);
  EXPECT_EQ(_wtof_l(WTEXT("-2,25e1"), german.get()), -22.5);
  EXPECT_EQ(_wtof_l(WTEXT("1.5"), german.get()), 1);
  EXPECT_STREQ(localeconv()->decimal_point, ".") << "the process keeps its locale";
}

TEST(CrtLocale, CopiesTheCurrentLocaleAndRefusesUnknownNames) {
  ASSERT_NE(setlocale(LC_NUMERIC, kGermanLocale), nullptr);
  const Locale current(_get_current_locale());
  setlocale(LC_NUMERIC, "C");
  ASSERT_NE(current, nullptr);
  EXPECT_EQ(_atof_l("1,5", current.get()), 1.5);
  EXPECT_EQ(_create_locale(LC_ALL, "no_such_locale"), nullptr);
  _free_locale(nullptr);
}

// In text mode, where wide output is converted; binary streams on Windows take the units as they
// are.
TEST(CrtStream, WritesWideTextAsBytesOfTheLocale) {
  const TempFolder folder;
  FILE* const file = fopen((folder.Path() / "text").string().c_str(), "w+");
  ASSERT_NE(file, nullptr);
  _lock_file(file);
  EXPECT_NE(fputws(WTEXT("a\x00E0"), file), static_cast<int>(WEOF));
  _unlock_file(file);
  EXPECT_EQ(fputwc(WCHAR{0}, file), 0);
  EXPECT_EQ(fputwc(WTEXT('z'), file), wint_t{'z'});
  errno = 0;
  EXPECT_EQ(static_cast<wint_t>(fputws(WTEXT("\x20AC"), file)), static_cast<wint_t>(WEOF));
  EXPECT_EQ(errno, EILSEQ);
  fclose(file);
  EXPECT_EQ(folder.Read("text"), std::string("a\xE0\0z", 4));
}

}  // namespace
