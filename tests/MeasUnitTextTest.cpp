#include "kelp0lang/MeasUnitText.h"

#include <cmath>
#include <random>

#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/MeasUnitLabel.h"
#include "tests/TestText.h"

using kelp::kNotSet;
using kelp::kNotSetThreshold;
using kelp::WString;

namespace {

constexpr double kPi = 3.14159265358979323846;

CMeasUnitSystem& Current() {
  return *CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem();
}

// Runs on settings that a test may change.
class ValueText : public testing::Test {
 protected:
  void TearDown() override {
    Current().CopyFrom(CMeasUnitSystem(), false);
    Current().ResetNotify();
  }
};

TEST(MeasUnitText, LengthsInEveryUnitAndSize) {
  using enum enumDisplayDistUnits;
  using enum enumMeasUnitSize;
  struct {
    enumDisplayDistUnits units;
    enumMeasUnitSize size;
    int decimals;
    bool plain;
    double metres;
    const WChar* text;
  } cases[] = {
      {Metre, Normal, -1, false, 1.2345, KTEXT("1.234")},
      {Metre, Smallest, 0, false, 1.234, KTEXT("1234")},
      {Metre, Large, 3, false, 1234.0, KTEXT("1.234")},
      {Metre, Small, 3, false, 1.0, KTEXT("")},
      {InternationalFoot, Normal, -1, false, 0.3048, KTEXT("1.000")},
      {InternationalFoot, Smallest, 1, false, 0.3048, KTEXT("12.0")},
      {InternationalFootInch, Normal, -1, false, 0.3048, KTEXT("1'0\"0/8")},
      {InternationalFootInch, Normal, -1, true, 0.3048, KTEXT("1.000")},
      {InternationalFootInch, Smallest, -1, false, 0.3048, KTEXT("12\"0/8")},
      {USSurveyFootInch, Normal, -1, false, 1200.0 / 3937.0, KTEXT("1'0\"0/8")},
      {USSurveyChain, Normal, 2, false, 66 * 1200.0 / 3937.0, KTEXT("1.00")},
      {InternationalChain, Smallest, 2, false, 0.3048, KTEXT("0.18")},
      {static_cast<enumDisplayDistUnits>(99), Normal, -1, false, 1.0, KTEXT("")},
      {Metre, Normal, -1, false, kNotSet, KTEXT("")},
  };
  for (const auto& c : cases) {
    CMeasUnitSystem system;
    system.SetDistUnits(c.units);
    EXPECT_EQ(
        system.FromDistToString(c.metres, enumDistType::Distance, c.size, c.decimals, c.plain),
        WString(c.text));
    if (*c.text != 0 && c.size == Normal) {
      EXPECT_NEAR(system.FromStringToDist(c.text, enumDistType::Distance, c.size, c.plain),
                  c.metres, 6e-3);
    }
  }
}

TEST(MeasUnitText, DecimalsAndFractionsComeByType) {
  CMeasUnitSystem system;
  system.SetNumCoordDec(1);
  system.SetNumQuoteDec(4);
  EXPECT_EQ(system.FromDistToString(2.0, enumDistType::Coordinate), WString(KTEXT("2.0")));
  EXPECT_EQ(system.FromDistToString(2.0, enumDistType::Quote), WString(KTEXT("2.0000")));
  EXPECT_EQ(system.FromDistToString(2.0, static_cast<enumDistType>(7)), WString(KTEXT("2")));
  system.SetDistUnits(enumDisplayDistUnits::InternationalFootInch);
  system.SetQuoteInchDecPrec(enumInchDecPrec::ThirtySeconds);
  EXPECT_EQ(system.FromDistToString(0.3048, enumDistType::Quote), WString(KTEXT("1'0\"0/32")));
}

TEST(MeasUnitText, AreasVolumesAndSpeeds) {
  CMeasUnitSystem system;
  system.SetUnitSystem(enumUnitSystem::Imperial, true);
  EXPECT_EQ(system.FromAreaToString(0.09290304), WString(KTEXT("1.00")));
  EXPECT_EQ(system.FromAreaToString(0.09290304, 4), WString(KTEXT("1.0000")));
  system.SetVolumeUnits(enumDisplayVolumeUnits::CubicInternationalYard);
  EXPECT_EQ(system.FromVolumeToString(0.7645548579840002), WString(KTEXT("1.00")));
  EXPECT_NEAR(system.FromStringToVolume(KTEXT("1")), 0.764554857984, 1e-12);
  // A cubic yard as so many for each foot.
  EXPECT_EQ(system.FromVolPerDistToString(0.7645548579840002 * 0.3048), WString(KTEXT("1.00")));
  EXPECT_NEAR(system.FromStringToVolPerDist(KTEXT("1")), 0.764554857984 * 0.3048, 1e-12);

  EXPECT_EQ(system.FromSpeedToString(100.0), WString(KTEXT("62.1")));
  CMeasUnitSystem metric;
  EXPECT_EQ(metric.FromSpeedToString(10.0, enumMeasUnitSize::Large), WString(KTEXT("36.0")));
  EXPECT_DOUBLE_EQ(metric.FromStringToSpeed(KTEXT("36"), enumMeasUnitSize::Large), 10.0);
  EXPECT_EQ(metric.FromSpeedToString(10.0, enumMeasUnitSize::Small), WString());
}

TEST(MeasUnitText, AnglesFollowUnitStartAndDirection) {
  CMeasUnitSystem system;
  EXPECT_EQ(system.FromAngleToString(450.0, true), WString(KTEXT("50.0000")));
  EXPECT_EQ(system.FromAngleToString(350.0, false), WString(KTEXT("-50.0000")));
  // Geometric north is an azimuth of nought.
  EXPECT_EQ(system.FromGeomAngleToString(kPi / 2, true), WString(KTEXT("0.0000")));
  EXPECT_NEAR(system.FromStringToGeomAngle(KTEXT("0"), true), kPi / 2, 1e-12);
  EXPECT_EQ(system.FromGeomAngleToString(kPi / 2, false), WString(KTEXT("-100.0000")));
  EXPECT_EQ(system.FromLenGeomAngleToString(kPi), WString(KTEXT("200.0000")));
  EXPECT_EQ(system.FromAngleToString(1.0, true, enumMeasUnitSize::Small),
            WString(KTEXT("100.0000")));

  system.SetHorizStartAngle(enumHorizStartAngle::East);
  system.SetAngleDir(enumAngleDir::CounterClockwise);
  EXPECT_EQ(system.FromAngleToString(0.0, true), WString(KTEXT("100.0000")));
  EXPECT_NEAR(system.FromStringToAngle(KTEXT("100"), true), 0.0, 1e-12);
  EXPECT_EQ(system.FromAngleToString(100.0, false), WString(KTEXT("-100.0000")));
  EXPECT_EQ(system.FromLenAngleToString(100.0), WString(KTEXT("100.0000")));

  system.SetTSAngleUnits(enumDisplayAngleUnits::DMSBlanks);
  system.SetHorizStartAngle(enumHorizStartAngle::North);
  system.SetAngleDir(enumAngleDir::Clockwise);
  system.SetNumTSAngleDec(1);
  EXPECT_EQ(system.FromTSAngleToString(50.0), WString(KTEXT("45 00 00.0\"")));
  EXPECT_NEAR(system.FromStringToTSAngle(KTEXT("45 00 00.0")), 50.0, 1e-12);
}

TEST(MeasUnitText, LatitudesAndLongitudesBearTheirLetter) {
  CMeasUnitSystem system;
  system.SetNumLatLonAngleDec(1);
  EXPECT_EQ(system.FromLatAngleToString(-45.5 * kPi / 180), WString(KTEXT("45\x00B0"
                                                                          "30'00.0\"S")));
  EXPECT_EQ(system.FromLonAngleToString(-9.25 * kPi / 180), WString(KTEXT("9\x00B0"
                                                                          "15'00.0\"W")));
  EXPECT_NEAR(system.FromStringToLonAngle(KTEXT("9\x00B0"
                                                "15'00\"W")),
              -9.25 * kPi / 180, 1e-12);
  EXPECT_NEAR(system.FromStringToLatAngle(KTEXT("45\x00B0"
                                                "30'00\"N")),
              45.5 * kPi / 180, 1e-12);
}

TEST(MeasUnitText, EmptyTextIsNotSet) {
  const CMeasUnitSystem system;
  for (int kind = 0; kind <= 102; ++kind) {
    EXPECT_EQ(system.FromStringToValue(WString(), static_cast<enumMeasUnitValue>(kind)), kNotSet);
    EXPECT_TRUE(system.FromValueToString(9e199, static_cast<enumMeasUnitValue>(kind)).empty());
  }
  EXPECT_EQ(system.FromStringToValue(KTEXT("1"), static_cast<enumMeasUnitValue>(50)), kNotSet);
}

// No unit, not even the stored one, lets a number through that counts as none.
TEST(MeasUnitText, NumbersBeyondTheThresholdAreNotSet) {
  const CMeasUnitSystem system;
  for (int kind = 0; kind <= 18; ++kind) {
    if (kind == 11 || kind == 12) continue;  // degrees, minutes and seconds have 32 bits
    EXPECT_EQ(system.FromStringToValue(KTEXT("1e200"), static_cast<enumMeasUnitValue>(kind)),
              kNotSet)
        << kind;
  }
}

TEST(MeasUnitText, ValuesOfEveryKind) {
  const CMeasUnitSystem system;
  struct {
    int kind;
    double value;
    const WChar* text;
  } cases[] = {
      {0, 1.5, KTEXT("1.500")},   {1, 1.5, KTEXT("1.500")},     {2, 1.5, KTEXT("1.50")},
      {3, 1.5, KTEXT("1.50")},    {4, 1.5, KTEXT("1.50")},      {5, 1.5, KTEXT("1.5")},
      {6, 1.5, KTEXT("1.500")},   {7, 1.5, KTEXT("1.5000")},    {8, 1.5, KTEXT("1.5000")},
      {9, 1.5, KTEXT("1.5000")},  {10, 1.5, KTEXT("1.5000")},   {15, kPi, KTEXT("200.0000")},
      {16, 1.5, KTEXT("1.500")},  {18, 1.5, KTEXT("1.500")},    {19, 1.5, KTEXT("1.500")},
      {21, 1.5, KTEXT("1.500")},  {22, 1.5, KTEXT("1.500000")}, {101, 1.6, KTEXT("2")},
      {102, 1.5, KTEXT("1.500")}, {23, 1.5, KTEXT("")},         {-1, 1.5, KTEXT("")},
  };
  for (const auto& c : cases) {
    const auto kind = static_cast<enumMeasUnitValue>(c.kind);
    EXPECT_EQ(system.FromValueToString(c.value, kind), WString(c.text)) << c.kind;
    if (*c.text != 0 && c.kind != 101) {
      EXPECT_NEAR(system.FromStringToValue(c.text, kind), c.value, 1e-6) << c.kind;
    }
  }
  // A value kept in millimetres, shown in metres.
  EXPECT_EQ(system.FromValueToString(1500.0, enumMeasUnitValue::Dist, 1, enumMeasUnitSize::Normal,
                                     enumMeasUnitSize::Smallest),
            WString(KTEXT("1.5")));
  EXPECT_DOUBLE_EQ(system.FromStringToValue(KTEXT("1.5"), enumMeasUnitValue::Quote,
                                            enumMeasUnitSize::Normal, enumMeasUnitSize::Smallest),
                   1500.0);
}

// In feet and inches, degrees that count from east and against the clock, and decimals of their
// own.
TEST(MeasUnitText, ValuesOfEveryKindInOtherUnits) {
  CMeasUnitSystem system;
  system.SetUnitSystem(enumUnitSystem::Imperial, true);
  system.SetDistUnits(enumDisplayDistUnits::InternationalFootInch);
  system.SetTSDistUnits(enumDisplayDistUnits::InternationalFootInch);
  system.SetAreaUnits(enumDisplayAreaUnits::SquareInternationalFootInch);
  system.SetVolumeUnits(enumDisplayVolumeUnits::CubicInternationalFootInch);
  system.SetAngleUnits(enumDisplayAngleUnits::Degree);
  system.SetTSAngleUnits(enumDisplayAngleUnits::DMSBlanks);
  system.SetLatLonAngleUnits(enumDisplayAngleUnits::DMSPacked);
  system.SetHorizStartAngle(enumHorizStartAngle::East);
  system.SetAngleDir(enumAngleDir::CounterClockwise);
  system.SetNumAngleDec(1);
  system.SetNumTSAngleDec(0);
  system.SetNumLatLonAngleDec(0);
  const double foot = 0.3048;
  struct {
    int kind;
    double value;
    const WChar* text;
  } cases[] = {
      {0, 5.5 * foot, KTEXT("5'6\"0/8")},
      {1, 5.5 * foot, KTEXT("5'6\"0/8")},
      {2, 5.5 * 0.09290304, KTEXT("5'6\"0/4")},
      {3, 5.5 * foot * foot * foot, KTEXT("5'6\"0/4")},
      {4, 5.5 * foot * foot * foot * foot, KTEXT("5'6\"0/4")},
      {5, 10, KTEXT("6.2")},
      {6, -5.5 * foot, KTEXT("-5'6\"0/8")},
      {7, 300, KTEXT("180 00 00\"")},
      {8, 300, KTEXT("180.0")},
      {9, 300, KTEXT("90.0")},
      {10, 300, KTEXT("270.0")},
      {13, kPi, KTEXT("180.0")},
      {14, -kPi / 2, KTEXT("-90.0")},
      {15, 1.5 * kPi, KTEXT("270.0")},
      {16, 5.5 * foot, KTEXT("5'6\"0/8")},
      {17, 5.5 * foot, KTEXT("5'6\"0/8")},
      {18, 5.5 * foot, KTEXT("5'6\"0/8")},
  };
  for (const auto& c : cases) {
    const auto kind = static_cast<enumMeasUnitValue>(c.kind);
    EXPECT_EQ(system.FromValueToString(c.value, kind), WString(c.text)) << c.kind;
    const double back = c.kind == 9 ? -100 : c.value;
    const double near = c.kind == 5 ? 0.1 : 1e-9;
    EXPECT_NEAR(system.FromStringToValue(c.text, kind), back, near) << c.kind;
  }
  constexpr auto kSmallest = enumMeasUnitSize::Smallest;
  constexpr auto kDist = enumMeasUnitValue::Dist;
  EXPECT_EQ(system.FromValueToString(5.5 * foot, kDist, -1, kSmallest), WString(KTEXT("66\"0/8")));
  EXPECT_NEAR(system.FromStringToValue(KTEXT("66\"4/8"), kDist, kSmallest), 66.5 / 12 * foot, 1e-9);
  EXPECT_EQ(system.FromValueToString(5.5 * foot, kDist, 1, enumMeasUnitSize::Normal,
                                     enumMeasUnitSize::Normal, true),
            WString(KTEXT("5.5")));
  EXPECT_NEAR(system.FromStringToValue(KTEXT("5.5"), kDist, enumMeasUnitSize::Normal,
                                       enumMeasUnitSize::Normal, true),
              5.5 * foot, 1e-9);
}

TEST(MeasUnitText, CoordinatesTakeTheOrderOfTheMode) {
  CMeasUnitSystem system;
  double c1 = 0, c2 = 0, east = 0, north = 0;
  bool eastFirst = true;
  WString s1, s2;
  system.SetCoordDisplayMode(enumCoordDisplayMode::NorthEast);
  system.EastNorthToCoords(1, 2, c1, c2, &eastFirst);
  EXPECT_EQ(c1, 2);
  EXPECT_EQ(c2, 1);
  EXPECT_FALSE(eastFirst);
  system.FromCoordsToStrings(1, 2, s1, s2);
  EXPECT_EQ(s1, WString(KTEXT("2.000")));
  system.FromStringsToCoords(s1, s2, east, north);
  EXPECT_EQ(east, 1);
  EXPECT_EQ(north, 2);
  system.FromEastToString(1, s1, &eastFirst);
  EXPECT_FALSE(eastFirst);
  system.FromNorthToString(2, s1, &eastFirst);
  EXPECT_TRUE(eastFirst);
  system.CoordsToEastNorth(2, 1, east, north, &eastFirst);
  EXPECT_EQ(east, 1);
  EXPECT_FALSE(eastFirst);
  system.FromString1ToCoord(KTEXT("7"), c1, &eastFirst);
  EXPECT_FALSE(eastFirst);
  system.FromString2ToCoord(KTEXT("7"), c1, &eastFirst);
  EXPECT_EQ(c1, 7);
  EXPECT_TRUE(eastFirst);

  system.SetCoordDisplayMode(static_cast<enumCoordDisplayMode>(7));
  c1 = c2 = -5;
  system.EastNorthToCoords(1, 2, c1, c2, &eastFirst);
  EXPECT_EQ(c1, -5);
  EXPECT_TRUE(eastFirst);
}

TEST(MeasUnitText, NumbersPassBothWays) {
  std::mt19937 random(8);
  std::uniform_real_distribution<double> values(-1000, 1000);
  CMeasUnitSystem system;
  for (int round = 0; round < 500; ++round) {
    system.SetDistUnits(static_cast<enumDisplayDistUnits>(random() % 7));
    system.SetAreaUnits(static_cast<enumDisplayAreaUnits>(random() % 5));
    system.SetVolumeUnits(static_cast<enumDisplayVolumeUnits>(random() % 7));
    system.SetSpeedUnits(static_cast<enumSpeedUnits>(random() % 2));
    system.SetAngleUnits(static_cast<enumDisplayAngleUnits>(random() % 7));
    system.SetHorizStartAngle(static_cast<enumHorizStartAngle>(random() % 2));
    system.SetAngleDir(static_cast<enumAngleDir>(random() % 2));
    const double v = values(random);
    ASSERT_NEAR(system.ConvertDistFromCurr(system.ConvertDistToCurr(v)), v, 1e-9);
    ASSERT_NEAR(system.ConvertAreaFromCurr(system.ConvertAreaToCurr(v)), v, 1e-9);
    ASSERT_NEAR(system.ConvertVolumeFromCurr(system.ConvertVolumeToCurr(v)), v, 1e-9);
    ASSERT_NEAR(system.ConvertSpeedFromCurr(system.ConvertSpeedToCurr(v)), v, 1e-9);
    const double turn = std::fmod(v, 190.0);
    ASSERT_NEAR(system.ConvertRotAngleFromCurr(system.ConvertRotAngleToCurr(turn)), turn, 1e-9);
    const double circle = std::abs(std::fmod(v, 399.0)) + 0.5;
    ASSERT_NEAR(system.ConvertPosAngleFromCurr(system.ConvertPosAngleToCurr(circle)), circle, 1e-9);
    ASSERT_NEAR(system.ConvertTSAngleFromCurr(system.ConvertTSAngleToCurr(circle)), circle, 1e-9);
    ASSERT_NEAR(system.ConvertLenAngleFromCurr(system.ConvertLenAngleToCurr(circle)), circle, 1e-9);
    const double radians = circle * kPi / 200;
    ASSERT_NEAR(system.ConvertPosGeomAngleFromCurr(system.ConvertPosGeomAngleToCurr(radians)),
                radians, 1e-9);
    ASSERT_NEAR(system.ConvertLenGeomAngleFromCurr(system.ConvertLenGeomAngleToCurr(radians)),
                radians, 1e-9);
    const double half = turn * kPi / 200;
    ASSERT_NEAR(system.ConvertRotGeomAngleFromCurr(system.ConvertRotGeomAngleToCurr(half)), half,
                1e-9);
    ASSERT_NEAR(system.ConvertLatLonAngleFromCurr(system.ConvertLatLonAngleToCurr(half)), half,
                1e-9);
  }
}

TEST_F(ValueText, FreeFunctionsReadTheCurrentSettings) {
  Current().SetUnitSystem(enumUnitSystem::Imperial, true);
  Current().SetAngleUnits(enumDisplayAngleUnits::Degree);
  EXPECT_EQ(DistToString(0.3048), WString(KTEXT("1.000")));
  EXPECT_DOUBLE_EQ(StringToDist(KTEXT("1")), 0.3048);
  EXPECT_EQ(TSDistToString(0.3048), WString(KTEXT("1.000")));
  EXPECT_DOUBLE_EQ(StringToTSDist(KTEXT("1")), 0.3048);
  EXPECT_EQ(AreaToString(0.09290304), WString(KTEXT("1.00")));
  EXPECT_DOUBLE_EQ(StringToArea(KTEXT("1")), 0.09290304);
  EXPECT_EQ(VolumeToString(0.028316846592), WString(KTEXT("1.00")));
  EXPECT_DOUBLE_EQ(StringToVolume(KTEXT("1")), 0.028316846592000004);
  EXPECT_EQ(VolPerDistToString(1.0), Current().FromVolPerDistToString(1.0));
  EXPECT_EQ(StringToVolPerDist(KTEXT("1")), Current().FromStringToVolPerDist(KTEXT("1")));
  EXPECT_EQ(SpeedToString(100.0), WString(KTEXT("62.1")));
  EXPECT_DOUBLE_EQ(StringToSpeed(KTEXT("62.1371")), 100.0);
  EXPECT_EQ(PosAngleToString(-50.0), WString(KTEXT("315.0000")));
  EXPECT_EQ(RotAngleToString(-50.0), WString(KTEXT("-45.0000")));
  EXPECT_EQ(StringToPosAngle(KTEXT("-45")), 350.0);
  EXPECT_EQ(StringToRotAngle(KTEXT("-45")), -50.0);
  EXPECT_EQ(PosGeomAngleToString(0.0), WString(KTEXT("90.0000")));
  EXPECT_EQ(RotGeomAngleToString(kPi / 4), WString(KTEXT("-45.0000")));
  EXPECT_NEAR(StringToPosGeomAngle(KTEXT("90")), 0.0, 1e-12);
  EXPECT_NEAR(StringToRotGeomAngle(KTEXT("-45")), kPi / 4, 1e-12);
  EXPECT_EQ(LenAngleToString(50.0), WString(KTEXT("45.0000")));
  EXPECT_EQ(StringToLenAngle(KTEXT("45")), 50.0);
  EXPECT_EQ(LenGeomAngleToString(kPi / 4), WString(KTEXT("45.0000")));
  EXPECT_NEAR(StringToLenGeomAngle(KTEXT("45")), kPi / 4, 1e-12);
  EXPECT_EQ(TSAngleToString(50.0), WString(KTEXT("50.0000")));
  EXPECT_EQ(StringToTSAngle(KTEXT("50")), 50.0);
  EXPECT_EQ(LatAngleToString(kPi / 4), WString(KTEXT("45\x00B0"
                                                     "00'00.00000\"N")));
  EXPECT_EQ(LonAngleToString(kPi / 4), WString(KTEXT("45\x00B0"
                                                     "00'00.00000\"E")));
  EXPECT_NEAR(StringToLatAngle(KTEXT("45S")), -kPi / 4, 1e-12);
  EXPECT_NEAR(StringToLonAngle(KTEXT("45E")), kPi / 4, 1e-12);
  EXPECT_EQ(ValueToString(0.3048, enumMeasUnitValue::Dist, 1), WString(KTEXT("1.0")));
  EXPECT_DOUBLE_EQ(StringToValue(KTEXT("1"), enumMeasUnitValue::Dist), 0.3048);
  EXPECT_EQ(ScaleToString(0.99975), WString(KTEXT("0.99975000")));

  WString s1, s2;
  bool first = false;
  double east = 0, north = 0;
  EastToString(0.3048, s1, &first);
  EXPECT_EQ(s1, WString(KTEXT("1.000")));
  EXPECT_TRUE(first);
  NorthToString(0.6096, s2, &first);
  EXPECT_EQ(s2, WString(KTEXT("2.000")));
  EXPECT_FALSE(first);
  CoordsToStrings(0.3048, 0.6096, s1, s2);
  EXPECT_EQ(s1, WString(KTEXT("1.000")));
  StringsToCoords(s1, s2, east, north);
  EXPECT_DOUBLE_EQ(north, 0.6096);
  String1ToCoord(s2, east, &first);
  EXPECT_DOUBLE_EQ(east, 0.6096);
  EXPECT_TRUE(first);
  String2ToCoord(s1, east, &first);
  EXPECT_FALSE(first);
}

TEST_F(ValueText, NarrowColumnsLoseDecimals) {
  const auto narrow = [](double v, int maxChars) {
    return DistToStringMaxChar(v, enumDistType::Distance, enumMeasUnitSize::Normal, 0, false,
                               maxChars);
  };
  EXPECT_EQ(narrow(1234.5678, 6), WString(KTEXT("1234.6")));
  EXPECT_EQ(narrow(1234.5678, -1), WString(KTEXT("1234.568")));
  EXPECT_EQ(narrow(1234.5678, 4), WString(KTEXT("1235")));
  EXPECT_EQ(narrow(123456789.0, 4), WString(KTEXT(">999")));
  EXPECT_EQ(narrow(123456789.0, 5), WString(KTEXT(">9999")));
  EXPECT_EQ(narrow(123456789.0, 6), WString(KTEXT(">99999")));
  EXPECT_EQ(narrow(123456789.0, 3), WString(KTEXT(">999999")));
  EXPECT_EQ(narrow(1, 0), WString(KTEXT(">999999")));
  EXPECT_EQ(narrow(kNotSet, 6), WString());
}

TEST_F(ValueText, LabelsCarryTheUnit) {
  constexpr auto kNormal = enumMeasUnitSize::Normal;
  EXPECT_EQ(GetDistLabel(KTEXT("H"), kNormal, true), WString(KTEXT("H [m]")));
  EXPECT_EQ(GetDistLabel(WString(), kNormal, true), WString(KTEXT("[m]")));
  EXPECT_EQ(GetDistLabel(KTEXT("H"), kNormal, false), WString(KTEXT("H m")));
  EXPECT_EQ(GetAreaLabel(WString(), enumMeasUnitSize::Large, false), WString(KTEXT("km\x00B2")));
  EXPECT_EQ(GetVolPerDistLabel(WString(), kNormal), WString(KTEXT("[m\x00B3]*[m]")));
  EXPECT_EQ(GetAngleLabel(WString(), enumMeasUnitSize::Smallest, false), WString(KTEXT("cc")));
  EXPECT_EQ(GetAngleLabel(WString(), enumMeasUnitSize::Small, false), WString(KTEXT("c")));
  EXPECT_EQ(GetTSAngleLabel(KTEXT("Hz"), kNormal), WString(KTEXT("Hz [g]")));
  EXPECT_EQ(GetLatLonLabel(KTEXT("A"), kNormal), WString(KTEXT("A ")))
      << "degrees, minutes and seconds carry their own signs";
  EXPECT_EQ(GetSlopeLabel(KTEXT("i"), kNormal, true), WString(KTEXT("i [%]")));
  EXPECT_EQ(GetSpeedLabel(WString(), enumMeasUnitSize::Large), WString(KTEXT("[kmh]")));
  EXPECT_EQ(GetDistLabel(WString(), static_cast<enumMeasUnitSize>(9), true), WString());

  Current().SetUnitSystem(enumUnitSystem::Imperial, true);
  EXPECT_EQ(GetDistLabel(WString(), enumMeasUnitSize::Smallest, false), WString(KTEXT("in")));
  EXPECT_EQ(GetTSDistLabel(WString(), kNormal), WString(KTEXT("[ft]")));
  EXPECT_EQ(GetSpeedLabel(WString(), kNormal), WString(KTEXT("[ft/s]")));
  EXPECT_EQ(GetVolumeLabel(KTEXT("V"), kNormal, true), WString(KTEXT("V [ft\x00B3]")));
  Current().SetVolumeUnits(enumDisplayVolumeUnits::CubicUSSurveyYard);
  EXPECT_EQ(GetVolumeLabel(WString(), kNormal, true), WString(KTEXT("[yd\x00B3]")));
  const std::pair<enumDisplayAngleUnits, const WChar*> angles[] = {
      {enumDisplayAngleUnits::Degree, KTEXT("[\x00B0]")},
      {enumDisplayAngleUnits::Radian, KTEXT("[rad]")},
      {enumDisplayAngleUnits::DMSPacked, KTEXT("")},
  };
  for (const auto& [units, label] : angles) {
    EXPECT_EQ(DoGetAngleLabel(WString(), kNormal, units, true), WString(label));
  }
  EXPECT_EQ(DoGetAngleLabel(WString(), enumMeasUnitSize::Large, enumDisplayAngleUnits::Gon, true),
            WString());
  EXPECT_EQ(DoGetDistLabel(WString(), kNormal, enumDisplayDistUnits::USSurveyChain, true),
            WString(KTEXT("[ch]")));
  EXPECT_EQ(DoGetAngleLabel(WString(), kNormal, enumDisplayAngleUnits::Mil, true),
            WString(KTEXT("[mil]")));

  EXPECT_EQ(GetCoord1Label(WString(), enumCoordLabelMode::Word), WString(KTEXT("East")));
  EXPECT_EQ(GetCoord2Label(KTEXT("P"), enumCoordLabelMode::Letter), WString(KTEXT("P N")));
  Current().SetCoordDisplayMode(enumCoordDisplayMode::NorthEast);
  EXPECT_EQ(GetCoord1Label(WString(), enumCoordLabelMode::Letter), WString(KTEXT("N")));
  EXPECT_EQ(GetCoord2Label(WString(), static_cast<enumCoordLabelMode>(1 << 28)), WString());
}

TEST(MeasUnitLabel, EveryKindOfValue) {
  const CMeasUnitSystem system;
  struct {
    int kind;
    const WChar* label;
  } cases[] = {
      {0, KTEXT("T [m]")},
      {1, KTEXT("T [m]")},
      {2, KTEXT("T [m\x00B2]")},
      {3, KTEXT("T [m\x00B3]")},
      {4, KTEXT("T [m\x00B3*m]")},
      {5, KTEXT("T [m/s]")},
      {6, KTEXT("T [m]")},
      {7, KTEXT("T [g]")},
      {8, KTEXT("T [g]")},
      {11, KTEXT("T ")},
      {15, KTEXT("T [g]")},
      {18, KTEXT("T [m]")},
      {19, KTEXT("\x00B0"
                 "C")},
      {20, KTEXT("mmHg")},
      {21, KTEXT("T [%]")},
      {22, KTEXT("")},
      {101, KTEXT("")},
      {-1, KTEXT("")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetUnitMeasureLabel(system, KTEXT("T"), static_cast<enumMeasUnitValue>(c.kind),
                                  enumMeasUnitSize::Normal, true),
              WString(c.label))
        << c.kind;
  }
}

}  // namespace
