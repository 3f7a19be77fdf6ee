#include "kelp0lang/MeasUnit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using kelp::kNotSet;
using kelp::kNotSetThreshold;
using kelp::detail::ConvertAngleSize;
using kelp::detail::ConvertDistSize;
using kelp::detail::ConvertSpeedSize;

namespace {

constexpr auto kMetre = enumDistUnits::Metre;
constexpr auto kFoot = enumDistUnits::InternationalFoot;
constexpr auto kSurveyFoot = enumDistUnits::USSurveyFoot;
constexpr auto kSquareMetre = enumAreaUnits::SquareMetre;
constexpr auto kCubicMetre = enumVolumeUnits::CubicMetre;
constexpr auto kDegree = enumAngleUnits::Degree;
constexpr auto kGon = enumAngleUnits::Gon;
constexpr auto kRadian = enumAngleUnits::Radian;
constexpr auto kPosition = eConvertAngleType::Position;
constexpr auto kRotation = eConvertAngleType::Rotation;
constexpr auto kLength = eConvertAngleType::Length;
constexpr auto kNorth = enumHorizStartAngle::North;
constexpr auto kEast = enumHorizStartAngle::East;
constexpr auto kClockwise = enumAngleDir::Clockwise;
constexpr auto kCounter = enumAngleDir::CounterClockwise;
constexpr auto kAsIs = enumNormalizeAngle::None;
constexpr auto kPositive = enumNormalizeAngle::Positive;
constexpr auto kSymmetric = enumNormalizeAngle::Symmetric;
constexpr auto kSmallest = enumMeasUnitSize::Smallest;
constexpr auto kSmall = enumMeasUnitSize::Small;
constexpr auto kNormal = enumMeasUnitSize::Normal;
constexpr auto kLarge = enumMeasUnitSize::Large;

template <class Unit>
constexpr Unit Unknown(int value) {
  return static_cast<Unit>(value);
}

TEST(ConvertUnits, MatchesTheDefinitionsOfTheUnits) {
  const double foot = 0.3048;
  const double surveyFoot = 1200.0 / 3937.0;
  const double dist[] = {1.0, foot, surveyFoot, 66 * foot, 66 * surveyFoot};
  const double area[] = {1.0, foot * foot, surveyFoot * surveyFoot};
  const double cube = foot * foot * foot;
  const double surveyCube = surveyFoot * surveyFoot * surveyFoot;
  const double volume[] = {1.0, cube, surveyCube, 27 * cube, 27 * surveyCube};
  const auto expectNear = [](double value, double expected) {
    EXPECT_NEAR(value, expected, 1e-14 * expected);
  };
  for (int i = 0; i < 5; ++i) {
    for (int j = 0; j < 5; ++j) {
      if (i == j) continue;
      expectNear(ConvertDist(7.0, enumDistUnits{i}, enumDistUnits{j}), 7.0 * dist[i] / dist[j]);
      expectNear(ConvertVolume(7.0, enumVolumeUnits{i}, enumVolumeUnits{j}),
                 7.0 * volume[i] / volume[j]);
      if (i > 2 || j > 2) continue;
      expectNear(ConvertArea(7.0, enumAreaUnits{i}, enumAreaUnits{j}), 7.0 * area[i] / area[j]);
    }
  }
}

// To the last digit, where another order of operations would give another one.
TEST(ConvertUnits, KeepsTheOperationsOfEachDirection) {
  EXPECT_EQ(ConvertDist(1.0, kFoot, kMetre), 0.3048);
  EXPECT_EQ(ConvertDist(1.0, kMetre, kSurveyFoot), 3.2808333333333333);
  EXPECT_EQ(ConvertDist(0.3048 * 3, kMetre, kFoot), 0.3048 * 3 / 0.3048);
  EXPECT_EQ(ConvertVolume(0.1, kCubicMetre, enumVolumeUnits::CubicInternationalFoot),
            0.1 * 3.280839895013123 * 3.280839895013123 * 3.280839895013123);
  EXPECT_EQ(ConvertSpeed(3.0, enumSpeedUnits::Imperial, enumSpeedUnits::Metric), 3.0 / 0.621371);
  EXPECT_EQ(ConvertSpeed(3.0, enumSpeedUnits::Metric, enumSpeedUnits::Imperial), 3.0 * 0.621371);
  EXPECT_EQ(Deg2Rad(180.0), 180.0 * 0.01745329251994);
  EXPECT_NE(Deg2Rad(180.0), 3.141592653589793);
  EXPECT_EQ(Grad2Rad(200.0), 200.0 * 0.015707963267948);
  EXPECT_EQ(Deg2Grad(90.0), 90.0 * 1.1111111111111112);
  EXPECT_EQ(Grad2Deg(100.0), 90.0);
  EXPECT_EQ(Deg2Mils(90.0), 90.0 * 17.77777777777778);
  EXPECT_EQ(Mils2Deg(1600.0), 90.0);
  EXPECT_EQ(Rad2Grad(2.0), 2.0 * 63.66197723675813);
}

TEST(ConvertUnits, PassesNotSetOnAndRefusesUnknownUnits) {
  EXPECT_EQ(ConvertDist(kNotSet, kMetre, kFoot), kNotSet);
  EXPECT_EQ(ConvertDist(9e199, kMetre, kMetre), 9e199);
  EXPECT_EQ(ConvertDist(9e199, kFoot, kMetre), 9e199) << "passed on without arithmetic";
  EXPECT_EQ(ConvertDist(8e199, kMetre, kFoot), kNotSet) << "the result crosses the threshold";
  EXPECT_EQ(ConvertDist(8e199, enumDistUnits::InternationalChain, enumDistUnits::USSurveyChain),
            kNotSet)
      << "the metres cross it";
  EXPECT_EQ(ConvertDist(kNotSetThreshold, kFoot, kMetre), kNotSetThreshold * 0.3048)
      << "the threshold itself counts as a value";
  EXPECT_TRUE(std::isnan(ConvertDist(NAN, kMetre, kFoot)));

  for (const int unknown : {-1, 5, 1000, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(ConvertDist(1.0, Unknown<enumDistUnits>(unknown), kMetre), kNotSet);
    EXPECT_EQ(ConvertDist(1.0, kMetre, Unknown<enumDistUnits>(unknown)), kNotSet);
    EXPECT_EQ(ConvertArea(1.0, Unknown<enumAreaUnits>(unknown), kSquareMetre), kNotSet);
    EXPECT_EQ(ConvertArea(1.0, kSquareMetre, Unknown<enumAreaUnits>(unknown)), kNotSet);
    EXPECT_EQ(ConvertVolume(1.0, kCubicMetre, Unknown<enumVolumeUnits>(unknown)), kNotSet);
    EXPECT_EQ(ConvertSpeed(1.0, enumSpeedUnits::Metric, Unknown<enumSpeedUnits>(unknown)), kNotSet);
    EXPECT_EQ(ConvertAngle(1.0, kLength, Unknown<enumAngleUnits>(unknown), kNorth, kClockwise, kGon,
                           kNorth, kClockwise, kAsIs),
              kNotSet);
    EXPECT_EQ(ConvertAngle(1.0, kLength, kGon, kNorth, kClockwise, Unknown<enumAngleUnits>(unknown),
                           kNorth, kClockwise, kAsIs),
              kNotSet);
  }
  EXPECT_EQ(
      ConvertAngle(-9e199, kRotation, kGon, kNorth, kClockwise, kGon, kNorth, kCounter, kAsIs),
      kNotSet)
      << "the result crosses it upwards";
  EXPECT_EQ(Rad2Deg(9e199), 9e199);
  EXPECT_EQ(Rad2Deg(8e199), kNotSet);
}

TEST(ConvertAngleTest, ChangesStartAndDirectionByType) {
  struct {
    double value;
    eConvertAngleType type;
    enumHorizStartAngle fromStart;
    enumAngleDir fromDir;
    enumHorizStartAngle toStart;
    enumAngleDir toDir;
    enumNormalizeAngle normalize;
    double expected;
  } cases[] = {
      {0, kPosition, kEast, kClockwise, kNorth, kClockwise, kAsIs, -90},
      {0, kPosition, kEast, kClockwise, kNorth, kClockwise, kPositive, 270},
      {0, kPosition, kEast, kClockwise, kNorth, kClockwise, kSymmetric, -90},
      {0, kPosition, kEast, kCounter, kNorth, kClockwise, kAsIs, 90},
      {30, kPosition, kNorth, kClockwise, kEast, kCounter, kAsIs, 60},
      {30, kPosition, kEast, kCounter, kEast, kClockwise, kAsIs, 150},
      {30, Unknown<eConvertAngleType>(9), kNorth, kClockwise, kEast, kCounter, kAsIs, 60},
      {90, kRotation, kNorth, kClockwise, kEast, kCounter, kAsIs, -90},
      {90, kRotation, kNorth, kCounter, kNorth, kCounter, kSymmetric, 90},
      {90, kLength, kNorth, kClockwise, kEast, kCounter, kAsIs, 90},
      {180, kLength, kNorth, kClockwise, kNorth, kClockwise, kSymmetric, -180},
      {-180, kLength, kNorth, kClockwise, kNorth, kClockwise, kSymmetric, -180},
      {-1e-20, kLength, kNorth, kClockwise, kNorth, kClockwise, kPositive, 0},
      {-0.0, kLength, kNorth, kClockwise, kNorth, kClockwise, kAsIs, -0.0},
      {0.0, kRotation, kNorth, kClockwise, kNorth, kCounter, kAsIs, 0.0},
      {-720, kRotation, kNorth, kClockwise, kNorth, kClockwise, kPositive, 0.0},
  };
  for (const auto& c : cases) {
    const double result = ConvertAngle(c.value, c.type, kDegree, c.fromStart, c.fromDir, kDegree,
                                       c.toStart, c.toDir, c.normalize);
    EXPECT_EQ(result, c.expected) << c.value;
    EXPECT_EQ(std::signbit(result), std::signbit(c.expected)) << c.value;
  }
  EXPECT_EQ(ConvertAngle(400, kPosition, kGon, kNorth, kClockwise, kDegree, kNorth, kClockwise,
                         kPositive),
            0);
  EXPECT_EQ(ConvertAngle(3200, kLength, enumAngleUnits::Mil, kNorth, kClockwise, kRadian, kNorth,
                         kClockwise, kAsIs),
            180 * 0.01745329251994);
}

// Turn by turn and all at once come to the same, and neither size nor a value that isn't a number
// keeps the call from returning.
TEST(ConvertAngleTest, NormalizesEveryAngle) {
  const auto normalized = [](double degrees, enumNormalizeAngle normalize) {
    return ConvertAngle(degrees, kLength, kDegree, kNorth, kClockwise, kDegree, kNorth, kClockwise,
                        normalize);
  };
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> angle(-20000, 20000);
  for (int i = 0; i < 20000; ++i) {
    double positive = i % 4 == 0 ? std::round(angle(random) / 90) * 90 : angle(random);
    double symmetric = positive;
    const double degrees = positive;
    while (positive < 0) positive += 360;
    while (positive >= 360) positive -= 360;
    while (symmetric < -180) symmetric += 360;
    while (symmetric >= 180) symmetric -= 360;
    ASSERT_EQ(normalized(degrees, kPositive), positive) << degrees;
    ASSERT_EQ(normalized(degrees, kSymmetric), symmetric) << degrees;
  }
  for (const double huge : {1e18, -1e18, 8e199, -8e199, -1e308}) {
    const double result = normalized(huge, kPositive);
    EXPECT_TRUE(result >= 0 && result < 360) << huge;
  }
  EXPECT_TRUE(std::isnan(normalized(-INFINITY, kPositive)));
  EXPECT_TRUE(std::isnan(normalized(NAN, kSymmetric)));
}

TEST(InchDecPrec, ConvertsBothWays) {
  for (int i = 0; i < 5; ++i) {
    enumInchDecPrec precision{};
    EXPECT_TRUE(ConvertInchDecPrec(ConvertInchDecPrec(enumInchDecPrec{i}), precision));
    EXPECT_EQ(precision, enumInchDecPrec{i});
  }
  EXPECT_EQ(ConvertInchDecPrec(enumInchDecPrec::ThirtySeconds), 32);
  EXPECT_EQ(ConvertInchDecPrec(enumInchDecPrec{7}), 64);
  EXPECT_EQ(ConvertInchDecPrec(enumInchDecPrec{-1}), 64);
  auto precision = enumInchDecPrec::Eighths;
  for (const int denominator : {5, 0, -4, 128}) {
    EXPECT_FALSE(ConvertInchDecPrec(denominator, precision));
  }
  EXPECT_EQ(precision, enumInchDecPrec::Eighths);
}

TEST(DisplayUnits, TellPlainNumbersFromForms) {
  for (int i = -1; i <= 7; ++i) {
    EXPECT_EQ(IsDMSAngleUnits(enumDisplayAngleUnits{i}), i >= 2 && i <= 4) << i;
    EXPECT_EQ(IsDoubleAngleUnits(enumDisplayAngleUnits{i}), i != 2 && i != 3) << i;
    EXPECT_EQ(IsDoubleDistUnits(enumDisplayDistUnits{i}), i != 3 && i != 4) << i;
    EXPECT_EQ(IsDoubleAreaUnits(enumDisplayAreaUnits{i}), i != 3 && i != 4) << i;
    EXPECT_EQ(IsDoubleVolumeUnits(enumDisplayVolumeUnits{i}), i != 3 && i != 4) << i;
  }
}

TEST(UnitSizes, ConvertBetweenTheSizesThatAFamilyHas) {
  EXPECT_EQ(ConvertDistSize(1.234, kMetre, kNormal, kSmallest), 1.234 * 1000);
  EXPECT_EQ(ConvertDistSize(1.0, kMetre, kLarge, kNormal), 1.0 / 0.001);
  EXPECT_EQ(ConvertDistSize(2.0, kMetre, kLarge, kSmallest), 2.0 / 0.001 * 1000);
  EXPECT_EQ(ConvertDistSize(5.0, kSurveyFoot, kNormal, kSmallest), 60.0);
  EXPECT_EQ(ConvertDistSize(1.0, kFoot, kLarge, kNormal), 1.0 / 0.0001893939393939394);
  EXPECT_EQ(ConvertAngleSize(1.5, kDegree, kNormal, kSmallest), 5400.0);
  EXPECT_EQ(ConvertAngleSize(90.0, kDegree, kSmall, kNormal), 1.5);
  EXPECT_EQ(ConvertAngleSize(1.5, kGon, kNormal, kSmallest), 15000.0);
  EXPECT_EQ(ConvertAngleSize(1.5, kGon, kNormal, kSmall), 150.0);
  EXPECT_EQ(ConvertSpeedSize(10.0, enumSpeedUnits::Metric, kNormal, kLarge), 10 * 0.001 * 3600);
  EXPECT_EQ(ConvertSpeedSize(10.0, enumSpeedUnits::Imperial, kNormal, kLarge),
            10 * 0.0001893939393939394 * 3600);
  EXPECT_EQ(ConvertSpeedSize(60.0, enumSpeedUnits::Imperial, kLarge, kNormal),
            60 / 0.0001893939393939394 / 3600);

  EXPECT_EQ(ConvertAngleSize(1.5, kRadian, kNormal, kLarge), 1.5) << "radians have no sizes";
  EXPECT_EQ(ConvertAngleSize(1.5, enumAngleUnits::Mil, enumMeasUnitSize{9}, kSmall), 1.5);
  EXPECT_EQ(ConvertAngleSize(1.5, kDegree, kLarge, kLarge), 1.5);
}

TEST(UnitSizes, RefuseWhatAFamilyDoesNotHave) {
  EXPECT_EQ(ConvertDistSize(1.0, kMetre, kNormal, kSmall), kNotSet);
  EXPECT_EQ(ConvertDistSize(1.0, kFoot, kSmall, kNormal), kNotSet);
  EXPECT_EQ(ConvertDistSize(1.0, Unknown<enumDistUnits>(5), kNormal, kNormal), kNotSet);
  EXPECT_EQ(ConvertDistSize(1.0, kMetre, enumMeasUnitSize{4}, enumMeasUnitSize{4}), kNotSet);
  EXPECT_EQ(ConvertDistSize(1.0, kMetre, kNormal, enumMeasUnitSize{-1}), kNotSet);
  EXPECT_EQ(ConvertAngleSize(1.0, kDegree, kNormal, kLarge), kNotSet);
  EXPECT_EQ(ConvertAngleSize(1.0, kGon, kLarge, kNormal), kNotSet);
  EXPECT_EQ(ConvertAngleSize(1.0, Unknown<enumAngleUnits>(4), kNormal, kSmall), kNotSet);
  EXPECT_EQ(ConvertSpeedSize(1.0, enumSpeedUnits::Metric, kNormal, kSmallest), kNotSet);
  EXPECT_EQ(ConvertSpeedSize(1.0, Unknown<enumSpeedUnits>(2), kNormal, kNormal), kNotSet);
  EXPECT_EQ(ConvertDistSize(8e199, kMetre, kNormal, kSmallest), kNotSet);
  // The bound of what counts as not set is a value itself.
  EXPECT_EQ(ConvertDistSize(kelp::kNotSetThreshold, kFoot, kNormal, kSmallest), kNotSet);
  EXPECT_EQ(ConvertAngleSize(kelp::kNotSetThreshold, kDegree, kNormal, kSmall), kNotSet);
  EXPECT_EQ(ConvertDistSize(9e199, kMetre, kNormal, kSmall), 9e199);
}

}  // namespace
