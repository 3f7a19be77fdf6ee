#include "kelp0lang/LegacyNumber.h"

#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "kelp0lang/LegacyFlags.h"
#include "kelp0lang/MeasUnit.h"
#include "tests/TestText.h"

using kelp::kNotSet;
using kelp::WString;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(LegacyNumber, ComparesWithItsTwoTolerances) {
  EXPECT_TRUE(UgualeA(1.0, 1.0009));
  EXPECT_FALSE(UgualeA(1.0, 1.0011));
  EXPECT_TRUE(UgualeA(1.0009, 1.0));
  EXPECT_FALSE(MinoreDi(1.0, 1.0005));
  EXPECT_TRUE(MinoreDi(1.0, 1.0007));
  EXPECT_FALSE(MinoreDi(-0.0006, 0.0));
  EXPECT_FALSE(MinoreDi(2.0, 1.0));
}

TEST(LegacyNumber, RoundsByDecimals) {
  struct Case {
    double v;
    int dec;
    double rounded, cut;
  };
  constexpr Case kCases[] = {
      {2.345, 6, 2.345, 2.345}, {2.345, -1, 2.345, 2.345},    {-2.5, 0, -2, -3},
      {2.5, 0, 3, 2},           {-2.51, 1, -2.5, -2.6},       {2.25, 1, 2.3, 2.2},
      {-2.25, 1, -2.2, -2.3},   {1.23456, 4, 1.2346, 1.2345}, {1.2345678, 5, 1.23457, 1.23456},
  };
  for (const Case& c : kCases) {
    EXPECT_DOUBLE_EQ(ArrotondatoAtDec(c.v, c.dec), c.rounded) << c.v << ' ' << c.dec;
    EXPECT_DOUBLE_EQ(TroncatoAtDec(c.v, c.dec), c.cut) << c.v << ' ' << c.dec;
  }
  EXPECT_DOUBLE_EQ(ArrotondatoAlVal(7.3, 0.25), 7.25);
  EXPECT_DOUBLE_EQ(ArrotondatoAlVal(-7.375, 0.25), -7.25);
  EXPECT_EQ(ArrotondatoAlVal(kNotSet, 0.25), kNotSet);
  EXPECT_EQ(ArrotondatoAlVal(3.3, kNotSet), 3.3);
  EXPECT_EQ(DoubleRound(-2.5), -2);
  EXPECT_EQ(DoubleTrunk(-2.1), -3);
}

TEST(LegacyNumber, RoundsAndClampsToIntegers) {
  struct Case {
    double v;
    long rounded, cut;
  };
  constexpr Case kCases[] = {
      {2.5, 3, 2},   {-2.5, -3, -2},          {2.4999, 2, 2}, {0.49999999999999994, 0, 0},
      {-0.5, -1, 0}, {32749.5, 32750, 32749},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(IntRound(c.v), c.rounded) << c.v;
    EXPECT_EQ(LongRound(c.v), c.rounded) << c.v;
    EXPECT_EQ(InteroEntro32000(c.v), c.cut) << c.v;
    EXPECT_EQ(LongTrunk(c.v), c.cut) << c.v;
  }
  for (double large : {40000.0, 2.2e9, kNotSet, kInfinity}) {
    EXPECT_EQ(IntRound(large), 32750);
    EXPECT_EQ(InteroEntro32000(-large), -32750);
  }
  for (double large : {2100000000.4, 2.2e9, 1e19, kInfinity}) {
    EXPECT_EQ(LongRound(large), 2100000000);
    EXPECT_EQ(LongTrunk(-large), -2100000000);
  }
  EXPECT_EQ(IntRound(std::nan("")), 0);
  EXPECT_EQ(LongTrunk(std::nan("")), 0);
}

TEST(LegacyNumber, ReadsNumbers) {
  struct Case {
    const WChar* text;
    double value, digitsOnly;
  };
  const Case kCases[] = {
      {KTEXT(""), kNotSet, kNotSet},
      {KTEXT("3,5"), 3.5, 3.5},
      {KTEXT("1,234.5"), 1, 1.234},
      {KTEXT("1,2,3"), 1.2, 1.2},
      {KTEXT("x-1,5 m"), 0, -1.5},
      {KTEXT("m"), 0, kNotSet},
      {KTEXT("12.5 m"), 12.5, 12.5},
      {KTEXT(" \t-7.25e2x"), -725, -7.252},
      {KTEXT("1'234.5"), 1, 1234.5},
      {KTEXT("12-5"), 12, 12},
      {KTEXT("."), 0, 0},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(DoubleDaString(c.text), c.value) << WString(c.text).ToUtf8().c_str();
    EXPECT_EQ(DoubleDaStringSoloNum(c.text), c.digitsOnly) << WString(c.text).ToUtf8().c_str();
  }
  WString longText;
  longText.resize(3000, KTEXT('0'));
  EXPECT_EQ(DoubleDaString(longText + KTEXT("12.5")), 12.5);
  EXPECT_EQ(DoubleDaArChar(""), kNotSet);
  EXPECT_EQ(DoubleDaArChar("2.5,"), 2.5);
}

TEST(LegacyNumber, ReadsByTheLocaleUnlessOnlyACommaStandsThere) {
  const LocaleScope german(LC_ALL, kGermanLocale);
  if (!german.Ok()) GTEST_SKIP() << "no locale with a decimal comma";
  EXPECT_EQ(DoubleDaString(KTEXT("3,5")), 3.5);
  EXPECT_EQ(DoubleDaString(KTEXT("1.234,5")), 1) << "the point ends the number";
  EXPECT_EQ(DoubleDaString(KTEXT("1,25.3")), 1.25);
  EXPECT_EQ(DoubleDaString(KTEXT("12.5")), 12);
  EXPECT_EQ(DoubleDaStringSoloNum(KTEXT("12.5")), 12.5);
  EXPECT_EQ(DoubleDaArChar("12.5"), 12.5);
}

TEST(LegacyNumber, ReadsIntegers) {
  struct Case {
    const WChar* text;
    long value, nullZero, shortValue, longReading, shortReading;
  };
  const Case kCases[] = {
      {KTEXT(""), 2100000000, 0, 32750, 0, 0},
      {KTEXT("12,9"), 12, 12, 12, 12, 12},
      {KTEXT(" -12.9"), -12, -12, -12, -12, -12},
      {KTEXT("1e3"), 1000, 1000, 1000, 1, 1},
      {KTEXT("+40000x"), 40000, 40000, 32750, 40000, 32750},
      {KTEXT("-40000"), -40000, -40000, -32750, -40000, -32750},
      {KTEXT("2147483648"), 2100000000, 2100000000, 32750, INT_MAX, 32750},
      {KTEXT("-99999999999999999999"), -2100000000, -2100000000, -32750, INT_MIN, -32750},
      {KTEXT("4294967297"), 2100000000, 2100000000, 32750, INT_MAX, 32750},
      {KTEXT("x"), 0, 0, 0, 0, 0},
  };
  for (const Case& c : kCases) {
    const WString text(c.text);
    SCOPED_TRACE(text.ToUtf8().c_str());
    EXPECT_EQ(IntDaString(text), c.value);
    EXPECT_EQ(IntDaStringNullZero(text), c.nullZero);
    EXPECT_EQ(ShortDaString32000(text), c.shortValue);
    EXPECT_EQ(LongDaStringNullZero(text), c.longReading);
    EXPECT_EQ(ShortDaStringNullZero(text), c.shortReading);
  }
}

std::string ToText(double v, int width, int dec) {
  return StringDaDouble(v, width, dec).ToUtf8().c_str();
}

TEST(LegacyNumber, PrintsNumbers) {
  EXPECT_EQ(ToText(1.5, 0, 3), "1.500");
  EXPECT_EQ(ToText(1.5, -7, 3), "1.500");
  EXPECT_EQ(ToText(1.5, 7, 3), "  1.500");
  EXPECT_EQ(ToText(-1234.5678, 3, 1), "-1234.6");
  EXPECT_EQ(ToText(2.5, 1, 0), "2") << "an exact half to the even digit";
  EXPECT_EQ(ToText(0.1, 0, 20), "0.10000000000000000555");
  EXPECT_EQ(ToText(1e22, 24, 1), "10000000000000000000000.0");
  EXPECT_EQ(ToText(1.5, 0, -3), "1.500000");
  EXPECT_EQ(ToText(kNotSet, 4, 2), "    ");
  EXPECT_EQ(ToText(kInfinity, 2, 2), "  ");
  EXPECT_EQ(ToText(kNotSet, 0, 2), "");
  EXPECT_EQ(ToText(kNotSet, -4, 2), "");

  EXPECT_EQ(ToText(1, 511, 0).size(), 511u);
  EXPECT_EQ(ToText(1, 512, 0), "");
  EXPECT_EQ(ToText(1, INT_MAX, 0), "");
  EXPECT_EQ(ToText(8e199, 0, 310).size(), 511u);
  EXPECT_EQ(ToText(8e199, 0, 311), "");
  EXPECT_EQ(ToText(-1.5, 0, INT_MAX), "");

  EXPECT_EQ(StringDaInt(INT_MIN), KTEXT("-2147483648"));
}

TEST(LegacyNumber, PadsAndStripsZeros) {
  EXPECT_EQ(StringDaDoubleConZeri(1.5, 6, 2), KTEXT("001.50"));
  EXPECT_EQ(StringDaDoubleConZeri(-1.5, 7, 2), KTEXT("00-1.50"));
  EXPECT_EQ(StringDaDoubleConZeri(kNotSet, 3, 2), KTEXT("000"));

  struct Case {
    double v;
    int width, dec;
    const WChar* text;
  };
  const Case kCases[] = {
      {1.5, 0, 3, KTEXT("1.5")},   {2, 0, 3, KTEXT("2")},
      {100, 0, 2, KTEXT("100")},   {100, 0, 0, KTEXT("100")},
      {0, 0, 4, KTEXT("0")},       {1.25, 7, 3, KTEXT("  1.25")},
      {-0.001, 0, 2, KTEXT("-0")}, {100, 0, -1, KTEXT("100.000000")},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(StringDaDoubleSenzaZeri(c.v, c.width, c.dec), c.text) << c.v;
  }
}

TEST(LegacyNumber, OnlyTheStringFormsFollowTheLocale) {
  const LocaleScope german(LC_ALL, kGermanLocale);
  if (!german.Ok()) GTEST_SKIP() << "no locale with a decimal comma";
  EXPECT_EQ(ToText(-1.5, 8, 2), "   -1,50");
  EXPECT_EQ(ToText(0.1, 0, 20), "0,10000000000000000555");
  EXPECT_EQ(StringDaDoubleConZeri(1.5, 6, 2), KTEXT("001,50"));
  EXPECT_EQ(StringDaDoubleSenzaZeri(1.5, 0, 3), KTEXT("1,5"));
  EXPECT_EQ(StringDaDoubleSenzaZeri(2, 0, 3), KTEXT("2,"));
  char narrow[32];
  EXPECT_EQ(ArCharDaDouble(narrow, 1.5, 0, 2), 4);
  EXPECT_STREQ(narrow, "1.50");
  WChar wide[32];
  EXPECT_EQ(ArCharDaDouble(wide, 1.5, 0, 2), 4);
  EXPECT_EQ(WString(wide), KTEXT("1.50"));
}

TEST(LegacyNumber, PrintsIntoBuffers) {
  struct Case {
    double v;
    int width, dec;
    const char* narrow;
    const char* wide;
  };
  const Case kCases[] = {
      {1.5, 6, 2, "  1.50", "  1.50"},
      {1.5, 0, 0, "2", "2"},
      {1.5, -6, 2, "1.50", "1.50  "},
      {1.5, 0, -1, "1.500000", "1.500000"},
      {kNotSet, 3, 2, "   ", "   "},
      {kNotSet, -3, 2, "", ""},
      {1e21, 0, 1, "1000000000000000000000.0", "1000000000000000000000.0"},
  };
  for (const Case& c : kCases) {
    char narrow[64];
    WChar wide[64];
    EXPECT_EQ(ArCharDaDouble(narrow, c.v, c.width, c.dec), static_cast<int>(strlen(c.narrow)));
    EXPECT_STREQ(narrow, c.narrow);
    EXPECT_EQ(ArCharDaDouble(wide, c.v, c.width, c.dec), static_cast<int>(strlen(c.wide)));
    EXPECT_STREQ(WString(wide).ToUtf8().c_str(), c.wide);
  }
}

TEST(LegacyFlags, EachKeepsItsOwnChoice) {
  struct Flag {
    bool (*get)();
    void (*set)(bool);
  };
  constexpr Flag kFlags[] = {{IsModIta, SetModIta},
                             {IsLanguageIta, SetLanguageIta},
                             {IsLumenCrashRoad, SetLumenCrashRoad},
                             {IsLumenCrashSnow, SetLumenCrashSnow}};
  for (const Flag& set : kFlags) {
    set.set(true);
    for (const Flag& flag : kFlags) EXPECT_EQ(flag.get(), flag.get == set.get);
    set.set(false);
  }
}

}  // namespace
