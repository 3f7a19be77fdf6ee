#include "kelp0lang/AngleForm.h"

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "kelp0lang/Translate.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::kNotSet;
using kelp::kNotSetThreshold;
using kelp::WString;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr auto kSymbols = enumDisplayAngleUnits::DMSSymbols;
constexpr auto kBlanks = enumDisplayAngleUnits::DMSBlanks;
constexpr auto kPacked = enumDisplayAngleUnits::DMSPacked;
constexpr auto kNone = enumLatLonType::None;
constexpr auto kLatitude = enumLatLonType::Latitude;
constexpr auto kLongitude = enumLatLonType::Longitude;
constexpr enumDisplayAngleUnits kForms[] = {kSymbols, kBlanks, kPacked};
constexpr enumLatLonType kTypes[] = {kNone, kLatitude, kLongitude};

std::string Narrow(const WString& text) {
  return text.ToUtf8().c_str();
}

struct Sesg {
  int d;
  int m;
  double s;
  bool operator==(const Sesg&) const = default;
};
void PrintTo(const Sesg& angle, std::ostream* out) {
  *out << angle.d << ' ' << angle.m << ' ' << angle.s;
}

Sesg FromSesd(double value) {
  Sesg angle{-1, -1, -1};
  AngSesgFromSesd(value, angle.d, angle.m, angle.s);
  return angle;
}

Sesg FromNmea(double value) {
  Sesg angle{-1, -1, -1};
  AngSesgFromNmea(value, angle.d, angle.m, angle.s);
  return angle;
}

TEST(AngleScalars, PassThroughTheirFactors) {
  EXPECT_EQ(AngCentFromRadi(1.5), 1.5 * 200.0 / kPi);
  EXPECT_EQ(AngCentFromSesd(90.0), 100.0);
  EXPECT_EQ(AngRadiFromCent(200.0), kPi);
  EXPECT_EQ(AngRadiFromSesd(180.0), kPi);
  EXPECT_EQ(AngSesdFromCent(100.0), 90.0);
  EXPECT_EQ(AngSesdFromRadi(kPi), 180.0);
  EXPECT_EQ(AngSesdFromSesg(-10, -30, -36.0), -10.51);
  EXPECT_EQ(AngSesdFromSesg(0, -30, 0.0), 0.5) << "no degrees, no sign";
  EXPECT_EQ(AngCentFromSesg(45, 0, 0.0), 50.0);
  EXPECT_EQ(AngRadiFromSesg(-180, 0, 0.0), -kPi);

  EXPECT_EQ(AngCentFromRadi(kNotSet), kNotSet);
  EXPECT_EQ(AngCentFromRadi(8e199), kNotSet) << "the result crosses the threshold";
  EXPECT_EQ(AngSesdFromSesg(1, 2, kNotSet), kNotSet);
  EXPECT_EQ(AngRadiFromSesg(1, 2, kNotSet), kNotSet);
  for (const auto function : {AngRadiFromNmea, AngGraPriDcPFromRadi, AngRadiFromGraPriDcP,
                              AngSesgVertoFromRadi, AngRadiFromSesgVerto}) {
    EXPECT_EQ(function(kNotSet), kNotSet);
  }
}

TEST(AngleSesg, SplitsACountOfMillionths) {
  EXPECT_EQ(FromSesd(10.51), (Sesg{10, 30, 36.0}));
  EXPECT_EQ(FromSesd(-10.51), (Sesg{-10, 30, 36.0}));
  EXPECT_EQ(FromSesd(-0.5), (Sesg{0, 30, 0.0}));
  EXPECT_EQ(FromSesd(10.9999999999), (Sesg{11, 0, 0.0}));
  EXPECT_EQ(FromSesd(kNotSet), (Sesg{0, 0, 0.0}));
  EXPECT_EQ(FromSesd(NAN), (Sesg{0, 0, 0.0}));
  EXPECT_EQ(FromSesd(8e199).d, std::numeric_limits<int>::max());
  EXPECT_EQ(FromSesd(-INFINITY).d, std::numeric_limits<int>::min());

  Sesg angle{};
  AngSesgFromCent(50.0, angle.d, angle.m, angle.s);
  EXPECT_EQ(angle, (Sesg{45, 0, 0.0}));
  AngSesgFromRadi(AngRadiFromSesg(45, 30, 15.25), angle.d, angle.m, angle.s);
  EXPECT_EQ(angle, (Sesg{45, 30, 15.25}));
  AngSesgFromRadi(kNotSet, angle.d, angle.m, angle.s);
  EXPECT_EQ(angle, (Sesg{0, 0, 0.0}));
}

TEST(AnglePacked, CutsDigitsInDecimal) {
  EXPECT_EQ(AngRadiFromSesgVerto(45.30), AngRadiFromSesg(45, 30, 0.0));
  EXPECT_EQ(AngRadiFromSesgVerto(-45.3015), AngRadiFromSesg(-45, 30, 15.0));
  EXPECT_EQ(AngRadiFromSesgVerto(0.0001), AngRadiFromSesg(0, 0, 1.0));
  EXPECT_EQ(AngRadiFromSesgVerto(-0.30), -AngRadiFromSesg(0, 30, 0.0));
  EXPECT_EQ(AngRadiFromSesgVerto(0.1 + 0.2), AngRadiFromSesg(0, 30, 0.0)) << "last-digit noise";
  EXPECT_EQ(AngRadiFromSesgVerto(std::nextafter(45.30, 0)), AngRadiFromSesg(45, 30, 0.0));
  EXPECT_EQ(AngRadiFromGraPriDcP(45.181), AngRadiFromSesd(45 + 18.1 / 60));
  EXPECT_EQ(AngRadiFromGraPriDcP(-0.30), AngRadiFromSesd(-0.5));
  EXPECT_EQ(FromNmea(4530.1), (Sesg{45, 30, 6.0}));
  EXPECT_EQ(FromNmea(-4530.7), (Sesg{-45, -30, -42.0}));
  EXPECT_EQ(FromNmea(30.5), (Sesg{0, 30, 30.0}));
  EXPECT_EQ(FromNmea(kNotSet), (Sesg{0, 0, 0.0}));
  EXPECT_EQ(FromNmea(1e30).d, std::numeric_limits<int>::max());
  EXPECT_EQ(AngRadiFromNmea(-4530.5), AngRadiFromSesg(-45, 30, 30.0));
  EXPECT_EQ(AngRadiFromSesgVerto(1e15), AngRadiFromSesd(1e15));
  EXPECT_TRUE(std::isnan(AngRadiFromSesgVerto(NAN)));
}

// Every decimal of up to 15 digits means its digits, and the way back gives the same decimal. The
// text of the number, read as the nearest double, is the reference.
TEST(AnglePacked, AgreesWithTheDigitsOfEveryDecimal) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 50000; ++i) {
    const int d = static_cast<int>(random() % (i % 2 == 0 ? 10 : 361));
    const int m = static_cast<int>(random() % 60);
    const int s = i % 3 == 0 ? 0 : static_cast<int>(random() % 60);
    const long long fraction = i % 5 == 0 ? 0 : static_cast<long long>(random() % 1000000);
    char text[64];

    std::snprintf(text, sizeof text, "%d.%02d%02d%06lld", d, m, s, fraction);
    const double packed = std::stod(text);
    const double seconds = s + static_cast<double>(fraction) / 1e6;
    const double radians = AngRadiFromSesgVerto(packed);
    ASSERT_NEAR(radians, AngRadiFromSesg(d, m, seconds), 1e-15 * (1 + d)) << text;
    ASSERT_EQ(AngSesgVertoFromRadi(radians), packed) << text;

    std::snprintf(text, sizeof text, "%d.%02d%06lld", d, m, fraction);
    const double minutes = std::stod(text);
    const double expected = d + (m + static_cast<double>(fraction) / 1e6) / 60;
    ASSERT_NEAR(AngRadiFromGraPriDcP(minutes), AngRadiFromSesd(expected), 1e-15 * (1 + d)) << text;
    ASSERT_EQ(AngGraPriDcPFromRadi(AngRadiFromGraPriDcP(minutes)), minutes) << text;

    std::snprintf(text, sizeof text, "%d%02d.%06lld", d, m, fraction);
    const Sesg nmea = FromNmea(std::stod(text));
    ASSERT_EQ(nmea.d, d) << text;
    ASSERT_EQ(nmea.m, m) << text;
    ASSERT_DOUBLE_EQ(nmea.s, static_cast<double>(fraction) * 60 / 1e6) << text;
  }
}

// Whole degrees and minutes stay whole on the way through radians, which are never exact.
TEST(AnglePacked, KeepsWholeMinutesThroughRadians) {
  for (int d = 0; d <= 360; ++d) {
    for (int m = 0; m < 60; ++m) {
      const double radians = AngRadiFromSesg(d, m, 0.0);
      const double packed = static_cast<double>(d * 100 + m) / 100;
      ASSERT_EQ(AngSesgVertoFromRadi(radians), packed);
      ASSERT_EQ(AngGraPriDcPFromRadi(radians), packed);
    }
  }
  EXPECT_EQ(AngSesgVertoFromRadi(AngRadiFromSesd(-10.5)), -10.3);
  EXPECT_EQ(AngGraPriDcPFromRadi(AngRadiFromSesd(-10.5)), -10.3);
  EXPECT_EQ(AngGraPriDcPFromRadi(AngRadiFromSesd(-0.5)), 0.3) << "no degrees, no sign";
}

TEST(AngleTexts, FixedForms) {
  const double radians = AngRadiFromSesg(45, 3, 5.25);
  EXPECT_EQ(Narrow(StrAngSesgFromRadi(radians, 2)), "  45\u00B0 3' 5.25");
  EXPECT_EQ(Narrow(StrAngSesgFromRadi(-radians, 0)), " -45\u00B0 3'  5");
  EXPECT_EQ(Narrow(StrAngSesgFromSesd(10.5, 1)), "  10\u00B030' 0.0");
  EXPECT_EQ(Narrow(StrAngSesgFromCent(50.0, 2)), "45\u00B0 0' 0.00\"");
  EXPECT_EQ(Narrow(StrAngSesgFromCent(-50.0, 2)), "-45\u00B0 0' 0.00\"");
  EXPECT_EQ(Narrow(StrAngSesgFromCent(-0.5, 2)), "-0\u00B027' 0.00\"");
  EXPECT_EQ(Narrow(StrAngSesgFromCent(0.5, 2)), "0\u00B027' 0.00\"");
  EXPECT_EQ(Narrow(StrAngSesgNoSmbFromRadi(radians, 3)), "  45  3  5.250");
  EXPECT_EQ(Narrow(StrLatSesgFromRadi(-radians, 2)), "45\u00B0  3'  5.25\" S");
  EXPECT_EQ(Narrow(StrLatSesgFromRadi(radians, 2)), "45\u00B0  3'  5.25\" N");
  EXPECT_EQ(Narrow(StrLonSesgFromRadi(-radians, 0)), "45\u00B0  3'   5\" O");
  EXPECT_EQ(Narrow(StrLonSesgFromRadi(radians, 0)), "45\u00B0  3'   5\" E");
  EXPECT_EQ(Narrow(StrGradiFromRadi(AngRadiFromSesd(45))), "+45");
  EXPECT_EQ(Narrow(StrGradiFromRadi(AngRadiFromSesd(-0.5))), "-0");

  for (const auto function : {StrAngSesgFromRadi, StrAngSesgFromSesd, StrAngSesgFromCent,
                              StrAngSesgNoSmbFromRadi, StrLatSesgFromRadi, StrLonSesgFromRadi}) {
    EXPECT_TRUE(function(kNotSet, 2).empty());
    EXPECT_EQ(function(1.0, -3), function(1.0, 0));
    EXPECT_EQ(function(1.0, 1000), function(1.0, 230));
    EXPECT_GT(function(-8e199 * kPi / 200, 1000).Length(), 230) << "the longest text has room";
  }
  EXPECT_TRUE(StrGradiFromRadi(kNotSet).empty());
}

TEST(AngleTexts, SecondsCarryWhereTheyRoundToSixty) {
  EXPECT_EQ(Narrow(StrAngSesgFromSesd(11 - 1e-7, 2)), "  11\u00B0 0' 0.00");
  EXPECT_EQ(Narrow(StrAngSesgFromSesd(-11 + 1e-7, 2)), " -11\u00B0 0' 0.00");
  EXPECT_EQ(Narrow(StrAngSesgFromSesd(10.5 - 1e-7, 0)), "  10\u00B030'  0");
  EXPECT_EQ(Narrow(StrAngSesgFromSesd(10.5 - 1e-7, 4)), "  10\u00B029'59.9996");
  EXPECT_EQ(Narrow(StrAngSesgFromSesd(6.0 / 3600, 0)), "   0\u00B0 0'  6");
  EXPECT_EQ(Narrow(StrAngSesgFromCent(-1 / 0.9 + 1e-7, 1)), "-1\u00B0 0' 0.0\"");
}

TEST(AngleDMS, RoundsOnceBeforeTheSplit) {
  struct {
    double deg;
    int dec;
    int degrees;
    int minutes;
    double seconds;
    bool negative;
  } cases[] = {
      {10.9999999, 0, 11, 0, 0.0, false},
      {10.5, 0, 10, 30, 0.0, false},
      {-10.51, 1, 10, 30, 36.0, true},
      {-1.5 / 3600, 0, 0, 0, 1.0, true},  // a half rounds upwards
      {1.5 / 3600, -4, 0, 0, 2.0, false},
      {-1e-9, 3, 0, 0, 0.0, true},
      {-0.0, 3, 0, 0, 0.0, false},
      {kNotSet, 2, 0, 0, 0.0, false},
      {kNotSetThreshold, 2, 0, 0, 0.0, false},
      {NAN, 2, 0, 0, 0.0, false},
      {10.51, 300, 10, 30, 36.0, false},
      {123456.5, 12, 123456, 30, 0.0, false},
  };
  for (const auto& c : cases) {
    const TDMS angle = DegToTDMS(c.deg, c.dec);
    EXPECT_EQ(angle.degrees, c.degrees) << c.deg;
    EXPECT_EQ(angle.minutes, c.minutes) << c.deg;
    EXPECT_DOUBLE_EQ(angle.seconds, c.seconds) << c.deg;
    EXPECT_EQ(angle.negative, c.negative) << c.deg;
  }
  for (const double huge : {8e199, -8e199, -HUGE_VAL, 1e12, -1e17}) {
    const TDMS angle = DegToTDMS(huge, 8);
    EXPECT_EQ(angle.degrees, std::numeric_limits<std::int32_t>::max());
    EXPECT_TRUE(angle.minutes >= 0 && angle.minutes < 60);
    EXPECT_TRUE(angle.seconds >= 0 && angle.seconds < 60);
  }
  EXPECT_EQ(TDMSToDeg({10, 30, -36.0, true}), -10.51);
  EXPECT_EQ(TDMSToDeg({10, 30, kNotSet, true}), kNotSet);
}

TEST(AngleDMS, WritesTheThreeForms) {
  struct {
    double deg;
    enumDisplayAngleUnits form;
    enumLatLonType type;
    int dec;
    const char* text;
  } cases[] = {
      {-10.5, kSymbols, kNone, 0, "-10\u00B030'00\""},
      {-10.5, kSymbols, kLatitude, 0, "10\u00B030'00\"S"},
      {10.5, kSymbols, kLatitude, -1, "10\u00B030'00\"N"},
      {-10.5, kBlanks, kLongitude, 0, "10 30 00\"W"},
      {10.5, kBlanks, kNone, 1, "10 30 00.0\""},
      {10.5, kPacked, kNone, 0, "10.3000\""},
      {-10.5, kPacked, kLongitude, 2, "10.300000\"W"},
      {-10.50425, kPacked, kNone, 2, "-10.301530\""},
      {10.50425, kSymbols, kLongitude, 3, "10\u00B030'15.300\"E"},
      {1.05 / 3600, kPacked, kNone, 3, "0.0001050\""},
      {29.999999999999996 / 3600, kPacked, kNone, 2, "0.003000\""},
      {59.9999 / 3600, kPacked, kNone, 2, "0.010000\""},
      {11 - 1e-9, kSymbols, kNone, 4, "11\u00B000'00.0000\""},
      {-1e-9, kSymbols, kNone, 0, "-0\u00B000'00\""},
      {0.75 / 3600, kPacked, kNone, 10, "0.00002147483647\""},
      {0.75 / 3600, kSymbols, kNone, 14, "0\u00B000'00.75000000000000\""},
      {kNotSet, kSymbols, kNone, 0, ""},
      {1.0, enumDisplayAngleUnits::Gon, kNone, 0, ""},
      {1.0, enumDisplayAngleUnits::Radian, kNone, 0, ""},
      {NAN, kSymbols, kNone, 0, "0\u00B000'00\""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Narrow(DegToDMS(c.deg, c.form, c.type, c.dec)), c.text);
  }
  for (const auto form : kForms) {
    EXPECT_EQ(DegToDMS(-8e199, form, kLatitude, 100000), DegToDMS(-8e199, form, kLatitude, 230));
  }
}

TEST(AngleDMS, ReadsDigitRuns) {
  struct {
    const WChar* text;
    enumDisplayAngleUnits form;
    enumLatLonType type;
    int degrees;
    int minutes;
    double seconds;
    bool negative;
  } cases[] = {
      {KTEXT(""), kSymbols, kNone, 0, 0, 0.0, false},
      {KTEXT("-"), kSymbols, kNone, 0, 0, 0.0, false},
      {KTEXT("-45 30 15 5S"), kBlanks, kLatitude, 45, 30, 15.5, false},
      {KTEXT("45 30 15s"), kBlanks, kLatitude, 45, 30, 15.0, true},
      {KTEXT("45 30 15N"), kBlanks, kLatitude, 45, 30, 15.0, false},
      {KTEXT("45 30 15W"), kBlanks, kLatitude, 45, 30, 15.0, false},
      {KTEXT("45 30 15W"), kBlanks, kLongitude, 45, 30, 15.0, true},
      {KTEXT("45 30 15S"), kBlanks, kNone, 45, 30, 15.0, false},
      {KTEXT("10\x00B0") KTEXT("75'"), kSymbols, kNone, 10, 75, 0.0, false},
      {KTEXT("-0\x00B0") KTEXT("30'12,125\""), kSymbols, kNone, 0, 30, 12.125, true},
      {KTEXT(" -7"), kSymbols, kNone, 7, 0, 0.0, false},
      {KTEXT("1 2 3 04 5"), kSymbols, kNone, 1, 2, 3.04, false},
      {KTEXT("99999999999 2"), kSymbols, kNone, 2147483647, 2, 0.0, false},
      {KTEXT("45.3"), kPacked, kNone, 45, 3, 0.0, false},
      {KTEXT("45.30"), kPacked, kNone, 45, 30, 0.0, false},
      {KTEXT("45.301"), kPacked, kNone, 45, 30, 1.0, false},
      {KTEXT("45.3015"), kPacked, kNone, 45, 30, 15.0, false},
      {KTEXT("-45,30155"), kPacked, kNone, 45, 30, 15.5, true},
      {KTEXT("45.3015123456789"), kPacked, kNone, 45, 30, 15.123456789, false},
      {KTEXT("45"), kPacked, kNone, 45, 0, 0.0, false},
      {KTEXT("45.3015"), enumDisplayAngleUnits::Degree, kNone, 0, 0, 0.0, false},
  };
  for (const auto& c : cases) {
    const TDMS angle = DMSToTDMS(WString(c.text), c.form, c.type);
    EXPECT_EQ(angle.degrees, c.degrees) << Narrow(WString(c.text));
    EXPECT_EQ(angle.minutes, c.minutes) << Narrow(WString(c.text));
    EXPECT_EQ(angle.seconds, c.seconds) << Narrow(WString(c.text));
    EXPECT_EQ(angle.negative, c.negative) << Narrow(WString(c.text));
  }
  EXPECT_EQ(DMSToDeg(WString(KTEXT("10 75")), kSymbols, kNone), 11.25);
  WString many(KTEXT("1.3015"));
  for (int i = 0; i < 400; ++i) many += KTEXT('9');
  EXPECT_DOUBLE_EQ(DMSToTDMS(many, kPacked, kNone).seconds, 16.0);
  EXPECT_TRUE(std::isfinite(DMSToDeg(many, kSymbols, kNone)));
}

// The minutes and seconds of a text of any form, by position.
void ExpectBelowSixty(const std::string& text, enumDisplayAngleUnits form) {
  std::size_t minutes = text.find_first_of(form == kBlanks   ? " "
                                           : form == kPacked ? "."
                                                             : "\u00B0");
  minutes += form == kSymbols ? 2 : 1;
  const std::size_t seconds = minutes + (form == kPacked ? 2 : 3);
  ASSERT_LT(text[minutes], '6') << text;
  ASSERT_LT(text[seconds], '6') << text;
}

// Values at random, and at and round every boundary at which parts carry.
class AngleDMSProperty : public testing::TestWithParam<int> {
 protected:
  double Next() {
    const double unit = 1 / (3600 * std::pow(10.0, GetParam()));
    const double whole = std::floor(m_uniform(m_random) * 360);
    const double minutes = std::floor(m_uniform(m_random) * 60) / 60;
    const double noise = (m_uniform(m_random) - 0.5) * 4e-13;
    const double candidates[] = {m_uniform(m_random) * 360,
                                 whole + noise,
                                 whole + minutes + noise,
                                 whole + minutes - unit / 2 + noise,
                                 whole + minutes + 30.0 / 3600 + noise,
                                 whole + minutes + 30.0 / 3600 - unit + noise};
    const double magnitude = candidates[m_random() % std::size(candidates)];
    return m_random() % 2 == 0 ? magnitude : -magnitude;
  }

  std::mt19937_64 m_random{static_cast<std::uint64_t>(GetParam())};
  std::uniform_real_distribution<double> m_uniform{0, 1};
};

TEST_P(AngleDMSProperty, TextsStayBelowSixtyAndReadBackAsTheyWere) {
  const int dec = GetParam();
  const double unit = 1 / (3600 * std::pow(10.0, dec));
  for (int i = 0; i < 20000; ++i) {
    const double deg = Next();
    const auto form = kForms[m_random() % 3];
    const auto type = kTypes[m_random() % 3];
    const WString text = DegToDMS(deg, form, type, dec);
    ExpectBelowSixty(Narrow(text), form);
    const double back = DMSToDeg(text, form, type);
    ASSERT_NEAR(back, deg, unit * 0.5 + 2e-13) << Narrow(text);
    if (back == 0) continue;  // a rounded zero has no sign to read back
    ASSERT_EQ(DegToDMS(back, form, type, dec), text) << Narrow(text);
    const TDMS parts = DegToTDMS(deg, dec);
    ASSERT_EQ(TDMSToDeg(parts), back) << Narrow(text);
  }
}

TEST_P(AngleDMSProperty, FixedTextsStayBelowSixtyToo) {
  for (int i = 0; i < 5000; ++i) {
    const double deg = Next();
    const std::string text = Narrow(StrAngSesgNoSmbFromRadi(AngRadiFromSesd(deg), GetParam()));
    int minutes = 0;
    double degrees = 0, seconds = 0;
    ASSERT_EQ(std::sscanf(text.c_str(), "%lf %d %lf", &degrees, &minutes, &seconds), 3) << text;
    ASSERT_LT(minutes, 60) << text;
    ASSERT_LT(seconds, 60) << text;
    const double back = std::fabs(degrees) + minutes / 60.0 + seconds / 3600;
    const double unit = 1 / (3600 * std::pow(10.0, std::min(GetParam(), 6)));
    ASSERT_NEAR(back, std::fabs(deg), unit * 0.5 + 2e-10) << text;
  }
}

INSTANTIATE_TEST_SUITE_P(Decimals, AngleDMSProperty, testing::Range(0, 9));

TEST(AngleDMS, FollowsTheDecimalPointOfTheProcess) {
  const LocaleScope german(LC_ALL, kGermanLocale);
  if (!german.Ok()) GTEST_SKIP() << "no German locale here";
  EXPECT_EQ(DegToDMS(10.50425, kSymbols, kNone, 1), WString(KTEXT("10\x00B0") KTEXT("30'15,3\"")));
  EXPECT_EQ(DegToDMS(10.50425, kPacked, kNone, 1), WString(KTEXT("10.30153\"")));
  EXPECT_EQ(DMSToDeg(WString(KTEXT("10 30 15,3")), kBlanks, kNone), 10.50425);
  EXPECT_EQ(StrAngSesgFromSesd(10.5, 1), WString(KTEXT("  10\x00B0") KTEXT("30' 0,0")));
  EXPECT_EQ(StrLatSesgFromRadi(0, 1), WString(KTEXT("0\x00B0  0'  0,0\" N")));
  EXPECT_EQ(StrAngSesgNoSmbFromRadi(0, 1), WString(KTEXT("   0  0  0.0")));
}

TEST(AngleLetters, BelongToTheirType) {
  EXPECT_TRUE(IsLatLonSignNegative(KTEXT('S'), kLatitude));
  EXPECT_TRUE(IsLatLonSignNegative(KTEXT('w'), kLongitude));
  EXPECT_FALSE(IsLatLonSignNegative(KTEXT('W'), kLatitude));
  EXPECT_FALSE(IsLatLonSignNegative(KTEXT('S'), kNone));
  EXPECT_FALSE(IsLatLonSignNegative(KTEXT('S'), enumLatLonType{3}));

  WChar letter = KTEXT('?');
  EXPECT_FALSE(LatLonSignToSign(true, kNone, letter));
  EXPECT_FALSE(LatLonSignToSign(true, enumLatLonType{-1}, letter));
  EXPECT_EQ(letter, KTEXT('?'));
  EXPECT_TRUE(LatLonSignToSign(false, kLatitude, letter));
  EXPECT_EQ(letter, KTEXT('N'));
  EXPECT_TRUE(LatLonSignToSign(false, kLongitude, letter));
  EXPECT_EQ(letter, KTEXT('E'));
}

// The letter that is shown is the first unit of the translation; the one that is read is all of it.
TEST(AngleLetters, AreTranslated) {
  const TempFolder folder;
  constexpr const WChar* kName = KTEXT("letters.po");
  folder.Write(kName,
               "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
               "msgid \"W@@West (1 char)\"\nmsgstr \"O\"\n\n"
               "msgid \"E@@East (1 char)\"\nmsgstr \"Est\"\n\n"
               "msgid \"S@@South (1 char)\"\nmsgstr \"\u042E\"\n");
  ASSERT_TRUE(kelp::LoadTranslateFile(WString(folder.Wide(kName).c_str())));
  const WString west = DegToDMS(-10.5, kSymbols, kLongitude, 0);
  const WString east = DegToDMS(10.5, kSymbols, kLongitude, 0);
  const WString south = DegToDMS(-10.5, kBlanks, kLatitude, 0);
  const double readWest = DMSToDeg(west, kSymbols, kLongitude);
  const double readSouth = DMSToDeg(south, kBlanks, kLatitude);
  const bool isWest = IsLatLonSignNegative(KTEXT('W'), kLongitude);
  kelp::UnloadTranslateFile();

  EXPECT_EQ(Narrow(west), "10\u00B030'00\"O");
  EXPECT_EQ(Narrow(east), "10\u00B030'00\"E");
  EXPECT_EQ(Narrow(south), "10 30 00\"\u042E");
  EXPECT_EQ(readWest, -10.5);
  EXPECT_EQ(readSouth, -10.5);
  EXPECT_FALSE(isWest);
}

}  // namespace
