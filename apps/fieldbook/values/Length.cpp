#include "fieldbook/values/Length.h"

#include <cmath>
#include <numeric>

#include "kelp0lang/FeetInch.h"

namespace fieldbook {
namespace {

constexpr double kLongestMetres = 5e8;

bool IsZero(const TFeetInch& length) {
  return length.feet == 0 && length.inches == 0 && length.numerator == 0;
}

// 12'6 1/2", with the fraction in its lowest terms, and without one that is zero.
void AppendReduced(std::string& bytes, const TFeetInch& length) {
  if (length.negative && !IsZero(length)) bytes += '-';
  bytes += std::to_string(length.feet) + '\'' + std::to_string(length.inches);
  if (length.numerator != 0) {
    const int denominator = ConvertInchDecPrec(length.precision);
    const int divisor = std::gcd(length.numerator, denominator);
    bytes += ' ' + std::to_string(length.numerator / divisor) + '/' +
             std::to_string(denominator / divisor);
  }
  bytes += '"';
}

}  // namespace

bool IsWithinReach(double value, const LengthUnit& unit) {
  return std::fabs(ConvertDist(value, unit.unit, enumDistUnits::Metre)) <= kLongestMetres;
}

Reading ReadLength(const WString& text, const LengthUnit& unit, DecimalMark mark) {
  if (HasForbiddenComma(text, mark)) return {kelp::kNotSet, NotANumber()};
  const auto display = static_cast<enumDisplayDistUnits>(&unit - kLengthUnits);
  Reading reading = ToReading(CheckLength(text, display));
  if (!reading.fault && !IsWithinReach(reading.value, unit)) return {kelp::kNotSet, OutOfRange()};
  return reading;
}

WString WriteLength(double value, const LengthUnit& from, const LengthStyle& style) {
  std::string bytes;
  AppendLength(bytes, value, from, style);
  return Decode(bytes, true);
}

void AppendLength(std::string& bytes, double value, const LengthUnit& from,
                  const LengthStyle& style) {
  if (value > kelp::kNotSetThreshold) return;
  const double length = ConvertDist(value, from.unit, style.unit->unit);
  if (!style.unit->inches) return AppendNumber(bytes, length, style.decimals);
  if (style.isReduced) return AppendReduced(bytes, FeetToTFeetInch(length, style.fraction));
  const bool isZero = IsZero(FeetToTFeetInch(length, style.fraction));
  AppendUtf8(bytes, FeetToFeetInch(isZero && length < 0 ? 0.0 : length, style.fraction));
}

}  // namespace fieldbook
