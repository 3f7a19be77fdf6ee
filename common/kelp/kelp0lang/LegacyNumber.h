// Numbers: comparison with a tolerance, rounding by decimals, numbers out of text and text out of
// numbers.
//
//   WString text = StringDaDouble(northing, 12, 3);   // " 5049812.250"
//   double back = DoubleDaString(text);
//
// The not-set value of MeasUnit.h, 1.7e200, stands for no number: an empty text reads as it, and it
// prints as blanks. NaN is not "not set": no comparison holds for it, rounding gives it back, and
// it prints as "nan", minus infinity as "-inf". No function throws or has state; all run on any
// thread.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

// |a - b| below 0.001, in the values' own unit.
KELP0LANG_API bool UgualeA(double a, double b);
// a below b - 0.0006.
KELP0LANG_API bool MinoreDi(double a, double b);

// Rounding by decimals, dec from 0 to 5; v comes back unchanged for any other dec. It goes through
// v * 10^dec + 0.5, which is a double too: the number just below a half goes up with it, and so
// does an odd whole number of units from 2^52 (4.5e15) on.
//
// A half goes up: -2.5 gives -2.
KELP0LANG_API double ArrotondatoAtDec(double v, int dec);
// Downwards, also below zero: -2.51 with one decimal gives -2.6.
KELP0LANG_API double TroncatoAtDec(double v, int dec);
// To a whole number of steps, a half up, with the bounds of ArrotondatoAtDec, which count in steps
// here; v unchanged if either is not set. A step of 0 gives NaN, also for v of 0. Under a negative
// step a half goes down. More than 1.8e308 steps give infinity.
KELP0LANG_API double ArrotondatoAlVal(double v, double step);
// To a whole number: a half up, with the bounds of ArrotondatoAtDec, and downwards.
KELP0LANG_API double DoubleRound(double v);
KELP0LANG_API double DoubleTrunk(double v);

// To integers, clamped to -32750..32750 and -2100000000..2100000000. The first of each pair sends
// halves away from zero, the second drops the fraction. NaN gives 0.
KELP0LANG_API short IntRound(double v);
KELP0LANG_API short InteroEntro32000(double v);
KELP0LANG_API long LongRound(double v);
KELP0LANG_API long LongTrunk(double v);

// Numbers out of text. An empty text is not set, a text that begins with no number gives 0, and
// what follows the number doesn't matter.
//
// Text with a comma and no point: the comma is the decimal point. Other text is read with the
// decimal point of the process locale, so in the "C" locale "1,234.5" gives 1.
KELP0LANG_API double DoubleDaString(const kelp::WString& text);
// First drops everything but digits, points, minus signs and commas, which become points. Text
// without any of them is not set.
KELP0LANG_API double DoubleDaStringSoloNum(const kelp::WString& text);
// The decimal point is "." in every locale.
KELP0LANG_API double DoubleDaArChar(const char* text);

// DoubleDaString, cut to an integer and clamped as by LongTrunk and InteroEntro32000. An empty text
// gives the upper limit, or 0 by the NullZero form.
KELP0LANG_API long IntDaString(const kelp::WString& text);
KELP0LANG_API long IntDaStringNullZero(const kelp::WString& text);
KELP0LANG_API short ShortDaString32000(const kelp::WString& text);
// The integer that the text begins with, of 32 bits: one beyond them gives the nearest that fits.
// An empty text gives 0. The first is clamped to -32750..32750.
KELP0LANG_API short ShortDaStringNullZero(const kelp::WString& text);
KELP0LANG_API long LongDaStringNullZero(const kelp::WString& text);

// Text of v with dec decimals, right-justified in width places; a width below 1 gives the bare
// number. The decimal separator is that of the process locale. A not-set v gives width blanks. A
// negative dec prints 6 decimals. A number that takes more than 511 units gives empty text. What
// rounds to 0 from below keeps its sign: "-0.000".
KELP0LANG_API kelp::WString StringDaDouble(double v, int width, int dec);
// The same with every blank as "0": "  1.50" is "001.50", " -1.50" is "0-1.50".
KELP0LANG_API kelp::WString StringDaDoubleConZeri(double v, int width, int dec);
// The same without trailing zeros, nor a "." that they leave behind: "1.5", "2". Under a locale
// with another decimal separator that one stays.
KELP0LANG_API kelp::WString StringDaDoubleSenzaZeri(double v, int width, int dec);
// In decimal.
KELP0LANG_API kelp::WString StringDaInt(int v);

// The text of StringDaDouble, but with the decimal point "." in every locale, into a buffer with
// room enough; returns its length. The wide form takes a negative width as printf does: the number
// stands to the left in that many places.
KELP0LANG_API int ArCharDaDouble(char* out, double v, int width, int dec);
KELP0LANG_API int ArCharDaDouble(WChar* out, double v, int width, int dec);
