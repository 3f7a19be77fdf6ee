// The formatting engine and the kelp_ family.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <random>
#include <string>

#include "kelp0lang/LocaleFree.h"
#include "tests/TestText.h"

using kelp::String;
using kelp::WString;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Prints an ASCII template in both widths, which must agree.
template <class... A>
std::string Printed(const char* format, A... args) {
  static char narrow[4096];
  static WChar wide[4096];
  const int length = kelp_sprintf_s(narrow, std::size(narrow), format, args...);
  EXPECT_EQ(
      kelp_snwprintf(wide, std::size(wide), WString::ConvertFromUtf8(format).c_str(), args...),
      length);
  EXPECT_EQ(WString(wide), WString::ConvertFromUtf8(narrow)) << format;
  if (length < 0) return "failed";
  EXPECT_EQ(std::string(narrow).size(), static_cast<std::size_t>(length)) << format;
  return narrow;
}

TEST(Format, PrintsWholeNumbers) {
  EXPECT_EQ(Printed("%d%%|%5d|%-5d|%05d|%+d|% d|%+d", 7, 42, 42, -42, 42, 42, -1),
            "7%|   42|42   |-0042|+42| 42|-1");
  EXPECT_EQ(Printed("%.3d|%5.3d|%05.3d|%.0d|%i", 7, -7, 7, 0, INT_MIN),
            "007| -007|  007||-2147483648");
  EXPECT_EQ(Printed("%u|%x|%X|%o|%#x|%#X|%#o|%#x|%#o", 3000000000u, 255, 255, 8, 255, 255, 8, 0, 0),
            "3000000000|ff|FF|10|0xff|0XFF|010|0|0");
  EXPECT_EQ(Printed("%#08x|%#.4o|%#6.3x|%-8x|%#.0o", 255, 8, 10, 10, 0),
            "0x0000ff|0010| 0x00a|a       |0");
  EXPECT_EQ(Printed("%*d|%-*d|%.*d|%*d|%.*d", 4, 1, 4, 1, 3, 1, -4, 1, -1, 5),
            "   1|1   |001|1   |5");
  EXPECT_EQ(Printed("%hhd|%hhu|%hd|%hu", 0x1FF, 0x1FF, 0x18000, 0x18000), "-1|255|-32768|32768");
  EXPECT_EQ(Printed("%ld|%lu|%I32d", -5L, 5UL, -6), "-5|5|-6");
  const std::int64_t least = INT64_MIN;
  EXPECT_EQ(Printed("%lld|%I64d|%jd|%I64u|%#I64X", least, least, least, UINT64_MAX, UINT64_MAX),
            "-9223372036854775808|-9223372036854775808|-9223372036854775808|"
            "18446744073709551615|0XFFFFFFFFFFFFFFFF");
  EXPECT_EQ(Printed("%zu|%Iu|%td", SIZE_MAX, SIZE_MAX, std::ptrdiff_t{-1}),
            "18446744073709551615|18446744073709551615|-1");
  EXPECT_EQ(Printed("%p|%20p", reinterpret_cast<void*>(0xABCDEF), static_cast<void*>(nullptr)),
            "0000000000ABCDEF|    0000000000000000");
}

TEST(Format, PrintsFloatingNumbers) {
  EXPECT_EQ(Printed("%f|%.0f|%#.0f|%8.3f|%-8.2f|%08.2f|%+.1f|% .1f", 1.5, 2.5, 3.5, -1.0005, 1.25,
                    -1.25, 0.25, 0.75),
            "1.500000|2|4.|  -1.000|1.25    |-0001.25|+0.2| 0.8");
  EXPECT_EQ(Printed("%.2f|%.3f|%f", -0.001, -0.0, 1e-320), "-0.00|-0.000|0.000000");
  EXPECT_EQ(Printed("%e|%.0e|%#.0E|%.2e|%E", 12345.678, 1.5, 1.5, 1e100, 1e-300),
            "1.234568e+04|2e+00|2.E+00|1.00e+100|1.000000E-300");
  EXPECT_EQ(Printed("%g|%g|%g|%G|%#g|%.3g|%.0g|%#.3g|%#.2g", 0.0001, 0.00001, 1e6, 1e-7, 1.5,
                    1234.5, 0.5, 0.00001, 1234.5),
            "0.0001|1e-05|1e+06|1E-07|1.50000|1.23e+03|0.5|1.00e-05|1.2e+03");
  EXPECT_EQ(Printed("%#.3g|%#g|%.20g", 9999.5, 0.0, 0.1),
            "1.00e+04|0.00000|0.10000000000000000555");
  EXPECT_EQ(
      Printed("%a|%.1a|%A|%.0a|%#.0a|%.15a|%a|%a", 1.0, -1.9375, 0.5, 1.5, 1.0, 1.0, 5e-324, 0.0),
      "0x1.0000000000000p+0|-0x1.fp+0|0X1.0000000000000P-1|0x2p+0|0x1.p+0|"
      "0x1.000000000000000p+0|0x0.0000000000001p-1022|0x0.0000000000000p+0");
  EXPECT_EQ(Printed("%f|%E|%6g|%-6G|%06f|%+f|%a", kInfinity, -kInfinity, kNan, kNan, -kInfinity,
                    kInfinity, kInfinity),
            "inf|-INF|   nan|NAN   |  -inf|+inf|inf");
  EXPECT_EQ(Printed("%Lf|%.3Le", 1.5L, -2.5L), "1.500000|-2.500e+00");
}

TEST(Format, PrecisionHasNoBound) {
  const auto exact = [](double value, std::chars_format form, int precision) {
    char text[4096];
    return std::string(text, std::to_chars(text, std::end(text), value, form, precision).ptr);
  };
  const double largest = std::numeric_limits<double>::max();
  const double smallest = 5e-324;
  EXPECT_EQ(Printed("%.200f", 1e308), exact(1e308, std::chars_format::fixed, 200));
  EXPECT_EQ(Printed("%.1500f", largest), exact(largest, std::chars_format::fixed, 1500));
  EXPECT_EQ(Printed("%.1500f", smallest), exact(smallest, std::chars_format::fixed, 1500));
  EXPECT_EQ(Printed("%.1500e", smallest), exact(smallest, std::chars_format::scientific, 1500));
  EXPECT_EQ(Printed("%.1500g", smallest), exact(smallest, std::chars_format::general, 1500));
  char buffer[64];
  EXPECT_EQ(kelp_sprintf_s(buffer, 64, "%#.2147483647g", 0.0001), -1) << "2147483650 decimals";
  EXPECT_EQ(Printed("%#.1500g", 0.5), std::string("0.5") + std::string(1499, '0'));
  EXPECT_EQ(Printed("%.1500a", 1.0), std::string("0x1.") + std::string(1500, '0') + "p+0");
  EXPECT_EQ(Printed("%2000.1000d", -1), std::string(999, ' ') + "-" + std::string(999, '0') + "1");
}

TEST(Format, RefusesTemplatesThatItCantRead) {
  int count = 0;
  for (const char* format :
       {"x%", "%n", "%y", "%5", "%.", "%ll", "%1$d", "%99999999999d", "%\xC3\xA9"}) {
    EXPECT_EQ(Printed(format, &count), "failed") << format;
  }
  EXPECT_EQ(count, 0);
  EXPECT_EQ(Printed("%%%d.%df", 8, 3), "%8.3f") << "a template that makes a template";
}

TEST(Format, TextsTakeTheWidthOfTheFamily) {
  char narrow[64];
  WChar wide[64];
  const char* an = "an";
  const WChar* aw = KTEXT("aw");
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%s %hs %S %ls %ws %lS %hS", an, an, aw, aw, aw, aw, an),
            20);
  EXPECT_STREQ(narrow, "an an aw aw aw aw an");
  EXPECT_EQ(
      kelp_snwprintf(wide, 64, KTEXT("%s %ls %ws %S %hs %hS %lS"), aw, aw, aw, an, an, an, aw), 20);
  EXPECT_EQ(WString(wide), KTEXT("aw aw aw an an an aw"));
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%c%hc%C%lc|%3c|%-3c|", 'a', 'b', KTEXT('c'), KTEXT('d'),
                           'e', 'f'),
            13);
  EXPECT_STREQ(narrow, "abcd|  e|f  |");
  EXPECT_EQ(kelp_snwprintf(wide, 64, KTEXT("%c%lc%C%hc%c"), KTEXT('a'), KTEXT('b'), 'c', 'd', 0),
            5);
  EXPECT_EQ(WString(wide), KTEXT("abcd"));

  EXPECT_EQ(kelp_snwprintf(wide, 64, KTEXT("%5ls|%-5hs|%.1ls|%.1hs|%05ls"), aw, an, aw, an, aw),
            21);
  EXPECT_EQ(WString(wide), KTEXT("   aw|an   |a|a|000aw"));
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%s|%.3ls", static_cast<char*>(nullptr),
                           static_cast<WChar*>(nullptr)),
            10);
  EXPECT_STREQ(narrow, "(null)|(nu");
  const char unterminated[2] = {'x', 'y'};
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%.2s", unterminated), 2);
}

TEST(Format, TextsPassBetweenTheWidthsByTheProcessLocale) {
  char narrow[64];
  WChar wide[64];
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%3ls", KTEXT("\x00E0")), 3) << "one to one in the C locale";
  EXPECT_STREQ(narrow, "  \xE0");
  EXPECT_EQ(kelp_snwprintf(wide, 64, KTEXT("%hs"), "\xE0"), 1);
  EXPECT_EQ(wide[0], 0xE0);
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%ls", KTEXT("\x20AC")), -1);
  EXPECT_STREQ(narrow, "");

  {
    LocaleScope german(LC_ALL, kGermanLocale);
    ASSERT_TRUE(german.Ok());
    EXPECT_GT(kelp_sprintf_s(narrow, 64, "%ls", KTEXT("\x20AC\x00E0")), 1);
    EXPECT_EQ(kelp_snwprintf(wide, 64, KTEXT("%hs"), narrow), 2);
    EXPECT_EQ(WString(wide), KTEXT("\x20AC\x00E0"));
  }
  LocaleScope utf8(LC_ALL, "C.UTF-8");
  if (!utf8.Ok()) GTEST_SKIP() << "no UTF-8 locale";
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%6ls|", KTEXT("\x20AC\xD83D\xDE00")), 8);
  EXPECT_STREQ(narrow, "\xE2\x82\xAC\xF0\x9F\x98\x80|");
  EXPECT_EQ(kelp_sprintf_s(narrow, 64, "%.4ls|", KTEXT("\x20AC\x00E0")), 4) << "no half characters";
  EXPECT_EQ(kelp_snwprintf(wide, 64, KTEXT("%4hs|%.2hs"), narrow, "\xF0\x9F\x98\x80z"), 7);
  EXPECT_EQ(WString(wide), KTEXT("  \x20AC||\xD83D\xDE00"));
  EXPECT_EQ(kelp_snwprintf(wide, 64, KTEXT("%hs"), "\x80"), -1);
}

TEST(Format, BuffersHoldTheWholeTextOrNone) {
  char narrow[4] = "???";
  EXPECT_EQ(kelp_sprintf_s(narrow, 4, "%d", 123), 3);
  EXPECT_STREQ(narrow, "123");
  EXPECT_EQ(kelp_sprintf_s(narrow, 4, "%9d", 1), -1);
  EXPECT_EQ(kelp_sprintf_s(narrow, 4, "%d", 1234), -1);
  EXPECT_STREQ(narrow, "");
  WChar wide[4] = {'?', '?', '?', '?'};
  EXPECT_EQ(kelp_swprintf_s(wide, 3, KTEXT("%3d"), 1), -1);
  EXPECT_EQ(wide[0], 0);
  EXPECT_EQ(wide[3], '?');
  EXPECT_EQ(kelp_snwprintf(wide, 0, KTEXT("")), -1);
  EXPECT_EQ(kelp_snwprintf(nullptr, 4, KTEXT("")), -1);
  EXPECT_EQ(kelp_swprintf(wide, KTEXT("%ls"), KTEXT("abc")), 3);
  EXPECT_EQ(kelp_swprintf(wide, KTEXT("a%")), -1);
  EXPECT_EQ(wide[0], 0);
}

TEST(Format, KeepsToThePointUnderEveryLocale) {
  LocaleScope german(LC_ALL, kGermanLocale);
  ASSERT_TRUE(german.Ok());
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
  EXPECT_EQ(Printed("%.3f %g %e %.30f %d", 1234.5, 0.25, 0.5, 0.5, 1000000),
            "1234.500 0.25 5.000000e-01 0.500000000000000000000000000000 1000000");
  EXPECT_EQ(kelp_wtof(KTEXT("1,5")), 1);
  EXPECT_EQ(kelp_atof("1.5"), 1.5);
}

TEST(CLocale, IsAtHandWhileTheLibraryIsLoaded) {
  LocaleScope german(LC_ALL, kGermanLocale);
  ASSERT_TRUE(german.Ok());
  ASSERT_NE(kelp_get_c_locale(), nullptr);
  EXPECT_EQ(_atof_l("1.5", kelp_get_c_locale()), 1.5);
}

std::string Fixed(double value, int decimals) {
  char text[512];
  return std::string(
      text, std::to_chars(text, std::end(text), value, std::chars_format::fixed, decimals).ptr);
}

// Coordinates, ties, neighbours of ties and doubles of all kinds, against the standard library's
// own conversion.
TEST(Format, FixedTextIsCorrectlyRounded) {
  std::mt19937_64 random(20240601);
  char text[512];
  const auto check = [&](double value) {
    const int decimals = static_cast<int>(random() % 20);
    ASSERT_GT(kelp_sprintf_s(text, std::size(text), "%.*f", decimals, value), 0);
    ASSERT_EQ(text, Fixed(value, decimals)) << "decimals " << decimals;
  };
  std::uniform_real_distribution<double> coordinate(-6e6, 6e6);
  for (int i = 0; i < 1000000; ++i) check(coordinate(random));
  for (int i = 0; i < 500000; ++i) {
    // A multiple of a small power of two is a tie for some number of decimals.
    const double tie =
        std::ldexp(static_cast<double>(random() % 100000), -static_cast<int>(random() % 20));
    check(tie);
    check(std::nextafter(tie, kInfinity));
    check(std::nextafter(tie, -kInfinity));
  }
  for (int i = 0; i < 300000; ++i) {
    const double value = std::bit_cast<double>(random());
    if (std::isfinite(value)) check(value);
  }
  for (int exponent = -1074; exponent <= 1023; ++exponent) {
    const double power = std::ldexp(1, exponent);
    check(power);
    check(-std::nextafter(power, 0));
  }
  for (double power = 1; power < 1e20; power *= 10) {
    check(power);
    check(std::nextafter(power, 0));
  }
}

// Random flags, widths and precisions against the C runtime, where it prints alike everywhere.
TEST(Format, AgreesWithTheRuntime) {
  std::mt19937_64 random(7);
  char expected[2048];
  for (int i = 0; i < 200000; ++i) {
    std::string format = "%";
    for (const char flag : {'-', '+', ' ', '0', '#'}) {
      if (random() % 3 == 0) format += flag;
    }
    if (random() % 2 == 0) format += std::to_string(1 + random() % 30);
    if (random() % 2 == 0) {
      format += '.';
      format += std::to_string(random() % 25);
    }
    if (random() % 2 == 0) {
      // Signs belong to the signed conversions, "#" to the others.
      const bool isSigned = random() % 2 == 0;
      for (const char flag : isSigned ? std::string("#") : std::string("+ ")) {
        std::erase(format, flag);
      }
      format += "ll";
      format += isSigned ? 'd' : "uoxX"[random() % 4];
      if (format.back() == 'u') std::erase(format, '#');
      // Not 0, which one runtime prints wrongly under "%#.0o".
      const auto value = static_cast<long long>(random() >> random() % 64 | 1);
      std::snprintf(expected, std::size(expected), format.c_str(), value);
      ASSERT_EQ(Printed(format.c_str(), value), expected) << format;
    } else {
      format += "feEgG"[random() % 5];
      double value = std::bit_cast<double>(random());
      if (!std::isfinite(value) || random() % 2 == 0)
        value = static_cast<double>(random() % 100000) / 64;
      std::snprintf(expected, std::size(expected), format.c_str(), value);
      ASSERT_EQ(Printed(format.c_str(), value), expected) << format;
    }
  }
}

TEST(Parse, ReadsTheNumberThatTextBeginsWith) {
  const struct {
    const char* text;
    double value;
  } kRows[] = {
      {"", 0},
      {"x", 0},
      {"-", 0},
      {".", 0},
      {"-.e5", 0},
      {"e5", 0},
      {"+-1", 0},
      {" \t\n\v\f\r-12.5e1x", -125},
      {"+.5", 0.5},
      {"5.", 5},
      {"5.e2", 500},
      {"1e", 1},
      {"1e+", 1},
      {"1e+x", 1},
      {"1.2.3", 1.2},
      {"1,5", 1},
      {"1d5", 1},
      {"0x10", 0},
      {"inf", 0},
      {"nan", 0},
      {"007", 7},
      {"1E-3", 1e-3},
      {"1e400", kInfinity},
      {"-1e400", -kInfinity},
      {"1e-400", 0},
      {"1e99999999999999999999", kInfinity},
      {"1e-99999999999999999999", 0},
      {"0e99999999999999999999", 0},
      {"1.7976931348623157e308", 1.7976931348623157e308},
      {"1.7976931348623159e308", kInfinity},
      {"4.9e-324", 5e-324},
      {"2e-324", 0},
      {"9007199254740993", 9007199254740992},
      {"9007199254740993e-22", 9007199254740993e-22},
      {"123456789012345678901234567890", 123456789012345678901234567890.0},
      {"1e22", 1e22},
      {"1e23", 1e23},
      {"1.7e200", 1.7e200},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(kelp_atof(row.text), row.value) << row.text;
    EXPECT_EQ(kelp_wtof(WString::ConvertFromUtf8(row.text).c_str()), row.value) << row.text;
  }
  EXPECT_TRUE(std::signbit(kelp_atof("-0")));
  EXPECT_TRUE(std::signbit(kelp_atof("-1e-400")));
  EXPECT_EQ(kelp_wtof(KTEXT("12\xFF13")), 12) << "a full-width digit isn't one";
  EXPECT_EQ(kelp_wtof(nullptr), 0);
}

TEST(Parse, AnyLengthGivesTheNearestDouble) {
  const std::string zeros(2000, '0');
  EXPECT_EQ(kelp_atof((zeros + "1" + zeros + "e-2000").c_str()), 1);
  EXPECT_EQ(kelp_atof((std::string("0.") + zeros + "1e2001").c_str()), 1);
  // Between two doubles the last of all digits decides.
  EXPECT_EQ(kelp_atof((std::string("9007199254740993.") + zeros).c_str()), 9007199254740992.0);
  EXPECT_EQ(kelp_atof((std::string("9007199254740993.") + zeros + "1").c_str()),
            9007199254740994.0);
  EXPECT_EQ(kelp_atof((std::string("9007199254740992.") + std::string(2000, '9')).c_str()),
            9007199254740992.0);
}

TEST(Parse, ReadsBackWhatWasPrinted) {
  std::mt19937_64 random(11);
  char text[512];
  for (int i = 0; i < 300000; ++i) {
    double value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) continue;
    if (i % 2 == 0) value = std::fmod(value, 1e7);
    const int digits = 17 + static_cast<int>(random() % 10);
    ASSERT_GT(kelp_sprintf_s(text, std::size(text), "%.*g", digits, value), 0);
    ASSERT_EQ(kelp_atof(text), value) << text;
    ASSERT_EQ(kelp_wtof(WString::ConvertFromUtf8(text).c_str()), value) << text;
    // Cut anywhere it is a number that from_chars reads.
    char* const cut = text + 1 + random() % 17;
    *cut = 0;
    double expected = 0;
    std::from_chars(text, cut, expected);
    ASSERT_EQ(kelp_atof(text), expected) << text;
  }
}

// A file of its own in text mode, and what was written into it.
class TextFile {
 public:
  TextFile()
      : m_path(std::filesystem::temp_directory_path() /
               ("kelp_format_" + std::to_string(std::random_device()()) + ".txt")),
        m_file(std::fopen(m_path.string().c_str(), "w+")) {}
  ~TextFile() {
    if (m_file != nullptr) std::fclose(m_file);
    std::filesystem::remove(m_path);
  }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  std::FILE* Get() const { return m_file; }
  std::string Content() const {
    std::rewind(m_file);
    std::string content(8192, '\0');
    content.resize(std::fread(content.data(), 1, content.size(), m_file));
    return content;
  }

 private:
  std::filesystem::path m_path;
  std::FILE* m_file;
};

TEST(FormatStream, WritesTextOfAnyLength) {
  const TextFile file;
  ASSERT_NE(file.Get(), nullptr);
  EXPECT_EQ(kelp_fprintf(file.Get(), "%.1000f|%1000s|%c", 0.5, "x", 0), 1002 + 1 + 1000 + 1 + 1);
  EXPECT_EQ(kelp_fwprintf(file.Get(), KTEXT("%c%700ls\x00E0%hs"), 0, KTEXT("y"), "z"), 703);
  const std::string expected = std::string("0.5") + std::string(999, '0') + "|" +
                               std::string(999, ' ') + "x|" + std::string(2, '\0') +
                               std::string(699, ' ') + "y\xE0z";
  EXPECT_EQ(file.Content(), expected);
}

// The members that take an argument list, as a host's own printf-like function calls them.
template <class Call>
int WithList(const Call* call, ...) {
  std::va_list args;
  va_start(args, call);
  const int result = (*call)(args);
  va_end(args);
  return result;
}

TEST(Format, ArgumentListsPrintAsArgumentsDo) {
  char narrow[32];
  WChar wide[32];
  EXPECT_EQ(kelp_sprintf(narrow, "%d|%.1f", 7, 0.5), 5);
  EXPECT_STREQ(narrow, "7|0.5");
  const auto toNarrow = [&](std::va_list args) { return kelp_vsprintf(narrow, "%d-%.1f", args); };
  EXPECT_EQ(WithList(&toNarrow, 7, 0.5), 5);
  EXPECT_STREQ(narrow, "7-0.5");
  const auto toWide = [&](std::va_list args) {
    return kelp_vswprintf(wide, KTEXT("%d+%.1f"), args);
  };
  EXPECT_EQ(WithList(&toWide, 7, 0.5), 5);
  EXPECT_EQ(WString(wide), KTEXT("7+0.5"));
  const auto toFive = [&](std::va_list args) {
    return kelp_vsnwprintf(wide, 5, KTEXT("%d+%.1f"), args);
  };
  EXPECT_EQ(WithList(&toFive, 7, 0.5), -1) << "no room for the terminator";
  EXPECT_EQ(wide[0], 0);
}

TEST(FormatStream, StandardOutputTakesBothWidths) {
  const auto print = [](std::va_list args) { return kelp_vprintf("%d|", args); };
  const auto printToFile = [](std::va_list args) { return kelp_vfprintf(stdout, "%.2f|", args); };
  testing::internal::CaptureStdout();
  const int lengths[] = {kelp_printf("%d|", 1), WithList(&print, 2), WithList(&printToFile, 3.5),
                         kelp_wprintf(KTEXT("%ls"), KTEXT("four"))};
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "1|2|3.50|four");
  const int expected[] = {2, 2, 5, 4};
  EXPECT_TRUE(std::equal(std::begin(lengths), std::end(lengths), expected));
}

TEST(FormatStream, TellsFailures) {
  const TextFile file;
  ASSERT_NE(file.Get(), nullptr);
  EXPECT_EQ(kelp_fprintf(file.Get(), "ab%n"), -1);
  EXPECT_EQ(kelp_fwprintf(file.Get(), KTEXT("c%lsd%d"), KTEXT("\x20AC"), 1), -1)
      << "not in the C locale";
  EXPECT_EQ(kelp_fprintf(nullptr, "x"), -1);
  EXPECT_EQ(file.Content(), "abc?d1") << "what stands before and behind stays";
}

TEST(FormatStream, KeepsSurrogatePairsWhole) {
  LocaleScope utf8(LC_ALL, "C.UTF-8");
  if (!utf8.Ok()) GTEST_SKIP() << "no UTF-8 locale";
  // The pair lies across every place where a piece might end.
  for (int before = 505; before < 515; ++before) {
    const TextFile file;
    EXPECT_EQ(kelp_fwprintf(file.Get(), KTEXT("%*d%ls"), before, 1, KTEXT("\xD83D\xDE00")),
              before + 2);
    EXPECT_EQ(file.Content().substr(static_cast<std::size_t>(before) - 1), "1\xF0\x9F\x98\x80");
  }
}

}  // namespace
