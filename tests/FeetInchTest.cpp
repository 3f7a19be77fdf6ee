#include "kelp0lang/FeetInch.h"

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "tests/TestText.h"

using kelp::kNotSet;
using kelp::kNotSetThreshold;
using kelp::WString;

namespace {

constexpr auto kQuarters = enumInchDecPrec::Quarters;
constexpr auto kEighths = enumInchDecPrec::Eighths;
constexpr auto kSixteenths = enumInchDecPrec::Sixteenths;
constexpr auto kSixtyFourths = enumInchDecPrec::SixtyFourths;

void ExpectParts(const TFeetInch& length, int feet, int inches, int numerator,
                 enumInchDecPrec precision, bool negative) {
  EXPECT_EQ(length.feet, feet);
  EXPECT_EQ(length.inches, inches);
  EXPECT_EQ(length.numerator, numerator);
  EXPECT_EQ(length.precision, precision);
  EXPECT_EQ(length.negative, negative);
}

TEST(FeetInch, SplitsARoundedCount) {
  ExpectParts(FeetToTFeetInch(5.5, kEighths), 5, 6, 0, kEighths, false);
  ExpectParts(FeetToTFeetInch(5.99999, kEighths), 6, 0, 0, kEighths, false);
  ExpectParts(FeetToTFeetInch(-5.53125, kEighths), 5, 6, 3, kEighths, true);
  ExpectParts(FeetToTFeetInch(-1.0 / 24 / 12, enumInchDecPrec{9}), 0, 0, 3, enumInchDecPrec{9},
              true);
  ExpectParts(InchToFeetInch(66.375, kSixteenths), 0, 66, 6, kSixteenths, false);
  ExpectParts(InchToFeetInch(0.125, kQuarters), 0, 0, 1, kQuarters, false);  // a half goes up,
  ExpectParts(InchToFeetInch(-0.125, kQuarters), 0, 0, 0, kQuarters, true);  // also below zero

  for (const double none : {kNotSet, kNotSetThreshold, static_cast<double>(NAN)}) {
    ExpectParts(FeetToTFeetInch(none, kEighths), 0, 0, 0, kSixtyFourths, false);
    ExpectParts(InchToFeetInch(none, kEighths), 0, 0, 0, kSixtyFourths, false);
  }
  constexpr int kMax = std::numeric_limits<int>::max();
  EXPECT_EQ(FeetToTFeetInch(8e199, kEighths).feet, kMax);
  EXPECT_EQ(FeetToTFeetInch(-INFINITY, kEighths).feet, kMax);
  EXPECT_EQ(InchToFeetInch(-8e199, kEighths).inches, kMax);
}

TEST(FeetInch, WritesTheFractionAlways) {
  EXPECT_EQ(FeetToFeetInch(5.5, kEighths), WString(KTEXT("5'6\"0/8")));
  EXPECT_EQ(FeetToFeetInch(-1.0, kQuarters), WString(KTEXT("-1'0\"0/4")));
  EXPECT_EQ(FeetToFeetInch(5.53125, enumInchDecPrec::ThirtySeconds), WString(KTEXT("5'6\"12/32")));
  EXPECT_EQ(FeetToFeetInch(kNotSet, kEighths), WString());
  EXPECT_EQ(InchToString(66.375, kEighths), WString(KTEXT("66\"3/8")));
  EXPECT_EQ(InchToString(-0.75, kQuarters), WString(KTEXT("-0\"3/4")));
  EXPECT_EQ(InchToString(kNotSet, kQuarters), WString());
}

TEST(FeetInch, ReadsDigitRuns) {
  const auto read = [](const WChar* text, enumInchDecPrec prec) {
    return StringToFeetInch(WString(text), prec);
  };
  ExpectParts(read(KTEXT("5'6\"3/8"), kQuarters), 5, 6, 3, kEighths, false);
  ExpectParts(read(KTEXT("5'6\"3/7"), kQuarters), 5, 6, 3, kSixtyFourths, false);
  ExpectParts(read(KTEXT("-5 6 3"), kQuarters), 5, 6, 3, kQuarters, true);
  ExpectParts(read(KTEXT("5 6 3 8 9"), kQuarters), 5, 6, 3, kEighths, false);
  ExpectParts(read(KTEXT("5'"), enumInchDecPrec{9}), 5, 0, 0, kSixtyFourths, false);
  ExpectParts(read(KTEXT(""), kSixteenths), 0, 0, 0, kSixteenths, false);
  ExpectParts(read(KTEXT("x"), kSixteenths), 0, 0, 0, kSixtyFourths, false);
  ExpectParts(read(KTEXT("99999999999999999999'"), kQuarters), 2147483647, 0, 0, kQuarters, false);

  const auto readInches = [](const WChar* text, enumInchDecPrec prec) {
    return InchStringToFeetInch(WString(text), prec);
  };
  ExpectParts(readInches(KTEXT("-66\"3/8 5"), kQuarters), 0, 66, 3, kEighths, true);
  ExpectParts(readInches(KTEXT("66\"3"), kSixteenths), 0, 66, 3, kSixteenths, false);
  ExpectParts(readInches(KTEXT("66\"3/5"), kSixteenths), 0, 66, 3, kSixtyFourths, false);
  ExpectParts(readInches(KTEXT(""), kSixteenths), 0, 0, 0, kSixteenths, false);
  ExpectParts(readInches(KTEXT("-"), kSixteenths), 0, 0, 0, kSixtyFourths, false);

  EXPECT_EQ(FeetInchToFeet(WString(), kQuarters), kNotSet);
  EXPECT_EQ(InchStringToInch(WString(), kQuarters), kNotSet);
  EXPECT_EQ(FeetInchToFeet(WString(KTEXT("x")), kQuarters), 0.0);
  EXPECT_EQ(FeetInchToFeet(WString(KTEXT("-5'6\"3/8")), kQuarters), -5.53125);
  EXPECT_EQ(InchStringToInch(WString(KTEXT("66\"3/8")), kQuarters), 66.375);
  EXPECT_EQ(TFeetInchToInch({5, 6, 3, kEighths, true}), -6.375) << "feet play no part";
}

// No text shows 12 inches or a whole fraction, none is further off than half a fraction, and each
// reads back as it was.
TEST(FeetInch, TextsCarryAndReadBack) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> uniform(-1, 1);
  for (int i = 0; i < 100000; ++i) {
    const enumInchDecPrec precision{static_cast<int>(random() % 5)};
    const int denominator = ConvertInchDecPrec(precision);
    const double step = 1.0 / (12 * denominator);
    double feet = uniform(random) * 1000;
    if (i % 2 == 0) feet = std::round(feet) + uniform(random) * step;
    if (i % 3 == 0) feet = std::round(feet * 12) / 12 + uniform(random) * 1e-12 - step / 2;

    const TFeetInch parts = FeetToTFeetInch(feet, precision);
    ASSERT_TRUE(parts.inches >= 0 && parts.inches < 12) << feet;
    ASSERT_TRUE(parts.numerator >= 0 && parts.numerator < denominator) << feet;
    const WString text = FeetToFeetInch(feet, precision);
    const double back = FeetInchToFeet(text, kQuarters);
    ASSERT_NEAR(back, feet, step / 2 + 1e-12);
    if (back != 0) {
      ASSERT_EQ(FeetToFeetInch(back, precision), text);
    }
    const WString inchText = InchToString(feet, precision);
    const double inch = InchStringToInch(inchText, kQuarters);
    ASSERT_NEAR(inch, feet, step * 6 + 1e-12);
    if (inch != 0) {
      ASSERT_EQ(InchToString(inch, precision), inchText);
    }
  }
}

}  // namespace
