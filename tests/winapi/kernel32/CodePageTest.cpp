// Text between the code pages and UTF-16.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <utility>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr UINT kLatin1 = 28591;

Wide Decode(UINT codePage, DWORD flags, const std::string& bytes) {
  WCHAR units[64];
  const int size = static_cast<int>(bytes.size());
  const int count = MultiByteToWideChar(codePage, flags, bytes.data(), size, units, 64);
  EXPECT_EQ(MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0), count);
  return Wide(units, static_cast<std::size_t>(count));
}

TEST(CodePage, DecodesWellFormedUtf8) {
  const std::pair<const char*, Wide> cases[] = {
      {"a", WTEXT("a")},
      {"\x7F\xC2\x80\xDF\xBF", WTEXT("\x7F\x80\x7FF")},
      {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", WTEXT("\x800\xD7FF\xE000\xFFFF")},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", WTEXT("\xD800\xDC00\xDBFF\xDFFF")},
  };
  for (const auto& [bytes, units] : cases) {
    EXPECT_EQ(Decode(CP_UTF8, MB_ERR_INVALID_CHARS, bytes), units) << bytes;
    char back[64] = {};
    WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, units.c_str(), -1, back, 64, nullptr,
                        nullptr);
    EXPECT_STREQ(back, bytes);
  }
  EXPECT_EQ(Decode(CP_UTF8, 0, std::string("a\0b", 3)).size(), 3u);
}

TEST(CodePage, RefusesOrReplacesIllFormedUtf8) {
  const std::string cases[] = {"\x80",
                               "\xBF",
                               "\xC0\x80",
                               "\xC1\xBF",
                               "\xC3",
                               "\xC3(",
                               "\xE0\x9F\xBF",
                               "\xE2\x82",
                               "\xED\xA0\x80",
                               "\xED\xBF\xBF",
                               "\xF0\x8F\xBF\xBF",
                               "\xF0\x9F\x98",
                               "\xF4\x90\x80\x80",
                               "\xF5\x80\x80\x80",
                               "\xFF"};
  for (const std::string& bytes : cases) {
    EXPECT_EQ(Decode(CP_UTF8, MB_ERR_INVALID_CHARS, "ok" + bytes), Wide());
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_UNICODE_TRANSLATION});
    const Wide text = Decode(CP_UTF8, 0, "a" + bytes + "z");
    EXPECT_EQ(text.substr(0, 2), WTEXT("a\xFFFD"));
    EXPECT_TRUE(text.size() > 2 && text.back() == WTEXT('z'));
  }
}

TEST(CodePage, RefusesOrReplacesLoneSurrogates) {
  for (const WCHAR unit : {WCHAR{0xD800}, WCHAR{0xDBFF}, WCHAR{0xDC00}, WCHAR{0xDFFF}}) {
    const WCHAR text[] = {unit, 'z', 0};
    char bytes[8];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, 8, nullptr, nullptr), 5);
    EXPECT_STREQ(bytes, "\xEF\xBF\xBDz");
    EXPECT_EQ(ErrorOf(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, -1, bytes, 8,
                                          nullptr, nullptr)),
              ERROR_NO_UNICODE_TRANSLATION);
  }
}

TEST(CodePage, ConvertsIso8859_1ByteByByte) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  WCHAR units[256];
  ASSERT_EQ(MultiByteToWideChar(kLatin1, 0, all.c_str(), -1, units, 256), 256);
  for (int i = 0; i < 255; ++i) ASSERT_EQ(units[i], i + 1);

  char bytes[256];
  BOOL used = TRUE;
  ASSERT_EQ(WideCharToMultiByte(kLatin1, 0, units, -1, bytes, 256, nullptr, &used), 256);
  EXPECT_EQ(bytes, all);
  EXPECT_FALSE(used);
  EXPECT_EQ(WideCharToMultiByte(kLatin1, WC_NO_BEST_FIT_CHARS, WTEXT("1\x20AC"), -1, bytes, 256,
                                "*", &used),
            3);
  EXPECT_STREQ(bytes, "1*");
  EXPECT_TRUE(used);
}

TEST(CodePage, CountsTheTerminatorOnlyForALengthOfMinusOne) {
  WCHAR units[4] = {'?', '?', '?', '?'};
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "ab", -1, nullptr, 0), 3);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 2, units, 2), 2);
  EXPECT_EQ(units[2], WTEXT('?'));
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, units, 4), 3);
  EXPECT_EQ(units[2], 0);
}

TEST(CodePage, OemCodePageTakesTextWithoutBestFit) {
  char bytes[8] = {};
  EXPECT_EQ(WideCharToMultiByte(CP_OEMCP, WC_NO_BEST_FIT_CHARS, WTEXT("C:\\a"), 4, bytes, 8,
                                nullptr, nullptr),
            4);
  EXPECT_STREQ(bytes, "C:\\a");
}

TEST(CodePage, FailsWithTheReason) {
  WCHAR units[4];
  char bytes[4];
  const auto decode = [&](UINT codePage, DWORD flags, const char* source, int size, int room) {
    return ErrorOf(MultiByteToWideChar(codePage, flags, source, size, units, room));
  };
  const auto encode = [&](const WCHAR* source, int size, BOOL* used) {
    return ErrorOf(WideCharToMultiByte(CP_UTF8, 0, source, size, bytes, 4, nullptr, used));
  };
  EXPECT_EQ(decode(CP_UTF8, 0, "abc", 3, 2), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(decode(CP_UTF8, 0, "abc", -1, 3), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(decode(CP_UTF8, 0, "abc", 0, 4), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(decode(CP_UTF8, 0, nullptr, 3, 4), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(decode(12345, 0, "abc", 3, 4), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(encode(WTEXT("abcde"), 5, nullptr), ERROR_INSUFFICIENT_BUFFER);

  // Wine takes these four.
  if (UnderWine()) return;
  EXPECT_EQ(decode(CP_UTF8, 0, "\xF0\x90\x80\x80", 4, 1), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(decode(CP_UTF8, 0, reinterpret_cast<char*>(units), 2, 4), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(decode(CP_UTF8, MB_PRECOMPOSED, "abc", 3, 4), ERROR_INVALID_FLAGS);
  BOOL used = FALSE;
  EXPECT_EQ(encode(WTEXT("a"), 1, &used), ERROR_INVALID_PARAMETER)
      << "UTF-8 has no default character";
}

}  // namespace
