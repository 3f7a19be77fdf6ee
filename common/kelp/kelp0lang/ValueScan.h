// Takes a text apart for the strict reading of values; internal to the library.
//
// Whatever takes a piece says whether it was there. The first thing that is wrong is kept, with its
// place, and whoever meets it returns.
#pragma once

#include <string_view>

#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/String.h"
#include "kelp0lang/Translate.h"
#include "kelp0lang/ValueCheckResult.h"

namespace kelp::detail {

using WideView = std::basic_string_view<WChar>;

// Source texts of what can be wrong.
inline constexpr const WChar* kNoValueFault = KXLATE("there is no value");
inline constexpr const WChar* kNumberFault = KTEXT("not a number");
inline constexpr const WChar* kUnexpectedFault = KXLATE("this doesn't belong to the value");
inline constexpr const WChar* kUnitFault = KXLATE("no unit of such a value");
inline constexpr const WChar* kSignFault = KXLATE("a value has one sign");
inline constexpr const WChar* kGroupFault =
    KXLATE("a number has one decimal mark, and its digits aren't grouped");
inline constexpr const WChar* kDecimalsFault = KXLATE("only the last part has decimals");
inline constexpr const WChar* kDenominatorFault =
    KXLATE("the denominator of a fraction can't be zero");
inline constexpr const WChar* kFractionFault =
    KXLATE("a fraction behind a whole number must be below one");
inline constexpr const WChar* kRangeFault = KTEXT("out of range");
inline constexpr const WChar* kMeaningFault = KXLATE("this could be {1} or {2}");

// A number without its sign.
struct Amount {
  double value = 0.0;
  WideView whole;     // the digits in front of the decimal mark
  WideView decimals;  // those behind it
  bool isWhole = true;
  bool hasFraction = false;  // such as 1/2
};

class ValueScan {
 public:
  explicit ValueScan(const WString& text);

  bool AtEnd() const { return m_at == m_end; }
  // The unit so many places ahead, 0 beyond the end.
  WChar Ahead(int places = 0) const { return m_end - m_at > places ? m_at[places] : WChar{0}; }
  bool IsDigitAhead() const;
  // A digit or the character of a fraction.
  bool IsAmountAhead() const;
  bool IsFractionAhead() const;
  const WChar* Place() const { return m_at; }
  void GoBack(const WChar* place) { m_at = place; }

  bool TakeBlanks();
  bool Take(WChar unit);
  bool TakeOneOf(WideView units);
  // An English word in lower case, met in any case, that no further letter follows.
  bool TakeWord(WideView word);
  // One sign; false where a second follows.
  bool TakeSign(bool& negative, bool& hasSign);
  bool TakeDash();

  // Digits with at most one decimal mark, and an exponent where one is allowed.
  bool TakeNumber(Amount& amount, bool allowExponent);
  // The same, or a fraction, or both.
  bool TakeAmount(Amount& amount, bool allowExponent);
  // Digits over digits, or the character of a fraction.
  bool TakeFraction(double& value);

  // Keeps what is wrong here, or at a place, and is false.
  bool Fail(const WChar* source) { return Fail(source, m_at); }
  bool Fail(const WChar* source, const WChar* place);
  bool FailWith(const WChar* source, const WChar* place, const WString& first,
                const WString& second);
  // Whether nothing but blanks is left.
  bool Ends();
  const WChar* Start() const { return m_start; }
  WString TextSince(const WChar* place) const;

  // The value where nothing was wrong and the number is within reach, else what is wrong.
  TValueCheck Finish(double value);

 private:
  double Read(const WChar* begin, const WChar* end) const;

  const WChar* const m_begin;
  const WChar* m_start;  // behind the blanks in front
  const WChar* m_end;    // before the blanks at the end
  const WChar* m_at;
  TValueCheck m_fault;
};

enum class UnitWord { None, Foot, Other };

// A unit behind a number: so many metres or feet, to the power that was asked for.
struct TypedUnit {
  enumDistUnits base = enumDistUnits::Metre;
  double factor = 1;
  UnitWord word = UnitWord::None;
};

// The unit ahead, of length, area or volume by power, where foot is what feet are that don't say
// more. None is no fault, an unknown one is.
bool ScanUnit(ValueScan& scan, int power, enumDistUnits foot, TypedUnit& unit);

// The foot of what is shown: US survey or international.
inline enumDistUnits FootOf(bool usSurvey) {
  return usSurvey ? enumDistUnits::USSurveyFoot : enumDistUnits::InternationalFoot;
}

// A length in the arithmetic unit of units, a number of
// feet with partsOnly: no unit but the marks of feet and inches.
bool ScanLength(ValueScan& scan, enumDisplayDistUnits units, bool partsOnly, double& value);
// An area in square metres, a volume in cubic metres.
bool ScanArea(ValueScan& scan, enumDisplayAreaUnits units, double& value);
bool ScanVolume(ValueScan& scan, enumDisplayVolumeUnits units, double& value);

// Which letters an angle may have.
enum class AngleLetters { None, Bearing, BearingOrHemisphere, Latitude, Longitude };

struct ScannedAngle {
  double value = 0.0;
  enumAngleUnits unit = enumAngleUnits::Degree;
  bool isBearing = false;  // value is then an azimuth in degrees
};
bool ScanAngle(ValueScan& scan, enumDisplayAngleUnits units, AngleLetters letters,
               ScannedAngle& angle);

}  // namespace kelp::detail
