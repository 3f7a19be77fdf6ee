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

#ifdef _WIN32
#define WTEXT(text) L##text
static constexpr const char* kGerman = "German_Germany.1252";
#else
#define WTEXT(text) u##text
static constexpr const char* kGerman = "de_DE.UTF-8";
#endif

namespace {

struct FreeLocale {
  void operator()(_locale_t locale) const { _free_locale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<_locale_t>, FreeLocale>;

TEST(CrtLocale, ReadsNumbersUnderALocaleObject) {
  const Locale c(_create_locale(LC_ALL, "C"));
  const Locale german(_create_locale(LC_NUMERIC, kGerman));
  ASSERT_NE(c, nullptr);
  ASSERT_NE(german, nullptr);
  EXPECT_EQ(_atof_l(" -1.5x", c.get()), -1.5);
  EXPECT_EQ(_atof_l("1,5", c.get()), 1);
  EXPECT_EQ(_wtof_l(WTEXT("2.5e2"), c.get()), 250);
  EXPECT_EQ(_wtof_l(WTEXT(".5\x20AC"), c.get()), 0.5);
  EXPECT_EQ(_wtof_l(WTEXT("x"), c.get()), 0);
  EXPECT_EQ(_atof_l("1,5", german.get()), 1.5);
  EXPECT_EQ(_wtof_l(WTEXT("-2,25e1"), german.get()), -22.5);
  EXPECT_EQ(_wtof_l(WTEXT("1.5"), german.get()), 1);
  EXPECT_STREQ(localeconv()->decimal_point, ".") << "the process keeps its locale";
}

TEST(CrtLocale, CopiesTheCurrentLocaleAndRefusesUnknownNames) {
  ASSERT_NE(setlocale(LC_NUMERIC, kGerman), nullptr);
  const Locale current(_get_current_locale());
  setlocale(LC_NUMERIC, "C");
  ASSERT_NE(current, nullptr);
  EXPECT_EQ(_atof_l("1,5", current.get()), 1.5);
  EXPECT_EQ(_create_locale(LC_ALL, "no_such_locale"), nullptr);
  _free_locale(nullptr);
}

TEST(CrtStream, WritesWideTextAsBytesOfTheLocale) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(tmpfile(), fclose);
  ASSERT_NE(file, nullptr);
  _lock_file(file.get());
  EXPECT_NE(fputws(WTEXT("a\x00E0"), file.get()), static_cast<int>(WEOF));
  _unlock_file(file.get());
  EXPECT_EQ(fputwc(WCHAR{0}, file.get()), 0);
  EXPECT_EQ(fputwc(WTEXT('z'), file.get()), wint_t{'z'});
  errno = 0;
  EXPECT_EQ(static_cast<wint_t>(fputws(WTEXT("\x20AC"), file.get())), static_cast<wint_t>(WEOF));
  EXPECT_EQ(errno, EILSEQ);

  rewind(file.get());
  char bytes[8] = {};
  EXPECT_EQ(fread(bytes, 1, sizeof(bytes), file.get()), 4u);
  EXPECT_EQ(std::string(bytes, 4), std::string("a\xE0\0z", 4));
}

}  // namespace
