// Lengths in feet, inches and a fraction of an inch.
//
//   FeetToFeetInch(5.53125, enumInchDecPrec::Eighths);           // 5'6"3/8
//   FeetInchToFeet(WString(KTEXT("5'6\"3/8")), enumInchDecPrec::Eighths);  // 5.53125
//
// The denominator of the fraction is 4, 8, 16, 32 or 64, chosen by enumInchDecPrec (MeasUnit.h);
// the fraction is always shown and never reduced. Values are rounded once, to whole fractions, a
// half upwards; that carries a fraction into the next inch and the next foot.
//
// A value above kelp::kNotSetThreshold is none. NaN counts as zero, and parts that 32 bits don't
// hold end at their limit: feet and inches beyond 2147483647 (654,553 km of feet) are shown as
// that many, with the inches and the fraction of the real value behind them. A negative length that
// rounds to zero keeps its sign, "-0'0"0/8".
//
// The readers take what digits they find, and traps come with that. Of what people type 12'6.5" is
// 12 feet, 6 inches and 5 fractions, 12'6-1/2" counts a denominator that no precision has as 64:
// 1/2 is 1/64 of an inch. 6" is six feet, 12.5 is 12 feet 5 inches, -junk5 minus five feet, and
// text without digits nothing. CheckLength (ValueCheck.h) is the strict reading.
//
// All functions are pure and may be called on any thread.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/String.h"

// A length in parts, none of them negative after a conversion.
struct TFeetInch {
  std::int32_t feet = 0;
  std::int32_t inches = 0;
  std::int32_t numerator = 0;
  enumInchDecPrec precision = enumInchDecPrec::SixtyFourths;  // the denominator
  bool negative = false;                                      // the sign of the whole length
};

// A value that isn't below the threshold gives zeros with the denominator 64.
KELP0LANG_API TFeetInch FeetToTFeetInch(double feet, enumInchDecPrec prec);
// The same with all of the length in inches, and no feet.
KELP0LANG_API TFeetInch InchToFeetInch(double inches, enumInchDecPrec prec);
// The way back, in feet.
KELP0LANG_API double TFeetInchToFeet(const TFeetInch& length);
// Inches and fraction alone; the feet don't count.
KELP0LANG_API double TFeetInchToInch(const TFeetInch& length);

// "5'6"3/8", and for inches "66"3/8", with "-" in front of a negative length. A value above the
// threshold gives the empty text.
KELP0LANG_API kelp::WString FeetToFeetInch(double feet, enumInchDecPrec prec);
KELP0LANG_API kelp::WString InchToString(double inches, enumInchDecPrec prec);

// Read such a text, or what a user types for it: up to four runs of digits, with anything between
// them, are feet (in the first form), inches, numerator and denominator. What is missing is 0, a
// missing denominator that of prec. A "-" at the front makes the length negative. A denominator
// that isn't one of the five counts as 64. A text without digits gives zeros with the denominator
// 64, the empty text zeros with prec. A run that 32 bits don't hold counts 2147483647.
KELP0LANG_API TFeetInch StringToFeetInch(const kelp::WString& text, enumInchDecPrec prec);
KELP0LANG_API TFeetInch InchStringToFeetInch(const kelp::WString& text, enumInchDecPrec prec);

// The same as a number. The empty text gives kelp::kNotSet.
KELP0LANG_API double FeetInchToFeet(const kelp::WString& text, enumInchDecPrec prec);
KELP0LANG_API double InchStringToInch(const kelp::WString& text, enumInchDecPrec prec);
