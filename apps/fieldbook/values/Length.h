// Lengths as they stand in a points file and in a table: which units there are, and how a text is
// read and written in one.
#pragma once

#include <string>

#include "fieldbook/values/Number.h"
#include "kelp0lang/MeasUnit.h"

namespace fieldbook {

struct LengthUnit {
  const WChar* name;    // on the command line
  const WChar* symbol;  // in heads; a source text
  enumDistUnits unit;   // the unit of its numbers
  bool inches;          // shown as feet and inches
  int decimals;         // shown where nothing else was asked for
};

// In the order of enumDisplayDistUnits.
inline constexpr LengthUnit kLengthUnits[] = {
    {KTEXT("m"), KTEXT("m"), enumDistUnits::Metre, false, 3},
    {KTEXT("ft"), KTEXT("ft"), enumDistUnits::InternationalFoot, false, 3},
    {KTEXT("us-ft"), KTEXT("US ft"), enumDistUnits::USSurveyFoot, false, 3},
    {KTEXT("ft-in"), KTEXT("ft-in"), enumDistUnits::InternationalFoot, true, 3},
    {KTEXT("us-ft-in"), KTEXT("US ft-in"), enumDistUnits::USSurveyFoot, true, 3},
    {KTEXT("ch"), KTEXT("ch"), enumDistUnits::InternationalChain, false, 5},
    {KTEXT("us-ch"), KTEXT("US ch"), enumDistUnits::USSurveyChain, false, 5},
};

inline const LengthUnit& UnitOf(enumDisplayDistUnits unit) {
  return kLengthUnits[static_cast<int>(unit)];
}
// The same feet without inches.
inline const LengthUnit& PlainFeet(const LengthUnit& inches) {
  return UnitOf(inches.unit == enumDistUnits::USSurveyFoot
                    ? enumDisplayDistUnits::USSurveyFoot
                    : enumDisplayDistUnits::InternationalFoot);
}

// The fractions of an inch by their denominators, in the order of enumInchDecPrec.
struct Fraction {
  const WChar* name;  // on the command line
  enumInchDecPrec precision;
};

inline constexpr Fraction kFractions[] = {
    {KTEXT("4"), enumInchDecPrec::Quarters},      {KTEXT("8"), enumInchDecPrec::Eighths},
    {KTEXT("16"), enumInchDecPrec::Sixteenths},   {KTEXT("32"), enumInchDecPrec::ThirtySeconds},
    {KTEXT("64"), enumInchDecPrec::SixtyFourths},
};

// Whether a length is short enough to be read: up to 500,000 km, since whole feet have 32 bits.
bool IsWithinReach(double value, const LengthUnit& unit);

// A length in the given unit, one of kLengthUnits, as the library's strict reading takes it
// (ValueCheck.h): a text without a unit of its own is in this one. Lengths out of reach are
// refused.
Reading ReadLength(const WString& text, const LengthUnit& unit, DecimalMark mark);

// How lengths are shown.
struct LengthStyle {
  const LengthUnit* unit;
  int decimals;
  enumInchDecPrec fraction;  // of an inch, for feet and inches
  bool isReduced = false;    // 12'6 1/2" in place of 12'6"4/8
};

// A length that is reckoned in one unit, shown in another; no text for a value that isn't set.
WString WriteLength(double value, const LengthUnit& from, const LengthStyle& style);
// The same in UTF-8.
void AppendLength(std::string& bytes, double value, const LengthUnit& from,
                  const LengthStyle& style);

}  // namespace fieldbook
