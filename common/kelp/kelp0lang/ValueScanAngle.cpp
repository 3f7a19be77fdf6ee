#include <cmath>

#include "kelp0lang/Translate.h"
#include "kelp0lang/UnitKinds.h"
#include "kelp0lang/ValueScan.h"

namespace kelp::detail {
namespace {

constexpr WideView kDegreeMarks = KTEXT("\u00B0\u00BA\u02DA");
constexpr WideView kMinuteMarks = KTEXT("'\u2032\u2019");
constexpr WideView kSecondMarks = KTEXT("\"\u2033\u201D");
constexpr double kParts = 60;

constexpr const WChar* kMinutesFault = KXLATE("minutes must be below 60");
constexpr const WChar* kSecondsFault = KXLATE("seconds must be below 60");
constexpr const WChar* kLetterSignFault =
    KXLATE("a sign and a hemisphere letter don't go together");
constexpr const WChar* kTwoLettersFault = KXLATE("a value has one hemisphere letter");
constexpr const WChar* kLatitudeLetterFault = KXLATE("the letter of a latitude is {1} or {2}");
constexpr const WChar* kLongitudeLetterFault = KXLATE("the letter of a longitude is {1} or {2}");
constexpr const WChar* kLatitudeFault = KXLATE("a latitude lies between -90 and 90 degrees");
constexpr const WChar* kLongitudeFault = KXLATE("a longitude lies between -180 and 180 degrees");
constexpr const WChar* kAngleFault =
    KXLATE("an angle lies between -1,000,000 and 1,000,000 degrees");
constexpr const WChar* kBearingFault =
    KXLATE("a bearing has north or south in front and east or west behind");
constexpr const WChar* kBearingRangeFault = KXLATE("a bearing lies between 0 and 90 degrees");
constexpr const WChar* kDMSFault =
    KXLATE("degrees, minutes and seconds need their signs here, such as 10\u00B030'15.5\"");

// The side that a letter stands for.
struct Letter {
  enumLatLonType type = enumLatLonType::None;  // None: there is no letter
  bool negative = false;
  const WChar* place = nullptr;
};

WString LetterOf(enumLatLonType type, bool negative) {
  WChar unit = 0;
  return LatLonSignToSign(negative, type, unit) ? WString::ValueOf(unit) : WString();
}

bool IsSameLetter(WChar a, WChar b) {
  const auto upper = [](WChar unit) {
    return unit >= KTEXT('a') && unit <= KTEXT('z') ? static_cast<WChar>(unit - 0x20) : unit;
  };
  return upper(a) == upper(b);
}

// The user's own letter goes before an English one that means something else.
bool FindLetter(WChar unit, Letter& letter) {
  constexpr enumLatLonType kTypes[] = {enumLatLonType::Latitude, enumLatLonType::Longitude};
  for (const enumLatLonType type : kTypes) {
    for (const bool negative : {false, true}) {
      WChar own = 0;
      if (!LatLonSignToSign(negative, type, own) || !IsSameLetter(own, unit)) continue;
      letter.type = type;
      letter.negative = negative;
      return true;
    }
  }
  const std::size_t english = WideView(KTEXT("NSEWnsew")).find(unit);
  if (unit == 0 || english == WideView::npos) return false;
  letter.type = kTypes[english % 4 / 2];
  letter.negative = english % 2 == 1;
  return true;
}

class AngleScan {
 public:
  AngleScan(ValueScan& scan, enumDisplayAngleUnits units, AngleLetters letters, ScannedAngle& angle)
      : m_scan(scan), m_units(units), m_letters(letters), m_angle(angle) {}

  bool Run() {
    m_angle.unit = Arithmetic(m_units);
    TakeLetter(m_front);
    m_scan.TakeBlanks();
    const WChar* const sign = m_scan.Place();
    bool negative = false;
    if (!m_scan.TakeSign(negative, m_hasSign)) return false;
    if (m_hasSign && m_front.place != nullptr) return m_scan.Fail(kLetterSignFault, sign);
    const WChar* const begin = m_scan.Place();
    if (!Parts(begin)) return false;
    m_scan.TakeBlanks();
    TakeLetter(m_back);
    if (!m_scan.Ends()) return false;
    if (negative) m_angle.value = -m_angle.value;
    return ApplyLetters(begin);
  }

 private:
  void TakeLetter(Letter& letter) {
    if (m_letters == AngleLetters::None || !FindLetter(m_scan.Ahead(), letter)) return;
    letter.place = m_scan.Place();
    m_scan.Take(m_scan.Ahead());
  }

  // The angle without letters and sign.
  bool Parts(const WChar* begin) {
    Amount degrees;
    if (!m_scan.TakeNumber(degrees, !IsDMSAngleUnits(m_units))) return false;
    m_angle.value = degrees.value;
    const WChar* const behind = m_scan.Place();
    m_scan.TakeBlanks();
    if (TakeUnit()) return true;
    if (TakeDegreeMark()) return Minutes(degrees);
    if (TakeSecondMark()) return SecondsAlone(degrees, begin);
    if (m_scan.TakeOneOf(kMinuteMarks)) return MinutesAlone(degrees, begin);
    m_scan.GoBack(behind);
    if (IsSeparatorAhead()) {
      if (m_angle.unit != enumAngleUnits::Degree) return m_scan.Fail(kDMSFault, behind);
      return Minutes(degrees);
    }
    return Alone(degrees, begin);
  }

  // A unit of angles that has no parts.
  bool TakeUnit() {
    struct Unit {
      WideView word;
      enumAngleUnits unit;
    };
    static constexpr Unit kUnits[] = {
        {KTEXT("gon"), enumAngleUnits::Gon},    {KTEXT("g"), enumAngleUnits::Gon},
        {KTEXT("grad"), enumAngleUnits::Gon},   {KTEXT("grads"), enumAngleUnits::Gon},
        {KTEXT("rad"), enumAngleUnits::Radian}, {KTEXT("mil"), enumAngleUnits::Mil},
        {KTEXT("mils"), enumAngleUnits::Mil},
    };
    for (const Unit& each : kUnits) {
      if (!m_scan.TakeWord(each.word) && !(each.word.size() == 1 && TakeLetterMark(each.word))) {
        continue;
      }
      m_angle.unit = each.unit;
      return true;
    }
    return false;
  }

  // A letter as a mark; that of a hemisphere may follow at once and end the text.
  bool TakeLetterMark(WideView mark) {
    if (m_scan.TakeWord(mark)) return true;
    Letter letter;
    if (m_scan.Ahead(2) != 0 || !FindLetter(m_scan.Ahead(1), letter)) return false;
    return m_scan.Ahead() == mark.front() && m_scan.Take(mark.front());
  }

  bool TakeDegreeMark() {
    m_byLetters = TakeLetterMark(KTEXT("d"));
    const bool taken = m_byLetters || m_scan.TakeOneOf(kDegreeMarks) ||
                       m_scan.TakeWord(KTEXT("deg")) || m_scan.TakeWord(KTEXT("degrees"));
    if (taken) m_angle.unit = enumAngleUnits::Degree;
    return taken;
  }

  bool TakeSecondMark() {
    if (m_scan.TakeOneOf(kSecondMarks)) return true;
    const WChar* const place = m_scan.Place();
    if (m_scan.TakeOneOf(kMinuteMarks) && m_scan.TakeOneOf(kMinuteMarks)) return true;
    m_scan.GoBack(place);
    return false;
  }

  // What stands between two parts without marks, with a digit behind it; it is taken.
  bool TakeSeparator() {
    const WChar* const place = m_scan.Place();
    bool apart = m_scan.TakeBlanks();
    if (m_scan.Take(KTEXT(':')) || m_scan.TakeDash()) apart = true;
    m_scan.TakeBlanks();
    if (apart && m_scan.IsDigitAhead()) return true;
    m_scan.GoBack(place);
    return false;
  }
  bool IsSeparatorAhead() {
    const WChar* const place = m_scan.Place();
    const bool found = TakeSeparator();
    m_scan.GoBack(place);
    return found;
  }

  // The next part, below sixty, and its place in the whole.
  bool Part(const WChar* fault, double perDegree, Amount& part) {
    const WChar* const place = m_scan.Place();
    if (!m_scan.TakeNumber(part, false)) return false;
    if (part.value >= kParts) return m_scan.Fail(fault, place);
    (perDegree == kParts ? m_minutes : m_seconds) = part.value;
    return true;
  }

  // What follows the degrees or their mark.
  bool Minutes(const Amount& degrees) {
    const bool separated = TakeSeparator();
    if (!separated && !m_scan.IsDigitAhead()) return true;
    if (!degrees.isWhole) return m_scan.Fail(kDecimalsFault);
    Amount minutes;
    if (!Part(kMinutesFault, kParts, minutes)) return false;
    const WChar* const behind = m_scan.Place();
    m_scan.TakeBlanks();
    const bool marked =
        m_scan.TakeOneOf(kMinuteMarks) || (m_byLetters && TakeLetterMark(KTEXT("m")));
    if (!marked) m_scan.GoBack(behind);
    return Seconds(degrees, minutes, marked);
  }

  bool Seconds(const Amount& degrees, const Amount& minutes, bool marked) {
    const bool separated = TakeSeparator();
    if (separated || (marked && m_scan.IsDigitAhead())) {
      if (!minutes.isWhole) return m_scan.Fail(kDecimalsFault);
      Amount seconds;
      if (!Part(kSecondsFault, kParts * kParts, seconds)) return false;
      m_scan.TakeBlanks();
      if (!TakeSecondMark() && m_byLetters && !TakeLetterOfSeconds()) return false;
    }
    m_angle.value = Join(degrees.value);
    return true;
  }

  // Of a latitude the letter could be south as well.
  bool TakeLetterOfSeconds() {
    const WChar* const place = m_scan.Place();
    if (!TakeLetterMark(KTEXT("s"))) return true;
    const bool alone = m_scan.AtEnd() && m_front.place == nullptr;
    if (m_letters != AngleLetters::Latitude || !alone) return true;
    return m_scan.FailWith(kMeaningFault, place, WString(KTEXT("\"")),
                           LetterOf(enumLatLonType::Latitude, true));
  }

  double Join(double degrees) const {
    return m_seconds / (kParts * kParts) + (m_minutes / kParts + degrees);
  }

  bool MinutesAlone(const Amount& minutes, const WChar* place) {
    if (minutes.value >= kParts) return m_scan.Fail(kMinutesFault, place);
    m_angle.unit = enumAngleUnits::Degree;
    m_minutes = minutes.value;
    Amount degrees;
    degrees.value = 0;
    return Seconds(degrees, minutes, true);
  }

  bool SecondsAlone(const Amount& seconds, const WChar* place) {
    // The packed form is shown with the sign of seconds behind it.
    if (m_units == enumDisplayAngleUnits::DMSPacked && !seconds.isWhole) {
      return Packed(seconds, place);
    }
    if (seconds.value >= kParts) return m_scan.Fail(kSecondsFault, place);
    m_angle.unit = enumAngleUnits::Degree;
    m_seconds = seconds.value;
    m_angle.value = Join(0);
    return true;
  }

  // A number without any mark.
  bool Alone(const Amount& degrees, const WChar* place) {
    if (degrees.decimals.empty() || !IsDMSAngleUnits(m_units)) return true;
    if (m_units == enumDisplayAngleUnits::DMSPacked) return Packed(degrees, place);
    const WString whole = WholeOf(degrees);
    return m_scan.FailWith(
        kMeaningFault, place, m_scan.TextSince(place) + KTEXT('\u00B0'),
        (whole + KTEXT("\u00B0")).Concat(TextOf(degrees.decimals)) + KTEXT('\''));
  }

  // Two digits each for minutes and seconds, then the decimals of these.
  bool Packed(const Amount& number, const WChar* place) {
    const WideView digits = number.decimals;
    const std::size_t odd = digits.size() < 2 ? 0 : 2;
    if (digits.size() == odd + 1) return TwoMeanings(number, odd, place);
    const WChar* const text = digits.data();
    m_minutes = Pair(text);
    if (m_minutes >= kParts) return m_scan.Fail(kMinutesFault, text);
    if (digits.size() > 2) m_seconds = Pair(text + 2);
    if (m_seconds >= kParts) return m_scan.Fail(kSecondsFault, text + 2);
    double unit = 1;
    double rest = 0;
    // More digits than a double has don't count.
    for (std::size_t i = 4; i < digits.size() && unit < 1e17; ++i) {
      rest = rest * 10 + (text[i] - KTEXT('0'));
      unit *= 10;
    }
    m_seconds += rest / unit;
    m_angle.value = Join(std::floor(number.value));
    return true;
  }

  bool TwoMeanings(const Amount& number, std::size_t odd, const WChar* place) {
    const WString front =
        (WholeOf(number) + KTEXT('.')).Concat(TextOf(number.decimals.substr(0, odd)));
    const WString digit = TextOf(number.decimals.substr(odd));
    return m_scan.FailWith(kMeaningFault, place, (front + KTEXT('0')).Concat(digit),
                           front.Concat(digit) + KTEXT('0'));
  }

  static double Pair(const WChar* text) {
    return (text[0] - KTEXT('0')) * 10 + (text[1] - KTEXT('0'));
  }
  static WString TextOf(WideView units) {
    return WString(units.data(), 0, static_cast<int>(units.size()));
  }
  static WString WholeOf(const Amount& amount) {
    return amount.whole.empty() ? WString(KTEXT("0")) : TextOf(amount.whole);
  }

  double Degrees() const {
    return Convert(m_angle.value, eConvertAngleType::Length,
                   {m_angle.unit, enumHorizStartAngle::North, enumAngleDir::Clockwise},
                   {enumAngleUnits::Degree, enumHorizStartAngle::North, enumAngleDir::Clockwise},
                   enumNormalizeAngle::None);
  }

  bool ApplyLetters(const WChar* begin) {
    const bool bearings =
        m_letters == AngleLetters::Bearing || m_letters == AngleLetters::BearingOrHemisphere;
    const bool both = m_front.place != nullptr && m_back.place != nullptr;
    if (bearings && both) return Bearing(begin);
    if (both) return m_scan.Fail(kTwoLettersFault, m_back.place);
    const Letter& letter = m_front.place != nullptr ? m_front : m_back;
    enumLatLonType type = m_letters == AngleLetters::Latitude    ? enumLatLonType::Latitude
                          : m_letters == AngleLetters::Longitude ? enumLatLonType::Longitude
                                                                 : enumLatLonType::None;
    if (letter.place != nullptr) {
      if (m_letters == AngleLetters::Bearing) return m_scan.Fail(kBearingFault, letter.place);
      if (type != enumLatLonType::None && type != letter.type) return WrongLetter(type, letter);
      if (m_hasSign) return m_scan.Fail(kLetterSignFault, letter.place);
      type = letter.type;
      if (letter.negative) m_angle.value = -m_angle.value;
    }
    return IsWithinReach(type, begin);
  }

  bool WrongLetter(enumLatLonType type, const Letter& letter) {
    const bool latitude = type == enumLatLonType::Latitude;
    return m_scan.FailWith(latitude ? kLatitudeLetterFault : kLongitudeLetterFault, letter.place,
                           LetterOf(type, false), LetterOf(type, true));
  }

  bool IsWithinReach(enumLatLonType type, const WChar* begin) {
    struct Reach {
      double most;
      const WChar* fault;
    };
    static constexpr Reach kReaches[] = {
        {1e6, kAngleFault}, {90, kLatitudeFault}, {180, kLongitudeFault}};
    const Reach& reach = kReaches[static_cast<int>(type)];
    return std::fabs(Degrees()) <= reach.most || m_scan.Fail(reach.fault, begin);
  }

  bool Bearing(const WChar* begin) {
    const bool inOrder =
        m_front.type == enumLatLonType::Latitude && m_back.type == enumLatLonType::Longitude;
    if (!inOrder) return m_scan.Fail(kBearingFault, m_front.place);
    const double aside = Degrees();
    if (!(aside <= 90)) return m_scan.Fail(kBearingRangeFault, begin);
    const double east = m_front.negative ? 180 - aside : aside;
    m_angle.value = m_back.negative && east > 0 ? 360 - east : east;
    m_angle.unit = enumAngleUnits::Degree;
    m_angle.isBearing = true;
    return true;
  }

  ValueScan& m_scan;
  const enumDisplayAngleUnits m_units;
  const AngleLetters m_letters;
  ScannedAngle& m_angle;
  Letter m_front;
  Letter m_back;
  bool m_hasSign = false;
  bool m_byLetters = false;  // 45d30m15s
  double m_minutes = 0;
  double m_seconds = 0;
};

}  // namespace

bool ScanAngle(ValueScan& scan, enumDisplayAngleUnits units, AngleLetters letters,
               ScannedAngle& angle) {
  return AngleScan(scan, units, letters, angle).Run();
}

}  // namespace kelp::detail
