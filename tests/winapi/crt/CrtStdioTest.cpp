// The C runtime's streams under wide names, and wide text and numbers out of them.
#include <gtest/gtest.h>
#include <tchar.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

// The lines of a file as fgetws gives them, each in a buffer of size units.
std::vector<Wide> ReadLines(const Wide& path, const WCHAR* mode, int size = 100) {
  std::vector<Wide> lines;
  FILE* const file = _wfopen(path.c_str(), mode);
  EXPECT_NE(file, nullptr);
  if (file == nullptr) return lines;
  std::vector<WCHAR> buffer(static_cast<std::size_t>(size));
  while (fgetws(buffer.data(), size, file) != nullptr) lines.emplace_back(buffer.data());
  const int error = errno;  // of the reading, whatever the closing does to it
  std::fclose(file);
  errno = error;
  return lines;
}

TEST(CrtStdio, ReadsLinesOfText) {
  const TempFolder folder;
  folder.Write("lines.txt", "one\r\ntwo\n\r\nfive\xE0\rsix\r\r\nend");
  const Wide path = folder.Wide(WTEXT("lines.txt"));
  const std::vector<Wide> expected = {WTEXT("one\n"), WTEXT("two\n"), WTEXT("\n"),
                                      WTEXT("five\u00E0\rsix\r\n"), WTEXT("end")};
  EXPECT_EQ(ReadLines(path, WTEXT("r")), expected);
  EXPECT_EQ(ReadLines(path, WTEXT("rt")), expected);
  std::vector<Wide> pieces = ReadLines(path, WTEXT("r"), 4);
  pieces.resize(2);
  EXPECT_EQ(pieces, (std::vector<Wide>{WTEXT("one"), WTEXT("\n")}));

  folder.Write("end.txt", "a\x1Az\n");
  EXPECT_EQ(ReadLines(folder.Wide(WTEXT("end.txt")), WTEXT("r")), std::vector<Wide>{WTEXT("a")});
}

TEST(CrtStdio, LeavesTheBufferAloneAtTheEnd) {
  const TempFolder folder;
  folder.Write("empty.txt", "");
  FILE* const file = _wfopen(folder.Wide(WTEXT("empty.txt")).c_str(), WTEXT("r"));
  ASSERT_NE(file, nullptr);
  WCHAR buffer[4] = WTEXT("xyz");
  EXPECT_EQ(fgetws(buffer, 4, file), nullptr);
  EXPECT_EQ(Wide(buffer), WTEXT("xyz"));
  std::fclose(file);
}

// Against the rules of text spelled out, in the "C" locale: lines and blocks of any length, and
// bytes put back between.
TEST(CrtStdio, ReadsTextOfAnyShape) {
  const TempFolder folder;
  std::mt19937 random(7);
  // Room for a terminator alone gives the empty text; Wine says that the stream has ended.
  const std::size_t smallest = UnderWine() ? 2 : 1;
  for (int round = 0; round < 200; ++round) {
    std::string bytes;
    Wide text;
    const std::size_t lineLength = random() % 40 + 1;
    for (int i = 0; i < 300; ++i) {
      const char unit = "\t\r\xE0\xFF\x7F\x1F"[random() % 6];
      bytes += random() % lineLength == 0 ? '\n' : random() % 8 == 0 ? unit : 'a';
    }
    if (round % 4 == 0) bytes[random() % bytes.size()] = '\x1A';
    for (std::size_t i = 0; i < bytes.size() && bytes[i] != '\x1A'; ++i) {
      if (bytes.substr(i, 2) != "\r\n") text += static_cast<unsigned char>(bytes[i]);
    }
    folder.Write("any.txt", bytes);
    FILE* const file = _wfopen(folder.Wide(WTEXT("any.txt")).c_str(), WTEXT("r"));
    ASSERT_NE(file, nullptr);
    while (!text.empty()) {
      WCHAR buffer[66];
      const std::size_t size = random() % 64 + smallest;
      const std::size_t line = std::min(text.find('\n'), text.size() - 1) + 1;
      const std::size_t length = std::min(size - 1, line);
      ASSERT_NE(fgetws(buffer, static_cast<int>(size), file), nullptr) << round;
      ASSERT_EQ(Wide(buffer), text.substr(0, length)) << round;
      text.erase(0, length);
      if (random() % 4 != 0) continue;
      std::ungetc('u', file);
      text.insert(text.begin(), 'u');
    }
    EXPECT_EQ(std::getc(file), EOF);
    std::fclose(file);
  }
}

int Put(const std::string& text, FILE* file) {
  return std::fputs(text.c_str(), file);
}
int Put(const Wide& text, FILE* file) {
  return fputws(text.c_str(), file);
}

// The bytes of a file after text was written to it in a mode.
template <class Text>
std::string AfterWriting(const TempFolder& folder, const WCHAR* mode, const Text& text) {
  FILE* const file = _wfopen(folder.Wide(WTEXT("out.txt")).c_str(), mode);
  EXPECT_NE(file, nullptr);
  if (file == nullptr) return "";
  EXPECT_GE(Put(text, file), 0);
  EXPECT_EQ(std::fclose(file), 0);
  return folder.Read("out.txt");
}

TEST(CrtStdio, TextStreamsTranslateLineEndsAndKnowTheirPosition) {
  const TempFolder folder;
  EXPECT_EQ(AfterWriting(folder, WTEXT("w"), "a\nbc\n"), "a\r\nbc\r\n");
  EXPECT_EQ(AfterWriting(folder, WTEXT("a"), "d\n"), "a\r\nbc\r\nd\r\n");

  FILE* const file = _wfopen(folder.Wide(WTEXT("out.txt")).c_str(), WTEXT("r+t"));
  ASSERT_NE(file, nullptr);
  WCHAR line[10];
  ASSERT_NE(fgetws(line, 10, file), nullptr);
  EXPECT_EQ(std::ftell(file), 3);
  ASSERT_NE(fgetws(line, 10, file), nullptr);
  EXPECT_EQ(Wide(line), WTEXT("bc\n"));
  ASSERT_EQ(std::fseek(file, 3, SEEK_SET), 0);
  std::fputs("BC", file);
  std::fclose(file);
  EXPECT_EQ(folder.Read("out.txt"), "a\r\nBC\r\nd\r\n");

  EXPECT_EQ(AfterWriting(folder, WTEXT("wb"), "a\n"), "a\n");
}

TEST(CrtStdio, UnicodeStreamsHaveAMarkAndWriteAnyText) {
  const TempFolder folder;
  const std::string kMark16 = "\xFF\xFE", kMark8 = "\xEF\xBB\xBF";
  const std::string kLine16 = {'\xAC', '\x20', '\r', '\0', '\n', '\0'};  // of a euro
  const std::string kLine8 = "\xE2\x82\xAC\r\n";
  const Wide line = WTEXT("\u20AC\n");
  const struct {
    const WCHAR* mode;
    Wide text;
    std::string bytes;
  } kCases[] = {{WTEXT("wt, ccs=UNICODE"), Wide(), kMark16},
                {WTEXT("a, ccs=UNICODE"), line, kMark16 + kLine16},
                {WTEXT("a,ccs=utf-8"), line, kMark16 + kLine16 + kLine16},  // the mark decides
                {WTEXT("w,ccs=UTF-8"), line, kMark8 + kLine8},
                {WTEXT("a, ccs=UNICODE"), line, kMark8 + kLine8 + kLine8},
                {WTEXT("w, ccs=UTF-16LE"), line, kMark16 + kLine16},
                {WTEXT("w"), WTEXT("x\n"), "x\r\n"}};
  for (const auto& c : kCases) EXPECT_EQ(AfterWriting(folder, c.mode, c.text), c.bytes);
}

// Raw units: no line end is translated, no unit needs the locale, and half a unit is none.
TEST(CrtStdio, BinaryStreamsTakeUnitsAsTheyAre) {
  const TempFolder folder;
  const Wide text = WTEXT("\u20AC\r\n\x1A\xD800\n");
  const std::string bytes(reinterpret_cast<const char*>(text.data()), 2 * text.size());
  for (const WCHAR* mode : {WTEXT("wb"), WTEXT("w+b"), WTEXT("wbN")}) {
    EXPECT_EQ(AfterWriting(folder, mode, text), bytes);
  }
  EXPECT_EQ(AfterWriting(folder, WTEXT("ab"), std::string("x")), bytes + "x") << "bytes as well";
  const std::vector<Wide> lines = {text.substr(0, 3), text.substr(3)};
  const Wide path = folder.Wide(WTEXT("out.txt"));
  for (const WCHAR* mode : {WTEXT("rb"), WTEXT("r+b"), WTEXT("a+b")}) {
    EXPECT_EQ(ReadLines(path, mode), lines);
  }
  EXPECT_EQ(ReadLines(path, WTEXT("rb"), 2).front(), text.substr(0, 1));

  FILE* const file = _wfopen(path.c_str(), WTEXT("wb"));
  ASSERT_NE(file, nullptr);
  for (const WCHAR unit : {WCHAR{0}, WCHAR{0xDC00}}) EXPECT_EQ(fputwc(unit, file), unit);
  EXPECT_EQ(std::ftell(file), 4);
  std::fclose(file);
  EXPECT_EQ(folder.Read("out.txt"), std::string("\0\0\0\xDC", 4));

  FILE* const next = _wfopen(path.c_str(), WTEXT("w"));
  ASSERT_NE(next, nullptr);
  EXPECT_GE(fputws(WTEXT("a\n"), next), 0)
      << "a stream of text, where the binary one may have been";
  std::fclose(next);
  EXPECT_EQ(folder.Read("out.txt"), "a\r\n");
}

TEST(CrtStdio, ACharacterThatTheLocaleLacksDoesNotTakeTheRestAlong) {
  const TempFolder folder;
  FILE* const file = _wfopen(folder.Wide(WTEXT("out.txt")).c_str(), WTEXT("w"));
  ASSERT_NE(file, nullptr);
  errno = 0;
  EXPECT_EQ(static_cast<std::wint_t>(fputws(WTEXT("x\u20ACyz"), file)),
            static_cast<std::wint_t>(WEOF));
  EXPECT_EQ(errno, EILSEQ);
  EXPECT_EQ(fputwc(WTEXT('\u20AC'), file), static_cast<std::wint_t>(WEOF));
  std::fclose(file);
#ifdef _WIN32
  EXPECT_EQ(folder.Read("out.txt")[0], 'x') << "there the rest may be lost";
#else
  EXPECT_EQ(folder.Read("out.txt"), "xyz");
#endif
}

TEST(CrtStdio, OpensByWindowsNames) {
  const TempFolder folder;
  const Wide name = WTEXT("Stra\u00DFe \u00C0.txt");
  FILE* file = _wfopen((folder.Wide() + WTEXT("\\") + name).c_str(), WTEXT("wb"));
  ASSERT_NE(file, nullptr);
  std::fclose(file);
  EXPECT_TRUE(std::filesystem::exists(folder.Path() / name));
  file = _wfopen((folder.Wide() + WTEXT("/STRA\u00DFE \u00E0.TXT")).c_str(), WTEXT("rb"));
  EXPECT_NE(file, nullptr) << "in any case";
  if (file != nullptr) std::fclose(file);

  const auto error = [](const Wide& path, const WCHAR* mode) {
    errno = 0;
    EXPECT_EQ(_wfopen(path.c_str(), mode), nullptr);
    return errno;
  };
  EXPECT_EQ(error(folder.Wide(WTEXT("none.txt")), WTEXT("rb")), ENOENT);
  for (const WCHAR* mode : {WTEXT("rb"), WTEXT("r+b"), WTEXT("wb"), WTEXT("ab")}) {
    EXPECT_EQ(error(folder.Wide(), mode), EACCES) << "a folder isn't a file";
  }
  EXPECT_EQ(error(folder.Wide(WTEXT("a*b")), WTEXT("wb")), EINVAL);
}

TEST(CrtStdio, MakesFilesInFoldersOfAnyCase) {
  const TempFolder folder;
  const auto deep = folder.Path() / "Sub" / "Deep";
  std::filesystem::create_directories(deep);
  for (const WCHAR* name : {WTEXT("SUB/deep/New.txt"), WTEXT("sub/DEEP/new.TXT"),
                            WTEXT("Sub/Deep/NEW.txt"), WTEXT("Sub/Deep/New.txt")}) {
    FILE* const file = _wfopen(folder.Wide(name).c_str(), WTEXT("ab"));
    ASSERT_NE(file, nullptr);
    std::fputc('x', file);
    std::fclose(file);
  }
  EXPECT_EQ(folder.Read("Sub/Deep/New.txt"), "xxxx") << "one file by all names";
  EXPECT_EQ(_wfopen(folder.Wide(WTEXT("SUB/none/New.txt")).c_str(), WTEXT("wb")), nullptr);
}

TEST(CrtStdio, ReadsTheCharactersOfTheLocale) {
  if (setlocale(LC_ALL, kGermanLocale) == nullptr) GTEST_SKIP() << "no German locale";
  const TempFolder folder;
  const Wide text = WTEXT("G\u00F6ttingen 5 \u20AC\n");
  char bytes[64] = {};
  EXPECT_LT(wcstombs(bytes, text.c_str(), sizeof(bytes)), sizeof(bytes));
  folder.Write("german.txt", bytes);
  EXPECT_EQ(ReadLines(folder.Wide(WTEXT("german.txt")), WTEXT("r")), std::vector<Wide>{text});
  EXPECT_EQ(ReadLines(folder.Wide(WTEXT("german.txt")), WTEXT("r"), 3)[0], text.substr(0, 2));
#ifndef _WIN32
  // UTF-8 alone has characters of two units, and bytes that are no character.
  folder.Write("pair.txt", "ab\xF0\x90\x80\x80z");
  const std::vector<Wide> pieces = {u"ab", u"\U00010000z"};
  EXPECT_EQ(ReadLines(folder.Wide(WTEXT("pair.txt")), WTEXT("r"), 4), pieces);
  folder.Write("bad.txt", "a\n\xC3(");
  EXPECT_EQ(ReadLines(folder.Wide(WTEXT("bad.txt")), WTEXT("r")), std::vector<Wide>{u"a\n"});
  EXPECT_EQ(errno, EILSEQ);
#endif
  setlocale(LC_ALL, "C");
}

TEST(CrtNumber, ReadsIntegersOf32Bits) {
  const std::pair<const WCHAR*, int> kCases[] = {{WTEXT(""), 0},
                                                 {WTEXT(" \t\n-12x"), -12},
                                                 {WTEXT("+7"), 7},
                                                 {WTEXT("+-7"), 0},
                                                 {WTEXT("007.9"), 7},
                                                 {WTEXT("0x10"), 0},
                                                 {WTEXT("2147483647"), INT_MAX},
                                                 {WTEXT("2147483648"), INT_MAX},
                                                 {WTEXT("-2147483648"), INT_MIN},
                                                 {WTEXT("-2147483649"), INT_MIN},
                                                 {WTEXT("4294967297"), INT_MAX},
                                                 {WTEXT("99999999999999999999999"), INT_MAX}};
  for (const auto& [text, value] : kCases) {
    EXPECT_EQ(_wtoi(text), value);
    EXPECT_EQ(_wtol(text), value);
  }
}

TEST(CrtNumber, TellsThatAnIntegerDoesNotFit) {
  errno = 0;
  EXPECT_EQ(_wtoi(WTEXT("-2147483648")), INT_MIN);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(_wtoi(WTEXT("2147483648")), INT_MAX);
  if (UnderWine()) GTEST_SKIP() << "Wine doesn't tell";
  EXPECT_EQ(errno, ERANGE);
}

TEST(CrtNumber, ReadsDecimalsByTheLocale) {
  EXPECT_EQ(_wtof(WTEXT(" -12.5e1x")), -125);
  EXPECT_EQ(_wtof(WTEXT("1,5")), 1);
  EXPECT_EQ(_wtof(WTEXT("x")), 0);
  EXPECT_EQ(_wtof(WTEXT("1\u012B5")), 1) << "no unit is cut to a byte";
  if (setlocale(LC_ALL, kGermanLocale) == nullptr) GTEST_SKIP() << "no German locale";
  EXPECT_EQ(_wtof(WTEXT("1,5")), 1.5);
  EXPECT_EQ(_wtof(WTEXT("1.5")), 1);
  setlocale(LC_ALL, "C");
}

}  // namespace
