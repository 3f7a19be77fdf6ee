#include "kelp0lang/ValueConverter.h"

#include <climits>
#include <limits>
#include <string>
#include <vector>

#include "kelp0lang/Exception.h"
#include "kelp0lang/SafeFormat.h"
#include "tests/TestText.h"

using kelp::CAValueConverter;
using kelp::CIOState;
using kelp::CWValueConverter;
using kelp::String;
using kelp::WString;
using kelp::detail::kelp_safefmt;

namespace {

// Opens the protected parts for a look.
struct NarrowParts : CAValueConverter {
  using CAValueConverter::ComposeFormatDouble;
  using CAValueConverter::ComposeFormatInt32;
  using CAValueConverter::ComposeFormatInt64;
};

CIOState State(int flags, int precision = 6, int width = 0, char fill = ' ') {
  CIOState state;
  state.SetFlags(static_cast<CIOState::EFmtFlags>(flags));
  state.SetPrecision(precision);
  state.SetWidth(width);
  state.SetFill(fill);
  return state;
}

TEST(IoState, SettersGiveTheOldValueAndKeepToTheSettableBits) {
  CIOState state;
  EXPECT_EQ(state.GetFlags(), 0x2200);
  EXPECT_EQ(state.SetFlags(static_cast<CIOState::EFmtFlags>(0xFFFF)), 0x2200);
  EXPECT_EQ(state.GetFlags(), 0x7FFF);
  state.Clear(static_cast<CIOState::EFmtFlags>(0x7FFF));
  EXPECT_EQ(state.SetBits(CIOState::dec | CIOState::left), 0);
  EXPECT_EQ(state.SetBits(CIOState::hex, CIOState::kBaseGroup), 0x0240);
  EXPECT_EQ(state.SetBits(static_cast<CIOState::EFmtFlags>(0x8000)), 0x0840);
  EXPECT_EQ(state.GetFlags(), 0x0840);
  EXPECT_EQ(state.SetPrecision(3), 6);
  EXPECT_EQ(state.SetWidth(8), 0);
  EXPECT_EQ(state.SetFill('*'), ' ');
  EXPECT_EQ(state.GetPrecision(), 3);
  EXPECT_EQ(state.GetWidth(), 8);
  EXPECT_EQ(state.GetFill(), '*');
}

TEST(ValueConverter, ComposesTemplates) {
  using F = CIOState;
  char buffer[8];
  const auto real = [&](int flags, char letter) {
    CIOState state = State(flags);
    return std::string(NarrowParts::ComposeFormatDouble(state, buffer, letter));
  };
  EXPECT_EQ(real(0x2200, 0), "%.*f");
  EXPECT_EQ(real(F::fixed | F::uppercase | F::showpos | F::showpoint, 'L'), "%+#.*Lf");
  EXPECT_EQ(real(F::scientific | F::uppercase, 0), "%.*E");
  EXPECT_EQ(real(F::scientific | F::fixed, 0), "%.*g");
  EXPECT_EQ(real(F::uppercase, 0), "%.*G");

  const auto whole = [&](int flags, char conversion, bool is64) {
    CIOState state = State(flags);
    return std::string(is64 ? NarrowParts::ComposeFormatInt64(state, buffer, conversion)
                            : NarrowParts::ComposeFormatInt32(state, buffer, conversion));
  };
  EXPECT_EQ(whole(0x2200, 'd', false), "%ld");
  EXPECT_EQ(whole(F::hex | F::showbase | F::uppercase, 'd', true), "%#I64X");
  EXPECT_EQ(whole(F::hex | F::oct, 'u', true), "%I64u");
  EXPECT_EQ(whole(F::oct | F::uppercase | F::showpos, 'u', false), "%+lo");
}

TEST(ValueConverter, PrintsNumbers) {
  using F = CIOState;
  const struct {
    int flags;
    int precision;
    double value;
    const char* text;
  } kReals[] = {
      {0x2200, 6, 1234.5, "1234.500000"},
      {F::fixed, 0, 2.5, "2"},
      {F::fixed, 0, 3.5, "4"},
      {F::fixed, 3, -0.0004, "-0.000"},
      {F::scientific, 0, 1234.5, "1.234500e+03"},
      {F::scientific | F::uppercase, 2, -1e-100, "-1.00E-100"},
      {0, 0, 1234567.0, "1.23457e+06"},
      {0, -1, 0.5, "0.5"},
      {F::showpoint | F::showpos, 4, 2, "+2.000"},
      {F::scientific | F::fixed, 3, 1e10, "1e+10"},
      {F::fixed, 2, 1e22, "10000000000000000000000.00"},
      {F::uppercase, 6, std::numeric_limits<double>::infinity(), "INF"},
  };
  for (const auto& row : kReals) {
    CIOState state = State(row.flags, row.precision);
    EXPECT_EQ(CAValueConverter::ToString(state, row.value), row.text);
    EXPECT_EQ(CWValueConverter::ToString(state, row.value), String(row.text).FromUtf8());
    EXPECT_EQ(CWValueConverter::ToString(state, static_cast<long double>(row.value)),
              String(row.text).FromUtf8());
  }

  const auto text = [](int flags, auto value) {
    CIOState state = State(flags);
    return CAValueConverter::ToString(state, value);
  };
  EXPECT_EQ(text(F::dec, INT_MIN), "-2147483648");
  EXPECT_EQ(text(F::dec | F::showpos, 5), "+5");
  EXPECT_EQ(text(F::hex, -1), "ffffffff") << "an int has 32 bits in every base";
  EXPECT_EQ(text(F::oct | F::showbase, 8u), "010");
  EXPECT_EQ(text(F::dec, UINT_MAX), "4294967295");
  EXPECT_EQ(text(F::dec, LLONG_MIN), "-9223372036854775808");
  EXPECT_EQ(text(F::hex, -1L), String().Insert(0, "ffffffffffffffff", 2 * sizeof(long)));
  EXPECT_EQ(text(F::oct, 8UL), "10");
  EXPECT_EQ(text(F::hex | F::showbase | F::uppercase, std::uint64_t{0xABC}), "0XABC");
  EXPECT_EQ(text(F::hex | F::showpos, reinterpret_cast<const void*>(0x1234ABCD)),
            "000000001234ABCD");
}

TEST(ValueConverter, FillsToTheWidthOnce) {
  using F = CIOState;
  CIOState state = State(F::dec | F::internal, 2, 8, '*');
  EXPECT_EQ(CWValueConverter::ToString(state, -12), KTEXT("-*****12"));
  EXPECT_EQ(state.GetWidth(), 0);
  EXPECT_EQ(state.GetPrecision(), 2);
  EXPECT_EQ(state.GetFill(), '*');
  EXPECT_EQ(state.GetFlags(), F::dec | F::internal);
  EXPECT_EQ(CWValueConverter::ToString(state, -12), KTEXT("-12"));

  const struct {
    int flags;
    int value;
    int width;
    const char* text;
  } kRows[] = {
      {F::hex | F::showbase | F::internal, 255, 8, "0x****ff"},
      {F::hex | F::showbase | F::uppercase | F::internal, 255, 8, "0X****FF"},
      {F::dec | F::internal, 12, 5, "***12"},
      {F::dec | F::internal, 0, 3, "**0"},
      {F::dec | F::right, -12, 6, "***-12"},
      {F::dec | F::left, -12, 6, "-12***"},
      {F::dec, -12, 6, "-12***"},
      {F::dec | F::left | F::right, -12, 6, "-12***"},
      {F::dec | F::right, -12345, 3, "-12345"},
      {F::dec | F::right, 1, -5, "1"},
  };
  for (const auto& row : kRows) {
    CIOState one = State(row.flags, 6, row.width, '*');
    EXPECT_EQ(CAValueConverter::ToString(one, row.value), row.text);
  }

  CIOState logical = State(F::right, 6, 3, '.');
  EXPECT_EQ(CAValueConverter::ToString(logical, true), "..1");
  EXPECT_EQ(CAValueConverter::ToString(logical, false), "0");
  logical = State(F::boolalpha | F::right, 6, 7, '.');
  EXPECT_EQ(CWValueConverter::ToString(logical, false), KTEXT("..false"));
  CIOState texts = State(F::right, 6, 4, '\xE0');
  EXPECT_EQ(CWValueConverter::ToString(texts, KTEXT("abc")).GetChar(0), WChar{0xFFE0});
  EXPECT_EQ(CAValueConverter::ToString(texts, 'x'), "x");
}

TEST(ValueConverter, TextThatOutgrowsTheWorkAreaIsEmpty) {
  CIOState state = State(CIOState::fixed, 1000);
  EXPECT_TRUE(CAValueConverter::ToString(state, 1.0).empty());
  state.SetPrecision(200);
  EXPECT_EQ(CWValueConverter::ToString(state, 1e308).Length(), 309 + 1 + 200);
}

TEST(ValueConverter, WithoutAFormADoubleHasAtLeastOneDigit) {
  for (const auto& [precision, text] : {std::pair(0, "1234.5"), {1, "1e+03"}, {3, "1.23e+03"}}) {
    CIOState state = State(0, precision);
    EXPECT_EQ(CAValueConverter::ToString(state, 1234.5), text) << precision;
  }
}

TEST(ValueOf, IsPlainText) {
  LocaleScope german(LC_ALL, kGermanLocale);
  ASSERT_TRUE(german.Ok());
  EXPECT_EQ(WString::ValueOf(-5), KTEXT("-5"));
  EXPECT_EQ(WString::ValueOf(4000000000u), KTEXT("4000000000"));
  EXPECT_EQ(WString::ValueOf(LONG_MIN).ToUtf8(), std::to_string(LONG_MIN).c_str());
  EXPECT_EQ(String::ValueOf(ULONG_MAX), std::to_string(ULONG_MAX).c_str());
  EXPECT_EQ(String::ValueOf(-1LL << 62), "-4611686018427387904");
  EXPECT_EQ(WString::ValueOf(ULLONG_MAX), KTEXT("18446744073709551615"));
  EXPECT_EQ(WString::ValueOf(1234.5, 2), KTEXT("1234.50"));
  EXPECT_EQ(WString::ValueOf(1234.5, 0), KTEXT("1234"));
  EXPECT_EQ(String::ValueOf(static_cast<const void*>(nullptr)), "0000000000000000");
  EXPECT_EQ(String::ValueOf(-5), "-5");
  EXPECT_EQ(String::ValueOf(4000000000u), "4000000000");
  EXPECT_EQ(String::ValueOf(-5L), "-5");
  EXPECT_EQ(String::ValueOf(ULLONG_MAX), "18446744073709551615");
  EXPECT_EQ(String::ValueOf(-1234.5, 2), "-1234.50");
  EXPECT_EQ(WString::ValueOf(LLONG_MIN), KTEXT("-9223372036854775808"));
  const auto* const place = reinterpret_cast<const void*>(std::uintptr_t{0x1A2B});
  EXPECT_EQ(WString::ValueOf(place), KTEXT("0000000000001A2B"));
  EXPECT_EQ(String::ValueOf(true), "true");
  EXPECT_EQ(WString::ValueOf(false), KTEXT("false"));
  EXPECT_EQ(WString::ValueOf(WChar{0x20AC}), KTEXT("\x20AC"));
  EXPECT_TRUE(String::ValueOf('\0').empty());
}

TEST(TestValue, ThrowsOnWhatNoMeasurementIs) {
  for (const double good :
       {0.0, 1e50, -1e50, 1e-50, -1e-50, 1.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_NO_THROW(kelp::TestValue(good)) << good;
  }
  for (const double bad : {1.1e50, -1.1e50, 1e-51, -1e-51, 1.7e200}) {
    EXPECT_THROW(kelp::TestValue(bad), kelp::CVariableNotInitializedException) << bad;
  }
}

TEST(IntegerText, ReadsWhatTextBeginsWith) {
  EXPECT_EQ(kelp::vc6_atol("  -12x"), -12);
  EXPECT_EQ(kelp::vc6_atol("\t\n+7"), 7);
  EXPECT_EQ(kelp::vc6_atol("x"), 0);
  EXPECT_EQ(kelp::vc6_atol("- 1"), 0);
  EXPECT_EQ(kelp::vc6_atol("4294967297"), 1);
  EXPECT_EQ(kelp::vc6_atoi("2147483648"), INT_MIN);
  EXPECT_EQ(kelp::atoui("4294967295"), UINT_MAX);
}

TEST(SafeFormat, PutsArgumentsInTheirPlaces) {
  const WChar* a = KTEXT("a");
  const WChar* b = KTEXT("b");
  const struct {
    const WChar* format;
    const WChar* text;
  } kRows[] = {
      {KTEXT("{2}-{1}"), KTEXT("b-a")}, {KTEXT("{1}{1}"), KTEXT("aa")},  {KTEXT("{3}"), KTEXT("")},
      {KTEXT("x{0}"), KTEXT("")},       {KTEXT("{-1}"), KTEXT("")},      {KTEXT("{x}"), KTEXT("")},
      {KTEXT("{}"), KTEXT("")},         {KTEXT("a{{b}"), KTEXT("a{b}")}, {KTEXT("x{1"), KTEXT("x")},
      {KTEXT("{1{2}"), KTEXT("{2}")},   {KTEXT("}{ 2x}"), KTEXT("}b")},  {KTEXT(""), KTEXT("")},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(kelp_safefmt(row.format, 2, a, b), row.text) << WString(row.format).ToUtf8().c_str();
    EXPECT_EQ(kelp::FillTemplate(row.format, {a, b}), row.text);
  }
  const std::vector<WString> many(101, KTEXT("{1}"));
  EXPECT_EQ(kelp::FillTemplate(KTEXT("{101}"), many), KTEXT("{1}"));
  EXPECT_TRUE(kelp_safefmt(KTEXT("text"), 101).empty());
  EXPECT_EQ(kelp_safefmt(KTEXT("text"), 0), KTEXT("text"));
}

}  // namespace
