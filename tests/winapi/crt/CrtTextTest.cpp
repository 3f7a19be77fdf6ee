// The C runtime's text functions.
#include <gtest/gtest.h>
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cwchar>

#include "tests/winapi/WideText.h"

namespace {

TEST(CrtText, ComparesAndFinds) {
  EXPECT_EQ(wcslen(WTEXT("abc")), 3u);
  EXPECT_LT(wcscmp(WTEXT("ab"), WTEXT("b")), 0);
  EXPECT_GT(wcscmp(WTEXT("\xFFFF"), WTEXT("a")), 0);
  EXPECT_EQ(wcsncmp(WTEXT("abX"), WTEXT("abY"), 2), 0);
  EXPECT_EQ(wcsncmp(WTEXT("a"), WTEXT("b"), 0), 0);

  const WCHAR* text = WTEXT("a.b.c");
  EXPECT_EQ(wcschr(text, '.'), text + 1);
  EXPECT_EQ(wcsrchr(text, '.'), text + 3);
  EXPECT_EQ(wcschr(text, 'x'), nullptr);
  EXPECT_EQ(wcschr(text, 0), text + 5);
  EXPECT_EQ(wcsstr(text, WTEXT(".c")), text + 3);
  EXPECT_EQ(wcsstr(text, WTEXT("")), text);
  EXPECT_EQ(wcsstr(text, WTEXT(".x")), nullptr);
}

TEST(CrtText, CopiesWhatFits) {
  WCHAR text[4] = WTEXT("xyz");
  EXPECT_EQ(wcscpy_s(text, 4, WTEXT("abc")), 0);
  EXPECT_EQ(wcscmp(text, WTEXT("abc")), 0);
#ifndef _WIN32
  // There the runtime may end the program.
  EXPECT_EQ(wcscpy_s(text, 3, WTEXT("abc")), ERANGE);
  EXPECT_EQ(text[0], 0);
  text[0] = 'x';
  EXPECT_EQ(wcscpy_s(text, 4, nullptr), EINVAL);
  EXPECT_EQ(text[0], 0);
  EXPECT_EQ(wcscpy_s(nullptr, 4, text), EINVAL);
#endif
}

TEST(CrtText, FoldsCase) {
  EXPECT_EQ(_stricmp("AbC", "aBc"), 0);
  EXPECT_LT(_stricmp("a", "B"), 0);
  EXPECT_LT(_wcsicmp(WTEXT("_"), WTEXT("A")), 0) << "compared as lower case";
  EXPECT_EQ(_strnicmp("abX", "ABy", 2), 0);
  EXPECT_NE(_wcsnicmp(WTEXT("abX"), WTEXT("ABy"), 3), 0);

  char narrow[] = "aB1";
  EXPECT_STREQ(_strupr(narrow), "AB1");
  EXPECT_STREQ(_strlwr(narrow), "ab1");
  WCHAR wide[] = WTEXT("aB1\x00C0");
  EXPECT_EQ(wcscmp(_wcslwr(wide), WTEXT("ab1\x00C0")), 0) << "the C locale knows ASCII letters";
  EXPECT_EQ(wcscmp(_wcsupr(wide), WTEXT("AB1\x00C0")), 0);
}

TEST(CrtText, ConvertsBytesOneToOneInTheCLocale) {
  ASSERT_STREQ(setlocale(LC_CTYPE, nullptr), "C");
  EXPECT_EQ(wcstombs(nullptr, WTEXT("a\x00E0"), 0), 2u);
  char narrow[4] = "???";
  EXPECT_EQ(wcstombs(narrow, WTEXT("a\x00E0"), 4), 2u);
  EXPECT_STREQ(narrow, "a\xE0");
  WCHAR wide[4] = {'?', '?', '?', '?'};
  EXPECT_EQ(mbstowcs(wide, "\xE0z", 4), 2u);
  EXPECT_EQ(wcscmp(wide, WTEXT("\x00E0z")), 0);

  errno = 0;
  EXPECT_EQ(wcstombs(narrow, WTEXT("\x20AC"), 4), static_cast<size_t>(-1));
  EXPECT_EQ(errno, EILSEQ);
}

#ifndef _WIN32
// UTF-8 has characters of two units.
TEST(CrtText, ConvertsPairsAsOneCharacter) {
  ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  char narrow[8] = "???????";
  EXPECT_EQ(wcstombs(narrow, u"a\U0001F600", 8), 5u);
  EXPECT_STREQ(narrow, "a\xF0\x9F\x98\x80");
  char16_t wide[4] = u"???";
  EXPECT_EQ(mbstowcs(wide, narrow, 2), 1u) << "a pair that doesn't fit whole isn't begun";
  EXPECT_EQ(mbstowcs(wide, narrow, 4), 3u);
  EXPECT_EQ(wcscmp(wide, u"a\U0001F600"), 0);
  EXPECT_EQ(wcstombs(narrow, u"\xD83D", 8), static_cast<size_t>(-1)) << "half a pair";
  EXPECT_EQ(mbstowcs(wide, "\xF0\x9F", 4), static_cast<size_t>(-1));
  setlocale(LC_CTYPE, "C");
}
#endif

TEST(CrtText, WritesNoTerminatorWithoutRoom) {
  char narrow[4] = "xyz";
  EXPECT_EQ(wcstombs(narrow, WTEXT("ab"), 2), 2u);
  EXPECT_STREQ(narrow, "abz");
  EXPECT_EQ(mbstowcs(static_cast<WCHAR*>(nullptr), "abc", 0), 3u);
}

}  // namespace
