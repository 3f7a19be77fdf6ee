// Text between the code pages and UTF-16.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
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

// The unit of one character; 0 where it is refused.
WCHAR Strict(UINT codePage, const std::string& bytes) {
  WCHAR units[2] = {};
  const int count = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(),
                                        static_cast<int>(bytes.size()), units, 2);
  return count == 1 ? units[0] : WCHAR{0};
}

bool IsPrivate(WCHAR unit) {
  return unit >= 0xE000 && unit <= 0xF8FF;
}

// How many characters of a page don't become the bytes again from which they came.
int LostOnTheWayBack(UINT codePage, WCHAR unit, const std::string& from) {
  char bytes[2];
  BOOL used = TRUE;
  const int size =
      WideCharToMultiByte(codePage, WC_NO_BEST_FIT_CHARS, &unit, 1, bytes, 2, nullptr, &used);
  return used || std::string(bytes, static_cast<std::size_t>(size)) != from ? 1 : 0;
}

// All characters of each page, by a sum (FNV-1a) over the units of its bytes and pairs of bytes.
// Sums and counts are those of Windows' tables as Wine has them too; private characters in pairs,
// which users define, are left out. The pairs that are lost have two codes.
TEST(CodePage, CharactersAreThoseOfWindows) {
  const struct {
    UINT codePage;
    std::uint32_t sum;
    int refused, lost;
  } pages[] = {
      {437, 0x4D308040, 0, 0},   {850, 0xC42996D0, 0, 0},    {932, 0xB218708F, 64, 398},
      {936, 0xDC62A45E, 127, 0}, {949, 0x6A328207, 127, 0},  {950, 0x60C8CCDE, 127, 10},
      {1250, 0x46C01BA5, 0, 0},  {1251, 0x865AEB5D, 0, 0},   {1252, 0x1F0FB4AF, 0, 0},
      {1253, 0xA79740C6, 3, 0},  {1254, 0x73AC6D07, 0, 0},   {1255, 0x1B91C794, 10, 0},
      {1256, 0x84F9EA20, 0, 0},  {1257, 0x3E6EA4AB, 2, 0},   {1258, 0x2B601276, 0, 0},
      {28591, 0x90A458C5, 0, 0}, {28592, 0x070D570E, 0, 0},  {28593, 0xBAE43945, 7, 0},
      {28594, 0xA6FEEF21, 0, 0}, {28595, 0x258D6261, 0, 0},  {28596, 0xF989C79C, 45, 0},
      {28597, 0x82840414, 6, 0}, {28598, 0xF5912487, 38, 0}, {28599, 0x87FFE0CA, 0, 0},
      {28603, 0xD20E6E4C, 0, 0}, {28605, 0x25CB4D27, 0, 0},
  };
  for (const auto& page : pages) {
    std::uint32_t sum = 2166136261;
    int refused = 0, lost = 0;
    const auto add = [&sum](WCHAR unit) { sum = (sum ^ unit) * 16777619; };
    for (int byte = 0; byte < 256; ++byte) {
      const std::string bytes(1, static_cast<char>(byte));
      const WCHAR unit = Decode(page.codePage, 0, bytes).at(0);
      const bool isRefused = byte != 0 && Strict(page.codePage, bytes) == 0;
      add(unit);
      refused += isRefused;
      if (!isRefused || IsPrivate(unit)) lost += LostOnTheWayBack(page.codePage, unit, bytes);
    }
    const bool hasPairs = page.codePage >= 932 && page.codePage <= 950;
    for (int pair = 0x8140; hasPairs && pair < 0xFF00; ++pair) {
      const int trail = pair & 0xFF;
      if (trail < 0x40 || trail == 0xFF) continue;
      const std::string bytes = {static_cast<char>(pair >> 8), static_cast<char>(trail)};
      const WCHAR unit = Strict(page.codePage, bytes);
      if (unit == 0 || IsPrivate(unit)) continue;
      add(unit);
      lost += LostOnTheWayBack(page.codePage, unit, bytes);
    }
    EXPECT_EQ(sum, page.sum) << page.codePage;
    EXPECT_EQ(refused, page.refused) << page.codePage;
    EXPECT_EQ(lost, page.lost) << page.codePage;
  }
}

TEST(CodePage, BytesThatAreNoCharacterAreRefusedOrReplaced) {
  const struct {
    UINT codePage;
    std::string bytes;
    Wide text;
    bool isGood;
  } cases[] = {
      {1253, "\xE1\xD2", WTEXT("\x3B1\xF8FA"), false},
      {1252, "\x81", WTEXT("\x81"), true},
      {932, "\x83\x5C\xB1", WTEXT("\x30BD\xFF71"), true},
      {932, "a\x83", WTEXT("a\x30FB"), false},  // cut in two at the end
      {932, std::string("\x83\0z", 3), Wide(WTEXT("\x30FB\0z"), 3), false},
      {932, "\x81\x20z", WTEXT("\x30FBz"), false},
      {936, "\x80\xD6\xD0", WTEXT("\x20AC\x4E2D"), true},
      {936, "\xD6\xD0\xD6", WTEXT("\x4E2D?"), false},
      {936, "\xAA\xA1\xA1\x40\xA7\xA0", WTEXT("\xE000\xE4C6\xE765"), true},  // a user's own
      {949, "\xC9\xA1\xFE\xFE", WTEXT("\xE000\xE0BB"), true},
      {950, "\xFA\x40\x8E\xFE\x81\xA1", WTEXT("\xE000\xE3AD\xEEF7"), true},
      {950, "\xA4\x40\xA4\x7F", WTEXT("\x4E00?"), false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Decode(c.codePage, 0, c.bytes), c.text) << c.codePage;
    EXPECT_EQ(Decode(c.codePage, MB_ERR_INVALID_CHARS | MB_PRECOMPOSED, c.bytes),
              c.isGood ? c.text : Wide())
        << c.codePage;
    EXPECT_TRUE(c.isGood || GetLastError() == DWORD{ERROR_NO_UNICODE_TRANSLATION});
  }
}

TEST(CodePage, WhatAPageLacksIsTheDefaultCharacter) {
  const struct {
    UINT codePage;
    const char* defaultChar;
    const char* bytes;
  } cases[] = {
      {kLatin1, nullptr, "a??z"},       {1252, "*", "a**z"},
      {1252, "\x81\x45", "a\x81\x81z"}, {932, "\x81\x45", "a\x81\x45\x81\x45z"},
      {932, "\xB1", "a\xB1\xB1z"},
  };
  for (const auto& c : cases) {
    char bytes[16] = {};
    BOOL used = FALSE;
    const int needed =
        WideCharToMultiByte(c.codePage, WC_NO_BEST_FIT_CHARS, WTEXT("a\xD83D\xDE00z"), -1, nullptr,
                            0, c.defaultChar, nullptr);
    EXPECT_EQ(WideCharToMultiByte(c.codePage, WC_NO_BEST_FIT_CHARS, WTEXT("a\xD83D\xDE00z"), -1,
                                  bytes, 16, c.defaultChar, &used),
              needed);
    EXPECT_STREQ(bytes, c.bytes) << c.codePage;
    EXPECT_EQ(needed, static_cast<int>(std::string(c.bytes).size()) + 1);
    EXPECT_TRUE(used);
  }
}

TEST(CodePage, CountsOfPairsAreBytes) {
  char bytes[4] = {'#', '#', '#', '#'};
  const Wide text = WTEXT("\x4E2D\x4E2D");
  const auto encode = [&](int size) {
    return WideCharToMultiByte(936, 0, text.c_str(), 2, size == 0 ? nullptr : bytes, size, nullptr,
                               nullptr);
  };
  EXPECT_EQ(encode(0), 4);
  EXPECT_EQ(ErrorOf(encode(3)), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(std::string(bytes + 2, 2), "##") << "no half of a character";
  EXPECT_EQ(encode(4), 4);
  EXPECT_EQ(std::string(bytes, 4), "\xD6\xD0\xD6\xD0");
  WCHAR units[2];
  EXPECT_EQ(MultiByteToWideChar(936, 0, bytes, 3, nullptr, 0), 2);
  EXPECT_EQ(ErrorOf(MultiByteToWideChar(936, 0, bytes, 4, units, 1)), ERROR_INSUFFICIENT_BUFFER);
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
  for (const UINT unknown : {12345, 28600, 28604, 28606, 1249, 1259, 10000000}) {
    EXPECT_EQ(decode(unknown, 0, "abc", 3, 4), ERROR_INVALID_PARAMETER) << unknown;
  }
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
