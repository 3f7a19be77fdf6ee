#include "kelp0lang/Translate.h"
#include "kelp0lang/UnitKinds.h"
#include "kelp0lang/ValueScan.h"

namespace kelp::detail {
namespace {

constexpr WideView kFootMarks = KTEXT("'\u2032\u2019");
constexpr WideView kInchMarks = KTEXT("\"\u2033\u201D");
constexpr double kInchesPerFoot = 12;

constexpr const WChar* kInchesFault = KXLATE("inches behind feet must be below 12");
constexpr const WChar* kFeetSignsFault =
    KXLATE("feet and inches need their signs here, such as 12'6 1/2\"");

// One mark, or two of the shorter one for the longer.
bool TakeInchMark(ValueScan& scan) {
  if (scan.TakeOneOf(kInchMarks)) return true;
  const WChar* const place = scan.Place();
  if (scan.TakeOneOf(kFootMarks) && scan.TakeOneOf(kFootMarks)) return true;
  scan.GoBack(place);
  return false;
}

bool TakeInchWord(ValueScan& scan) {
  return scan.TakeWord(KTEXT("in")) || scan.TakeWord(KTEXT("inch")) ||
         scan.TakeWord(KTEXT("inches"));
}

// A length in feet and inches from the feet on, which have been read.
class FeetInches {
 public:
  FeetInches(ValueScan& scan, bool partsOnly) : m_scan(scan), m_partsOnly(partsOnly) {}

  // What stands behind a mark of feet.
  bool BehindFeet(const Amount& feet, double& value) {
    value = feet.value;
    const WChar* const behind = m_scan.Place();
    m_scan.TakeBlanks();
    if (m_scan.TakeDash()) m_scan.TakeBlanks();
    if (!m_scan.IsAmountAhead()) {
      m_scan.GoBack(behind);
      return true;
    }
    if (!feet.isWhole) return m_scan.Fail(kDecimalsFault);
    double inches = 0;
    if (!Inches(inches)) return false;
    value = inches / kInchesPerFoot + feet.value;
    return true;
  }

  // Inches below a foot, with or without their mark: 6, 6", 6 1/2", 6-1/2, 6"1/2, 1/2".
  bool Inches(double& inches) {
    const WChar* const place = m_scan.Place();
    Amount amount;
    if (!m_scan.TakeAmount(amount, false)) return false;
    inches = amount.value;
    if (!FractionBehind(amount, inches)) return false;
    return inches < kInchesPerFoot || m_scan.Fail(kInchesFault, place);
  }

  // The mark of inches, and the fraction that may stand behind them, or behind the mark.
  bool FractionBehind(const Amount& amount, double& inches) {
    const bool marked = TakeMark();
    const WChar* const behind = m_scan.Place();
    bool apart = m_scan.TakeBlanks();
    apart = m_scan.TakeDash() || apart;
    if (!amount.isWhole || (!marked && !apart) || !m_scan.IsAmountAhead()) {
      m_scan.GoBack(behind);
      return true;
    }
    const WChar* const place = m_scan.Place();
    double fraction = 0;
    if (!m_scan.TakeFraction(fraction)) return false;
    if (fraction >= 1) return m_scan.Fail(kFractionFault, place);
    inches += fraction;
    if (!marked) TakeMark();
    return true;
  }

 private:
  bool TakeMark() {
    const WChar* const place = m_scan.Place();
    m_scan.TakeBlanks();
    if (TakeInchMark(m_scan) || (!m_partsOnly && TakeInchWord(m_scan))) return true;
    m_scan.GoBack(place);
    return false;
  }

  ValueScan& m_scan;
  const bool m_partsOnly;
};

bool IsFootUnit(enumDisplayDistUnits units) {
  const enumDistUnits unit = Arithmetic(units);
  return unit == enumDistUnits::InternationalFoot || unit == enumDistUnits::USSurveyFoot;
}

bool IsUSSurvey(enumDisplayDistUnits units) {
  const enumDistUnits unit = Arithmetic(units);
  return unit == enumDistUnits::USSurveyFoot || unit == enumDistUnits::USSurveyChain;
}

// Feet alone where feet and inches are shown: a number with a fraction could be either.
bool IsOneMeaning(ValueScan& scan, const Amount& amount, const WChar* place) {
  if (!amount.hasFraction) return true;
  const WString text = scan.TextSince(place);
  const WString asFeet = text + KTEXT('\'');
  if (amount.whole.empty()) {
    return scan.FailWith(kMeaningFault, place, asFeet, text + KTEXT('"'));
  }
  const auto size = static_cast<int>(amount.whole.size());
  const WString rest = text.Substring(size).TrimLeft(KTEXT(' '));
  const WString whole = text.Substring(0, size);
  return scan.FailWith(kMeaningFault, place, asFeet,
                       (whole + KTEXT("'")).Concat(rest) + KTEXT('"'));
}

// Whether 6-1/2 is ahead: behind feet that can't be anything else, whatever unit is shown.
bool IsFootInchFractionAhead(ValueScan& scan) {
  const WChar* const place = scan.Place();
  Amount inches;
  const bool isAhead =
      scan.TakeNumber(inches, false) && inches.isWhole && scan.TakeDash() && scan.IsFractionAhead();
  scan.GoBack(place);
  return isAhead;
}

// Parts without marks: 12-6-1/2, 12-6 where feet are shown, and 12 6 1/2 where feet and inches are.
bool ScanBareParts(ValueScan& scan, enumDisplayDistUnits units, const Amount& feet,
                   const WChar* place, double& value) {
  const WChar* const behind = scan.Place();
  const bool blanks = scan.TakeBlanks();
  const bool dash = scan.TakeDash();
  if (dash) scan.TakeBlanks();
  if (!(dash || blanks) || !scan.IsAmountAhead()) {
    scan.GoBack(behind);
    return true;
  }
  if (!dash && !IsFeetInch(units)) {
    scan.GoBack(behind);
    return scan.Fail(IsFootUnit(units) ? kFeetSignsFault : kUnexpectedFault);
  }
  if (!IsFootUnit(units) && !IsFootInchFractionAhead(scan)) {
    scan.GoBack(behind);
    return scan.Fail(kFeetSignsFault);
  }
  if (!feet.isWhole) return scan.Fail(kDecimalsFault);
  const WChar* const second = scan.Place();
  Amount inches;
  if (!scan.TakeAmount(inches, false)) return false;
  if (inches.hasFraction && inches.whole.empty()) {
    const WString whole(feet.whole.data(), 0, static_cast<int>(feet.whole.size()));
    const WString fraction = scan.TextSince(second);
    return scan.FailWith(kMeaningFault, place, (whole + KTEXT("'0 ")).Concat(fraction) + KTEXT('"'),
                         (whole + KTEXT(' ')).Concat(fraction));
  }
  value = inches.value;
  if (!FeetInches(scan, false).FractionBehind(inches, value)) return false;
  if (value >= kInchesPerFoot) return scan.Fail(kInchesFault, second);
  value = value / kInchesPerFoot + feet.value;
  return true;
}

}  // namespace

bool ScanLength(ValueScan& scan, enumDisplayDistUnits units, bool partsOnly, double& value) {
  bool negative = false;
  bool hasSign = false;
  if (!scan.TakeSign(negative, hasSign)) return false;
  const WChar* const place = scan.Place();
  Amount amount;
  if (!scan.TakeAmount(amount, true)) return false;
  value = amount.value;
  const enumDistUnits own = Arithmetic(units);
  const enumDistUnits foot = FootOf(IsUSSurvey(units));
  enumDistUnits found = own;
  const WChar* const behind = scan.Place();
  scan.TakeBlanks();
  FeetInches parts(scan, partsOnly);

  if (TakeInchMark(scan)) {
    scan.GoBack(behind);
    if (!parts.FractionBehind(amount, value)) return false;
    found = foot;
    value /= kInchesPerFoot;
  } else if (scan.TakeOneOf(kFootMarks)) {
    found = foot;
    if (!parts.BehindFeet(amount, value)) return false;
  } else {
    TypedUnit unit;
    if (!partsOnly && !ScanUnit(scan, 1, foot, unit)) return false;
    if (unit.word == UnitWord::None) {
      scan.GoBack(behind);
      if (!ScanBareParts(scan, units, amount, place, value)) return false;
      const bool alone = scan.Place() == behind;
      if (!alone) found = foot;
      if (alone && IsFeetInch(units) && !IsOneMeaning(scan, amount, place)) return false;
    } else {
      found = unit.base;
      value *= unit.factor;
    }
    if (unit.word == UnitWord::Foot && !parts.BehindFeet(amount, value)) return false;
  }
  value = ConvertDist(negative ? -value : value, found, own);
  return scan.Ends();
}

namespace {

// A number and a unit of area or volume; without a unit it is of shown.
template <class Units, class Convert>
bool ScanPower(ValueScan& scan, int power, bool usSurvey, Units shown, Convert convert,
               double& value) {
  bool negative = false;
  bool hasSign = false;
  if (!scan.TakeSign(negative, hasSign)) return false;
  Amount amount;
  if (!scan.TakeAmount(amount, true)) return false;
  scan.TakeBlanks();
  TypedUnit unit;
  if (!ScanUnit(scan, power, FootOf(usSurvey), unit)) return false;
  value = negative ? -amount.value : amount.value;
  // The units of the powers are in the order of those of length, as far as the US survey foot.
  if (unit.word != UnitWord::None) {
    shown = static_cast<Units>(unit.base);
    value *= unit.factor;
  }
  value = convert(value, shown, Units{});
  return scan.Ends();
}

}  // namespace

bool ScanArea(ValueScan& scan, enumDisplayAreaUnits units, double& value) {
  const enumAreaUnits shown = Arithmetic(units);
  const bool usSurvey = shown == enumAreaUnits::SquareUSSurveyFoot;
  if (!IsFeetInch(units)) return ScanPower(scan, 2, usSurvey, shown, ConvertArea, value);
  if (!ScanLength(scan, enumDisplayDistUnits::InternationalFootInch, true, value)) return false;
  value = ConvertArea(value, shown, enumAreaUnits::SquareMetre);
  return true;
}

bool ScanVolume(ValueScan& scan, enumDisplayVolumeUnits units, double& value) {
  const enumVolumeUnits shown = Arithmetic(units);
  const bool usSurvey =
      shown == enumVolumeUnits::CubicUSSurveyFoot || shown == enumVolumeUnits::CubicUSSurveyYard;
  if (!IsFeetInch(units)) return ScanPower(scan, 3, usSurvey, shown, ConvertVolume, value);
  if (!ScanLength(scan, enumDisplayDistUnits::InternationalFootInch, true, value)) return false;
  value = ConvertVolume(value, shown, enumVolumeUnits::CubicMetre);
  return true;
}

}  // namespace kelp::detail
