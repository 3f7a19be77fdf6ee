#include "fieldbook/values/Length.h"

#include <cmath>
#include <numeric>

#include "fieldbook/values/Scanner.h"
#include "kelp0lang/FeetInch.h"

namespace fieldbook {
namespace {

constexpr double kLongestMetres = 5e8;

constexpr WideView kFootMarks = KTEXT("'\u2032\u2019");
constexpr WideView kInchMarks = KTEXT("\"\u2033\u201D");

// A numerator over one of the denominators that an inch is divided into. Halves are written as
// quarters, the coarsest that the record has.
bool SetFraction(int numerator, int denominator, TFeetInch& length) {
  if (denominator == 2) numerator *= 2, denominator = 4;
  length.numerator = numerator;
  return numerator < denominator && ConvertInchDecPrec(denominator, length.precision);
}

// What stands behind the feet: 6, 6", 6"3/8, 6 3/8", 3/8".
bool ScanInches(Scanner& scan, TFeetInch& length) {
  std::optional<int> number = scan.TakeWhole();
  if (!number) return false;
  bool marked = false;
  if (scan.Ahead() != KTEXT('/')) {
    length.inches = *number;
    marked = scan.TakeOneOf(kInchMarks);
    scan.TakeBlanks();
    if (scan.AtEnd()) return true;
    scan.Take(KTEXT('-'));
    number = scan.TakeWhole();
  }
  if (!number || !scan.Take(KTEXT('/'))) return false;
  const std::optional<int> denominator = scan.TakeWhole();
  if (!denominator || !SetFraction(*number, *denominator, length)) return false;
  if (!marked) scan.TakeOneOf(kInchMarks);
  return scan.AtEnd();
}

// StringToFeetInch takes any runs of digits for feet, inches and fraction, so that 6" would be six
// feet and x nothing; the program reads only what can't be mistaken.
bool ScanFeetInches(WideView text, TFeetInch& length) {
  Scanner scan(text);
  length.negative = scan.TakeSign();
  Scanner feet = scan;
  const std::optional<int> number = feet.TakeWhole();
  if (!number) return false;
  if (!feet.TakeOneOf(kFootMarks)) return ScanInches(scan, length);
  length.feet = *number;
  feet.TakeBlanks();
  if (feet.AtEnd()) return true;
  if (feet.Take(KTEXT('-'))) feet.TakeBlanks();
  return ScanInches(feet, length) && length.inches < 12;
}

bool HoldsMark(WideView text) {
  return text.find_first_of(kFootMarks) != WideView::npos ||
         text.find_first_of(kInchMarks) != WideView::npos;
}

Reading ReadFeetInches(WideView text) {
  TFeetInch length{};
  if (!ScanFeetInches(text, length)) {
    return {kelp::kNotSet, {KTEXT("not a length in feet and inches"), {}}};
  }
  return {TFeetInchToFeet(length), {}};
}

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
  const bool feetInches = unit.inches && HoldsMark(ViewOf(text));
  Reading reading = feetInches ? ReadFeetInches(ViewOf(text)) : ReadNumber(text, mark);
  if (reading.fault) return reading;
  if (!IsWithinReach(reading.value, unit)) return {kelp::kNotSet, OutOfRange()};
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
