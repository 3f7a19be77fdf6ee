#include "kelp0lang/AngleForm.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/Translate.h"
#include "kelp0lang/UnitParts.h"

using kelp::IsNotSet;
using kelp::kNotSet;
using kelp::kNotSetThreshold;
using kelp::WString;
using kelp::detail::DigitRun;
using kelp::detail::DigitRuns;
using kelp::detail::Format;
using kelp::detail::kExactPowersOf10;
using kelp::detail::kPowersOf10;
using kelp::detail::ProcessDecimalPoint;
using kelp::detail::RoundToCount;
using kelp::detail::TextWriter;
using kelp::detail::ToInt32;
using kelp::detail::WithSign;

namespace {

constexpr double kPi = 3.141592653589793;

// The most decimals whose power of ten a count holds.
constexpr int kMostPowers = 18;

std::int64_t WholePower(std::size_t exponent) {
  return static_cast<std::int64_t>(kPowersOf10[exponent]);
}

double PowerOfTen(int exponent) {
  constexpr int kExact = std::size(kExactPowersOf10) - 1;
  return exponent > kExact ? std::pow(10.0, exponent) : kExactPowersOf10[exponent];
}

double Scale(double value, double factor, double divisor) {
  if (IsNotSet(value)) return kNotSet;
  const double result = value * factor / divisor;
  return IsNotSet(result) ? kNotSet : result;
}

// Decimal degrees of parts that aren't negative.
double JoinParts(double degrees, double minutes, double seconds) {
  return minutes / 60 + degrees + seconds / 3600;
}

// A number at 15 significant digits, cut at its decimal point: whole + rest / scale.
struct DecimalCut {
  explicit DecimalCut(double value) : negative(value < 0), whole(std::fabs(value)) {
    constexpr double kLimit = 1e15;
    if (!(whole < kLimit)) return;
    std::size_t decimals = kMostPowers;
    while (whole * kExactPowersOf10[decimals] >= kLimit) --decimals;
    scale = WholePower(decimals);
    const std::int64_t count = RoundToCount(whole * static_cast<double>(scale));
    whole = static_cast<double>(count / scale);
    rest = count % scale;
  }

  double Fraction(double factor) const {
    return static_cast<double>(rest) * factor / static_cast<double>(scale);
  }

  bool negative;
  double whole;
  std::int64_t rest = 0;
  std::int64_t scale = 1;
};

// The double nearest to whole + rest / scale, as long as the sum in units of the last decimal is
// exact, so up to some thousand degrees.
double JoinDecimal(double whole, double rest, double scale) {
  return (whole * scale + rest) / scale;
}

// Degrees with the sign, minutes, and millionths of a second.
struct Sesg {
  explicit Sesg(double sesd) {
    if (IsNotSet(sesd)) return;
    constexpr std::int64_t kPerMinute = 60'000'000;
    constexpr std::int64_t kPerDegree = 60 * kPerMinute;
    const std::int64_t count = RoundToCount(sesd * 3.6e9);
    const std::int64_t rest = std::abs(count % kPerDegree);
    degrees = count / kPerDegree;
    minutes = static_cast<int>(rest / kPerMinute);
    millionths = rest % kPerMinute;
  }

  double Seconds() const { return static_cast<double>(millionths) / 1e6; }

  std::int64_t degrees = 0;
  int minutes = 0;
  std::int64_t millionths = 0;
};

}  // namespace

double AngCentFromRadi(double value) {
  return Scale(value, 200.0, kPi);
}
double AngCentFromSesd(double value) {
  return Scale(value, 200.0, 180.0);
}
double AngRadiFromCent(double value) {
  return Scale(value, kPi, 200.0);
}
double AngRadiFromSesd(double value) {
  return Scale(value, kPi, 180.0);
}
double AngSesdFromCent(double value) {
  return Scale(value, 180.0, 200.0);
}
double AngSesdFromRadi(double value) {
  return Scale(value, 180.0, kPi);
}

double AngSesdFromSesg(int d, int m, double s) {
  if (IsNotSet(s)) return kNotSet;
  return WithSign(JoinParts(std::fabs(d), std::fabs(m), std::fabs(s)), d < 0);
}

double AngCentFromSesg(int d, int m, double s) {
  return AngCentFromSesd(AngSesdFromSesg(d, m, s));
}
double AngRadiFromSesg(int d, int m, double s) {
  return AngRadiFromSesd(AngSesdFromSesg(d, m, s));
}

void AngSesgFromSesd(double value, int& d, int& m, double& s) {
  const Sesg angle(value);
  d = ToInt32(angle.degrees);
  m = angle.minutes;
  s = angle.Seconds();
}

void AngSesgFromCent(double value, int& d, int& m, double& s) {
  AngSesgFromSesd(AngSesdFromCent(value), d, m, s);
}

void AngSesgFromRadi(double value, int& d, int& m, double& s) {
  AngSesgFromSesd(AngSesdFromRadi(value), d, m, s);
}

void AngSesgFromNmea(double value, int& d, int& m, double& s) {
  const DecimalCut number(IsNotSet(value) ? 0.0 : value);
  d = ToInt32(WithSign(number.whole / 100, number.negative));
  m = ToInt32(WithSign(std::fmod(number.whole, 100), number.negative));
  s = WithSign(number.Fraction(60), number.negative);
}

double AngRadiFromNmea(double value) {
  if (IsNotSet(value)) return kNotSet;
  int d, m;
  double s;
  AngSesgFromNmea(value, d, m, s);
  return AngRadiFromSesg(d, m, s);
}

double AngGraPriDcPFromRadi(double value) {
  const double degrees = AngSesdFromRadi(value);
  if (IsNotSet(degrees)) return kNotSet;
  constexpr double kPerMinute = 1e10;
  constexpr double kPerDegree = 60 * kPerMinute;
  double whole = std::floor(std::fabs(degrees));
  double rest = std::round((std::fabs(degrees) - whole) * kPerDegree);
  if (rest == kPerDegree) {
    whole += 1;
    rest = 0;
  }
  return WithSign(JoinDecimal(whole, rest, 100 * kPerMinute), degrees < 0 && whole > 0);
}

double AngRadiFromGraPriDcP(double value) {
  if (IsNotSet(value)) return kNotSet;
  const DecimalCut number(value);
  return WithSign(AngRadiFromSesd(JoinParts(number.whole, number.Fraction(100), 0)),
                  number.negative);
}

double AngSesgVertoFromRadi(double value) {
  const double degrees = AngSesdFromRadi(value);
  if (IsNotSet(degrees)) return kNotSet;
  const Sesg angle(degrees);
  const auto rest = angle.minutes * 1e8 + static_cast<double>(angle.millionths);
  return WithSign(JoinDecimal(std::fabs(static_cast<double>(angle.degrees)), rest, 1e10),
                  angle.degrees < 0);
}

double AngRadiFromSesgVerto(double value) {
  if (IsNotSet(value)) return kNotSet;
  const DecimalCut number(value);
  const std::int64_t hundredths = number.rest * 100;
  const auto minutes = static_cast<double>(hundredths / number.scale);
  const double seconds =
      static_cast<double>(hundredths % number.scale) * 100 / static_cast<double>(number.scale);
  return WithSign(AngRadiFromSesd(JoinParts(number.whole, minutes, seconds)), number.negative);
}

namespace {

constexpr int kTextRoom = 256;
// As many decimals as leave room for everything else.
constexpr int kMostDecimals = 230;

// Degrees with the sign, minutes, and the text of the seconds, blanks in front included.
struct SesgText {
  SesgText(double sesd, int dec, WChar point) {
    const Sesg angle(sesd);
    minutes = angle.minutes;
    std::int64_t wholeDegrees = angle.degrees;
    dec = std::clamp(dec, 0, kMostDecimals);
    PrintSeconds(angle.Seconds(), dec, point);
    if (ShowsSixty()) {
      PrintSeconds(0, dec, point);
      if (++minutes == 60) {
        minutes = 0;
        wholeDegrees += sesd < 0 ? -1 : 1;
      }
    }
    degrees = ToInt32(wholeDegrees);
  }

  int degrees;
  int minutes;
  WChar seconds[kTextRoom];

 private:
  void PrintSeconds(double value, int dec, WChar point) {
    Format(seconds, kTextRoom, point, KTEXT("%*.*f"), dec + 3, dec, value);
  }
  bool ShowsSixty() const {
    const WChar* text = seconds;
    while (*text == KTEXT(' ')) ++text;
    return text[0] == KTEXT('6') && text[1] == KTEXT('0');
  }
};

WString FourPlaces(double sesd, int dec, WChar point, const WChar* format) {
  if (IsNotSet(sesd)) return WString();
  const SesgText angle(sesd, dec, point);
  WChar text[kTextRoom];
  Format(text, kTextRoom, point, format, angle.degrees, angle.minutes, angle.seconds);
  return WString(text);
}

WString WithLetter(double radians, int dec, WChar positive, WChar negative) {
  if (IsNotSet(radians)) return WString();
  const WChar point = ProcessDecimalPoint();
  const SesgText angle(AngSesdFromRadi(std::fabs(radians)), dec, point);
  WChar text[kTextRoom];
  Format(text, kTextRoom, point, KTEXT("%d\x00B0 %2d' %ls\" %c"), angle.degrees, angle.minutes,
         angle.seconds, radians < 0 ? negative : positive);
  return WString(text);
}

}  // namespace

WString StrAngSesgFromRadi(double value, int dec) {
  return StrAngSesgFromSesd(AngSesdFromRadi(value), dec);
}

WString StrAngSesgFromSesd(double value, int dec) {
  return FourPlaces(value, dec, ProcessDecimalPoint(), KTEXT("%4d\x00B0%2d'%ls"));
}

WString StrAngSesgFromCent(double value, int dec) {
  const double sesd = AngSesdFromCent(value);
  if (IsNotSet(sesd)) return WString();
  const WChar point = ProcessDecimalPoint();
  const SesgText angle(sesd, dec, point);
  WChar text[kTextRoom];
  const WChar* sign = value < 0 && angle.degrees == 0 ? KTEXT("-") : KTEXT("");
  Format(text, kTextRoom, point, KTEXT("%ls%d\x00B0%2d'%ls\""), sign, angle.degrees, angle.minutes,
         angle.seconds);
  return WString(text);
}

WString StrAngSesgNoSmbFromRadi(double value, int dec) {
  return FourPlaces(AngSesdFromRadi(value), dec, KTEXT('.'), KTEXT("%4d %2d %ls"));
}

WString StrLatSesgFromRadi(double value, int dec) {
  return WithLetter(value, dec, KTEXT('N'), KTEXT('S'));
}

WString StrLonSesgFromRadi(double value, int dec) {
  return WithLetter(value, dec, KTEXT('E'), KTEXT('O'));
}

WString StrGradiFromRadi(double value) {
  if (IsNotSet(value)) return WString();
  const Sesg angle(AngSesdFromRadi(std::fabs(value)));
  WChar text[kTextRoom];
  Format(text, kTextRoom, KTEXT('.'), KTEXT("%c%d"), value < 0 ? KTEXT('-') : KTEXT('+'),
         ToInt32(angle.degrees));
  return WString(text);
}

namespace {

// An angle without its sign, in whole degrees, minutes and seconds, and units of which a second has
// perSecond.
struct DMSCount {
  DMSCount(double deg, int dec) {
    constexpr int kMostRounded = 12;
    constexpr auto kLimit = static_cast<double>(kelp::detail::kMaxCount);
    if (!(deg < kNotSetThreshold)) deg = 0.0;
    decimals = std::clamp(dec, 0, kMostRounded);
    while (decimals > 0 && std::fabs(deg) * 3600 * PowerOfTen(decimals) > kLimit) --decimals;
    perSecond = WholePower(static_cast<std::size_t>(decimals));
    const std::int64_t perDegree = 3600 * perSecond;
    const std::int64_t count = std::abs(RoundToCount(static_cast<double>(perDegree) * deg));
    // The one division by a number that the compiler doesn't know.
    const std::int64_t wholeSeconds = count / perSecond;
    units = count - wholeSeconds * perSecond;
    degrees = ToInt32(wholeSeconds / 3600);
    minutes = static_cast<std::int32_t>(wholeSeconds / 60 % 60);
    seconds = static_cast<std::int32_t>(wholeSeconds % 60);
  }

  double Seconds() const {
    return static_cast<double>(seconds * perSecond + units) / static_cast<double>(perSecond);
  }

  int decimals;
  std::int64_t perSecond;
  std::int32_t degrees;
  std::int32_t minutes;
  std::int32_t seconds;
  std::int64_t units;
};

// What stands behind the degrees and behind the minutes, 0 for nothing.
struct DMSForm {
  WChar behindDegrees;
  WChar behindMinutes;
  bool packed;
};

const DMSForm* FindForm(enumDisplayAngleUnits form) {
  static constexpr DMSForm kForms[] = {
      {KTEXT('\x00B0'), KTEXT('\''), false},
      {KTEXT(' '), KTEXT(' '), false},
      {KTEXT('.'), 0, true},
  };
  if (!IsDMSAngleUnits(form)) return nullptr;
  return &kForms[static_cast<int>(form) - static_cast<int>(enumDisplayAngleUnits::DMSSymbols)];
}

// The decimals of the packed form are an int.
void PutPackedDecimals(TextWriter& writer, std::int64_t value, int decimals, int dec) {
  for (; decimals < dec && ToInt32(value) == value; ++decimals) value *= 10;
  writer.Digits(static_cast<std::uint64_t>(ToInt32(value)), dec);
}

void PutSeconds(TextWriter& writer, const DMSCount& angle, const DMSForm& form, int dec) {
  writer.TwoDigits(angle.seconds);
  if (dec <= 0) return;
  if (form.packed) {
    PutPackedDecimals(writer, angle.units, angle.decimals, dec);
    return;
  }
  writer.Put(ProcessDecimalPoint());
  writer.Digits(static_cast<std::uint64_t>(angle.units), angle.decimals);
  writer.Zeros(dec - angle.decimals);
}

}  // namespace

TDMS DegToTDMS(double deg, int dec) {
  const DMSCount angle(deg, dec);
  return {angle.degrees, angle.minutes, angle.Seconds(), deg < 0.0};
}

double TDMSToDeg(const TDMS& angle) {
  if (IsNotSet(angle.seconds)) return kNotSet;
  const double magnitude = std::fabs(angle.seconds) / 3600 + (angle.minutes / 60.0 + angle.degrees);
  return WithSign(magnitude, angle.negative);
}

WString DegToDMS(double deg, enumDisplayAngleUnits form, enumLatLonType type, int dec) {
  const DMSForm* shape = FindForm(form);
  if (IsNotSet(deg) || shape == nullptr) return WString();
  dec = std::min(dec, kMostDecimals);
  const DMSCount angle(deg, dec);
  WChar letter = 0;
  const bool hasLetter = LatLonSignToSign(deg < 0, type, letter);

  WChar text[kTextRoom];
  TextWriter writer(text);
  if (deg < 0 && !hasLetter) writer.Put(KTEXT('-'));
  writer.Number(angle.degrees);
  writer.Put(shape->behindDegrees);
  writer.TwoDigits(angle.minutes);
  if (shape->behindMinutes != 0) writer.Put(shape->behindMinutes);
  PutSeconds(writer, angle, *shape, dec);
  writer.Put(KTEXT('"'));
  if (hasLetter) writer.Put(letter);
  return writer.Text();
}

namespace {

// The digits from begin on as decimals; those beyond what a double keeps don't count.
double Decimals(const DigitRun& run, int begin) {
  const int count = std::min(run.length - begin, kMostPowers);
  std::int64_t number = 0;
  for (int i = begin; i < begin + count; ++i) number = number * 10 + (run.text[i] - KTEXT('0'));
  return static_cast<double>(number) / PowerOfTen(count);
}

// Run 4 is read as a whole number first, with the limit of one.
double SecondsOf(const DigitRuns& digits) {
  const DigitRun& decimals = digits.runs[3];
  return digits.runs[2].Number() + decimals.Number() / PowerOfTen(decimals.length);
}

// The digits behind the point of the packed form.
void ReadPacked(const DigitRun& run, TDMS& angle) {
  if (run.length < 3) {
    angle.minutes = run.Number();
    return;
  }
  angle.minutes = run.Number(0, 2);
  const int rest = run.length - 2;
  angle.seconds = rest < 3 ? run.Number(2, rest) : run.Number(2, 2) + Decimals(run, 4);
}

}  // namespace

TDMS DMSToTDMS(const WString& text, enumDisplayAngleUnits form, enumLatLonType type) {
  TDMS angle;
  if (!IsDMSAngleUnits(form)) return angle;
  const DigitRuns digits(text);
  if (digits.count == 0) return angle;
  angle.degrees = digits.runs[0].Number();
  if (form == enumDisplayAngleUnits::DMSPacked) {
    ReadPacked(digits.runs[1], angle);
  } else {
    angle.minutes = digits.runs[1].Number();
    angle.seconds = SecondsOf(digits);
  }
  const WChar last = text.ReadChar(text.Length() - 1);
  angle.negative = digits.minus != IsLatLonSignNegative(last, type);
  return angle;
}

double DMSToDeg(const WString& text, enumDisplayAngleUnits form, enumLatLonType type) {
  return TDMSToDeg(DMSToTDMS(text, form, type));
}

namespace {

// The source text of a hemisphere letter; null without hemispheres.
const WChar* LetterSource(bool negative, enumLatLonType type) {
  if (type == enumLatLonType::Latitude) {
    return negative ? KXLATE("S@@South (1 char)") : KXLATE("N@@North (1 char)");
  }
  if (type == enumLatLonType::Longitude) {
    return negative ? KXLATE("W@@West (1 char)") : KXLATE("E@@East (1 char)");
  }
  return nullptr;
}

}  // namespace

bool IsLatLonSignNegative(WChar c, enumLatLonType type) {
  const WChar* source = LetterSource(true, type);
  if (source == nullptr) return false;
  const WChar letter[] = {c, 0};
  return kelp::Xlate(source).CompareIgnoreCase(letter) == 0;
}

bool LatLonSignToSign(bool negative, enumLatLonType type, WChar& c) {
  const WChar* source = LetterSource(negative, type);
  if (source == nullptr) return false;
  if (!kelp::IsTranslateFileLoaded()) {
    c = *source;
    return true;
  }
  const WString letter = kelp::Xlate(source);
  if (letter.empty()) return false;
  c = letter.GetChar(0);
  return true;
}
