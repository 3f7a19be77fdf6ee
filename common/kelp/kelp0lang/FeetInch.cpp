#include "kelp0lang/FeetInch.h"

#include <bit>
#include <cmath>

#include "kelp0lang/UnitParts.h"

using kelp::IsNotSet;
using kelp::kNotSet;
using kelp::kNotSetThreshold;
using kelp::WString;
using kelp::detail::DigitRun;
using kelp::detail::DigitRuns;
using kelp::detail::RoundToCount;
using kelp::detail::TextWriter;
using kelp::detail::ToInt32;
using kelp::detail::WithSign;

namespace {

constexpr int kTextRoom = 64;
constexpr int kInchesPerFoot = 12;

// Inches without their sign, and what is left in parts of an inch. The parts of an inch are always
// a power of two, and a shift takes less time than a division.
struct InchCount {
  InchCount(double parts, int perInch) {
    const std::int64_t count = std::abs(RoundToCount(parts));
    inches = count >> std::countr_zero(static_cast<unsigned>(perInch));
    numerator = static_cast<std::int32_t>(count & (perInch - 1));
  }

  std::int64_t inches;
  std::int32_t numerator;
};

double Fraction(const TFeetInch& length) {
  return static_cast<double>(length.numerator) / ConvertInchDecPrec(length.precision);
}

// The fraction that a text shows: run by run, from the one of the numerator on.
void ReadFraction(const DigitRun& numerator, const DigitRun& denominator, enumInchDecPrec prec,
                  TFeetInch& length) {
  length.numerator = numerator.Number();
  const int wanted = denominator.length > 0 ? denominator.Number() : ConvertInchDecPrec(prec);
  ConvertInchDecPrec(wanted, length.precision);
}

void PutSign(TextWriter& writer, const TFeetInch& length) {
  if (length.negative) writer.Put(KTEXT('-'));
}

// A fraction of an inch, and the mark between it and the inches.
void PutFraction(TextWriter& writer, const TFeetInch& length) {
  writer.Put(KTEXT('"'));
  writer.Small(length.numerator);
  writer.Put(KTEXT('/'));
  writer.Small(ConvertInchDecPrec(length.precision));
}

}  // namespace

TFeetInch FeetToTFeetInch(double feet, enumInchDecPrec prec) {
  TFeetInch length;
  if (!(feet < kNotSetThreshold)) return length;
  const int perInch = ConvertInchDecPrec(prec);
  const InchCount count(feet * kInchesPerFoot * perInch, perInch);
  length.feet = ToInt32(count.inches / kInchesPerFoot);
  length.inches = static_cast<std::int32_t>(count.inches % kInchesPerFoot);
  length.numerator = count.numerator;
  length.precision = prec;
  length.negative = feet < 0;
  return length;
}

TFeetInch InchToFeetInch(double inches, enumInchDecPrec prec) {
  TFeetInch length;
  if (!(inches < kNotSetThreshold)) return length;
  const int perInch = ConvertInchDecPrec(prec);
  const InchCount count(perInch * inches, perInch);
  length.inches = ToInt32(count.inches);
  length.numerator = count.numerator;
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
  if (IsNotSet(feet)) return WString();
  const TFeetInch length = FeetToTFeetInch(feet, prec);
  WChar text[kTextRoom];
  TextWriter writer(text);
  PutSign(writer, length);
  writer.Number(length.feet);
  writer.Put(KTEXT('\''));
  writer.Small(length.inches);
  PutFraction(writer, length);
  return writer.Text();
}

WString InchToString(double inches, enumInchDecPrec prec) {
  if (IsNotSet(inches)) return WString();
  const TFeetInch length = InchToFeetInch(inches, prec);
  WChar text[kTextRoom];
  TextWriter writer(text);
  PutSign(writer, length);
  writer.Number(length.inches);
  PutFraction(writer, length);
  return writer.Text();
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
