#include "fieldbook/values/AngleText.h"

#include <cmath>
#include <iterator>

#include "fieldbook/values/Scanner.h"

namespace fieldbook {
namespace {

// Beyond it degrees, minutes and seconds with nine decimals don't fit into 64 bits.
constexpr double kMostDegrees = 1e6;

constexpr WideView kDegreeMarks = KTEXT("\u00B0\u00BA:");
constexpr WideView kMinuteMarks = KTEXT("'\u2032\u2019:");
constexpr WideView kSecondMarks = KTEXT("\"\u2033\u201D");

double Same(double degrees) {
  return degrees;
}

struct LatLonRule {
  double most;
  const WChar* range;
};

constexpr LatLonRule kLatLonRules[] = {
    {kMostDegrees, KTEXT("an angle lies between -1,000,000 and 1,000,000 degrees")},
    {90, KTEXT("a latitude lies between -90 and 90 degrees")},
    {180, KTEXT("a longitude lies between -180 and 180 degrees")},
};

Reading Fault(const WChar* source) {
  return {kelp::kNotSet, {source, {}}};
}

Reading WithinRange(double degrees, enumLatLonType type) {
  const LatLonRule& rule = kLatLonRules[static_cast<int>(type)];
  return std::fabs(degrees) > rule.most ? Fault(rule.range) : Reading{degrees, {}};
}

// An angle in parts as it was written.
struct WrittenDMS {
  TDMS angle{};
  bool hasSign = false;
  WChar letter = 0;
};

// Whole seconds and their fraction.
bool ScanSeconds(Scanner& scan, double& seconds) {
  const WideView whole = scan.TakeDigits();
  if (whole.empty() || whole.size() > 2) return false;
  WString text = ToWString(whole);
  if (scan.Take(KTEXT('.'))) {
    const WideView fraction = scan.TakeDigits();
    if (fraction.empty()) return false;
    text = text + KTEXT('.');
    text += ToWString(fraction);
  }
  seconds = ReadNumber(text, DecimalMark::Point).value;
  return true;
}

// Two digits without anything between them and the next.
std::optional<int> TakePair(WideView& digits) {
  if (digits.size() < 2) return std::nullopt;
  Scanner pair(digits.substr(0, 2));
  digits.remove_prefix(2);
  return pair.TakeWhole();
}

// 10°30'15.5", 10 30 15.5, 10:30:15.5, or less of it from the right.
bool ScanParts(Scanner& scan, TDMS& angle) {
  const std::optional<int> degrees = scan.TakeWhole();
  if (!degrees) return false;
  angle.degrees = *degrees;
  bool apart = scan.TakeBlanks();
  apart = scan.TakeOneOf(kDegreeMarks) || apart;
  scan.TakeBlanks();
  if (!IsDigit(scan.Ahead())) return true;

  const std::optional<int> minutes = scan.TakeWhole();
  if (!apart || !minutes) return false;
  angle.minutes = *minutes;
  apart = scan.TakeBlanks();
  apart = scan.TakeOneOf(kMinuteMarks) || apart;
  scan.TakeBlanks();
  if (!IsDigit(scan.Ahead())) return true;

  if (!apart || !ScanSeconds(scan, angle.seconds)) return false;
  scan.TakeBlanks();
  scan.TakeOneOf(kSecondMarks);
  return true;
}

// DD.MMSSss. Minutes and seconds take two digits each: a single one could mean either of 3 and 30.
bool ScanPacked(Scanner& scan, TDMS& angle) {
  const std::optional<int> degrees = scan.TakeWhole();
  if (!degrees) return false;
  angle.degrees = *degrees;
  if (scan.Take(KTEXT('.'))) {
    WideView digits = scan.TakeDigits();
    const std::optional<int> minutes = TakePair(digits);
    if (!minutes) return false;
    angle.minutes = *minutes;
    if (!digits.empty()) {
      const std::optional<int> seconds = TakePair(digits);
      if (!seconds) return false;
      const WString fraction = WString(KTEXT("0.")).Concat(ToWString(digits)) + KTEXT('0');
      angle.seconds = *seconds + ReadNumber(fraction, DecimalMark::Point).value;
    }
  }
  scan.TakeOneOf(kSecondMarks);
  return true;
}

bool ScanDMS(WideView text, bool packed, WrittenDMS& written) {
  Scanner scan(text);
  written.hasSign = scan.Ahead() == KTEXT('-') || scan.Ahead() == KTEXT('+');
  written.angle.negative = scan.TakeSign();
  if (!(packed ? ScanPacked(scan, written.angle) : ScanParts(scan, written.angle))) return false;
  scan.TakeBlanks();
  written.letter = scan.TakeAny();
  return scan.AtEnd();
}

Message NotDMS(bool packed) {
  return {packed ? KTEXT("not a packed angle with two digits each for minutes and seconds, "
                         "such as 10.301550")
                 : KTEXT("not an angle in degrees, minutes and seconds, such as "
                         "10\u00B030'15.5\""),
          {}};
}

// Whether the letter stands for one side of a latitude or longitude, in the user's language.
bool IsLetterOf(WChar letter, enumLatLonType type, bool negative) {
  WChar wanted = 0;
  if (!LatLonSignToSign(negative, type, wanted)) return false;
  return WString::ValueOf(letter).CompareIgnoreCase(WString::ValueOf(wanted).c_str()) == 0;
}

bool IsLetterOf(WChar letter, enumLatLonType type) {
  return IsLetterOf(letter, type, false) || IsLetterOf(letter, type, true);
}

Message WrongLetter(enumLatLonType type) {
  WChar positive = 0;
  WChar negative = 0;
  LatLonSignToSign(false, type, positive);
  LatLonSignToSign(true, type, negative);
  const WChar* source = type == enumLatLonType::Latitude
                            ? KTEXT("the letter of a latitude is {1} or {2}")
                            : KTEXT("the letter of a longitude is {1} or {2}");
  return {source, {WString::ValueOf(positive), WString::ValueOf(negative)}};
}

// Turns the letter into the sign, and settles whether the angle is a latitude or a longitude.
Message ApplyLetter(WrittenDMS& written, bool packed, enumLatLonType& type) {
  if (written.letter == 0) return {};
  for (const auto letterType : {enumLatLonType::Latitude, enumLatLonType::Longitude}) {
    if (!IsLetterOf(written.letter, letterType)) continue;
    if (type != enumLatLonType::None && type != letterType) return WrongLetter(type);
    if (written.hasSign) return {KTEXT("a sign and a hemisphere letter don't go together"), {}};
    type = letterType;
    written.angle.negative = IsLatLonSignNegative(written.letter, type);
    return {};
  }
  return NotDMS(packed);
}

// DMSToDeg reads whatever digits it finds, garbage as 0 and minutes beyond 60; so the text is taken
// apart here, and only the sound record goes to the library.
Reading ReadDMS(const WString& text, bool packed, enumLatLonType type) {
  WrittenDMS written;
  if (!ScanDMS(ViewOf(text), packed, written)) return {kelp::kNotSet, NotDMS(packed)};
  if (written.angle.minutes >= 60) return Fault(KTEXT("minutes must be below 60"));
  if (written.angle.seconds >= 60) return Fault(KTEXT("seconds must be below 60"));
  if (const Message fault = ApplyLetter(written, packed, type)) return {kelp::kNotSet, fault};
  return WithinRange(TDMSToDeg(written.angle), type);
}

bool IsZero(const TDMS& angle) {
  return angle.degrees == 0 && angle.minutes == 0 && angle.seconds == 0;
}

}  // namespace

const AngleNotation kAngleNotations[7] = {
    {KTEXT("deg"), enumDisplayAngleUnits::Degree, Same, Same, 6},
    {KTEXT("gon"), enumDisplayAngleUnits::Gon, AngSesdFromCent, AngCentFromSesd, 5},
    {KTEXT("rad"), enumDisplayAngleUnits::Radian, AngSesdFromRadi, AngRadiFromSesd, 8},
    {KTEXT("mil"), enumDisplayAngleUnits::Mil, Mils2Deg, Deg2Mils, 4},
    {KTEXT("dms"), enumDisplayAngleUnits::DMSSymbols, nullptr, nullptr, 2},
    {KTEXT("dms-blank"), enumDisplayAngleUnits::DMSBlanks, nullptr, nullptr, 2},
    {KTEXT("dms-packed"), enumDisplayAngleUnits::DMSPacked, nullptr, nullptr, 2},
};

Reading ReadAngle(const WString& text, const AngleNotation& notation, enumLatLonType type) {
  if (IsDMSAngleUnits(notation.form)) {
    return ReadDMS(text, notation.form == enumDisplayAngleUnits::DMSPacked, type);
  }
  Reading reading = ReadNumber(text, DecimalMark::Point);
  if (reading.fault) return reading;
  return WithinRange(notation.toDegrees(reading.value), type);
}

WString WriteAngle(double degrees, const AngleNotation& notation, enumLatLonType type,
                   int decimals) {
  if (!IsDMSAngleUnits(notation.form)) return WriteNumber(notation.fromDegrees(degrees), decimals);
  const bool isZero = degrees < 0 && IsZero(DegToTDMS(degrees, decimals));
  return DegToDMS(isZero ? 0.0 : degrees, notation.form, type, decimals);
}

}  // namespace fieldbook
