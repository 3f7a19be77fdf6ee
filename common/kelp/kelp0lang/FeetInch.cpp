#include "kelp0lang/FeetInch.h"

#include <cmath>

#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/UnitParts.h"

using kelp::kNotSet;
using kelp::kNotSetThreshold;
using kelp::WString;
using kelp::detail::DigitRun;
using kelp::detail::DigitRuns;
using kelp::detail::Format;
using kelp::detail::RoundToCount;
using kelp::detail::ToInt32;

namespace {

constexpr int kTextRoom = 256;
constexpr int kInchesPerFoot = 12;

double Fraction(const TFeetInch& length) {
  return static_cast<double>(length.numerator) / ConvertInchDecPrec(length.precision);
}

double WithSign(double magnitude, bool negative) {
  return negative ? -magnitude : magnitude;
}

// The fraction that a text shows: run by run, from the one of the numerator on.
void ReadFraction(const DigitRun& numerator, const DigitRun& denominator, enumInchDecPrec prec,
                  TFeetInch& length) {
  length.numerator = numerator.Number();
  const int wanted = denominator.length > 0 ? denominator.Number() : ConvertInchDecPrec(prec);
  ConvertInchDecPrec(wanted, length.precision);
}

}  // namespace

TFeetInch FeetToTFeetInch(double feet, enumInchDecPrec prec) {
  TFeetInch length;
  if (!(feet < kNotSetThreshold)) return length;
  const int perInch = ConvertInchDecPrec(prec);
  const int perFoot = kInchesPerFoot * perInch;
  const std::int64_t count = std::abs(RoundToCount(feet * kInchesPerFoot * perInch));
  const auto rest = static_cast<std::int32_t>(count % perFoot);
  length.feet = ToInt32(count / perFoot);
  length.inches = rest / perInch;
  length.numerator = rest % perInch;
  length.precision = prec;
  length.negative = feet < 0;
  return length;
}

TFeetInch InchToFeetInch(double inches, enumInchDecPrec prec) {
  TFeetInch length;
  if (!(inches < kNotSetThreshold)) return length;
  const int perInch = ConvertInchDecPrec(prec);
  const std::int64_t count = std::abs(RoundToCount(perInch * inches));
  length.inches = ToInt32(count / perInch);
  length.numerator = static_cast<std::int32_t>(count % perInch);
  length.precision = prec;
  length.negative = inches < 0;
  return length;
}

double TFeetInchToFeet(const TFeetInch& length) {
  const double feet = (Fraction(length) + length.inches) / kInchesPerFoot + length.feet;
  return WithSign(feet, length.negative);
}

double TFeetInchToInch(const TFeetInch& length) {
  return WithSign(Fraction(length) + length.inches, length.negative);
}

WString FeetToFeetInch(double feet, enumInchDecPrec prec) {
  if (feet > kNotSetThreshold) return WString();
  const TFeetInch length = FeetToTFeetInch(feet, prec);
  WChar text[kTextRoom];
  Format(text, kTextRoom, KTEXT('.'), KTEXT("%ls%d'%d\"%d/%d"),
         length.negative ? KTEXT("-") : KTEXT(""), length.feet, length.inches, length.numerator,
         ConvertInchDecPrec(length.precision));
  return WString(text);
}

WString InchToString(double inches, enumInchDecPrec prec) {
  if (inches > kNotSetThreshold) return WString();
  const TFeetInch length = InchToFeetInch(inches, prec);
  WChar text[kTextRoom];
  Format(text, kTextRoom, KTEXT('.'), KTEXT("%ls%d\"%d/%d"),
         length.negative ? KTEXT("-") : KTEXT(""), length.inches, length.numerator,
         ConvertInchDecPrec(length.precision));
  return WString(text);
}

TFeetInch StringToFeetInch(const WString& text, enumInchDecPrec prec) {
  TFeetInch length;
  if (text.empty()) length.precision = prec;
  const DigitRuns digits(text);
  if (digits.count == 0) return length;
  length.feet = digits.runs[0].Number();
  length.inches = digits.runs[1].Number();
  ReadFraction(digits.runs[2], digits.runs[3], prec, length);
  length.negative = digits.minus;
  return length;
}

TFeetInch InchStringToFeetInch(const WString& text, enumInchDecPrec prec) {
  TFeetInch length;
  if (text.empty()) length.precision = prec;
  const DigitRuns digits(text);
  if (digits.count == 0) return length;
  length.inches = digits.runs[0].Number();
  ReadFraction(digits.runs[1], digits.runs[2], prec, length);
  length.negative = digits.minus;
  return length;
}

double FeetInchToFeet(const WString& text, enumInchDecPrec prec) {
  return text.empty() ? kNotSet : TFeetInchToFeet(StringToFeetInch(text, prec));
}

double InchStringToInch(const WString& text, enumInchDecPrec prec) {
  return text.empty() ? kNotSet : TFeetInchToInch(InchStringToFeetInch(text, prec));
}
