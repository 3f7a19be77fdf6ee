// Text between the code pages and UTF-16.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr UINT kLatin1 = 28591;
// The text without its last error, or the error in place of the text.
struct Decoded {
  Wide text;
  DWORD error;
  bool operator==(const Decoded&) const = default;
};

Decoded Decode(UINT codePage, DWORD flags, const std::string& bytes) {
  WCHAR units[64];
  SetLastError(0);
  const int size = static_cast<int>(bytes.size());
  const int count = MultiByteToWideChar(codePage, flags, bytes.data(), size, units, 64);
  const DWORD error = GetLastError();
  EXPECT_EQ(MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0), count);
  return {Wide(units, static_cast<std::size_t>(count)), count == 0 ? error : 0};
}

TEST(CodePage, DecodesWellFormedUtf8) {
  const struct {
    const char* bytes;
    Wide units;
  } cases[] = {
      {"a", WTEXT("a")},
      {"\x7F\xC2\x80\xDF\xBF", WTEXT("\x7F\x80\x7FF")},
      {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", WTEXT("\x800\xD7FF\xE000\xFFFF")},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", WTEXT("\xD800\xDC00\xDBFF\xDFFF")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Decode(CP_UTF8, MB_ERR_INVALID_CHARS, c.bytes), (Decoded{c.units, 0})) << c.bytes;
    char bytes[64];
    const int size =
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, c.units.data(),
                            static_cast<int>(c.units.size()), bytes, 64, nullptr, nullptr);
    EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(size)), c.bytes);
  }
  EXPECT_EQ(Decode(CP_UTF8, 0, std::string("a\0b", 3)).text.size(), 3u);
}

TEST(CodePage, RefusesOrReplacesIllFormedUtf8) {
  const std::string cases[] = {
      "\x80",
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
      "\xFF",
  };
  for (const std::string& bytes : cases) {
    EXPECT_EQ(Decode(CP_UTF8, MB_ERR_INVALID_CHARS, "ok" + bytes),
              (Decoded{{}, ERROR_NO_UNICODE_TRANSLATION}));
    const Wide text = Decode(CP_UTF8, 0, "a" + bytes + "z").text;
    ASSERT_GE(text.size(), 3u);
    EXPECT_EQ(text.front(), WTEXT('a'));
    EXPECT_EQ(text[1], 0xFFFD);
    EXPECT_EQ(text.back(), WTEXT('z'));
  }
}

TEST(CodePage, RefusesOrReplacesLoneSurrogates) {
  for (const WCHAR unit : {WCHAR{0xD800}, WCHAR{0xDBFF}, WCHAR{0xDC00}, WCHAR{0xDFFF}}) {
    const WCHAR text[] = {unit, 'z', 0};
    char bytes[8];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, 8, nullptr, nullptr), 5);
    EXPECT_STREQ(bytes, "\xEF\xBF\xBDz");
    EXPECT_EQ(
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, -1, bytes, 8, nullptr, nullptr),
        0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_UNICODE_TRANSLATION});
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
    SetLastError(0);
    EXPECT_EQ(MultiByteToWideChar(codePage, flags, source, size, units, room), 0);
    return GetLastError();
  };
  EXPECT_EQ(decode(CP_UTF8, 0, "abc", 3, 2), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_EQ(decode(CP_UTF8, 0, "abc", -1, 3), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_EQ(decode(CP_UTF8, 0, "abc", 0, 4), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(decode(CP_UTF8, 0, nullptr, 3, 4), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(decode(12345, 0, "abc", 3, 4), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, WTEXT("abcde"), 5, bytes, 4, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});

  // Wine takes these four.
  if (UnderWine()) return;
  EXPECT_EQ(decode(CP_UTF8, 0, "\xF0\x90\x80\x80", 4, 1), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_EQ(decode(CP_UTF8, 0, reinterpret_cast<char*>(units), 2, 4),
            DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(decode(CP_UTF8, MB_PRECOMPOSED, "abc", 3, 4), DWORD{ERROR_INVALID_FLAGS});
  BOOL used = FALSE;
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, WTEXT("a"), 1, bytes, 4, nullptr, &used), 0);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER}) << "UTF-8 has no default character";
}

}  // namespace
