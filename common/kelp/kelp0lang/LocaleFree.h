// Formatted output and number parsing under a fixed "C" locale: the decimal point is always ".",
// whatever locale the program has set, so that text written on one machine reads back on another.
//
//   WChar text[32];
//   kelp_snwprintf(text, 32, KTEXT("%.3f"), northing);
//   double back = kelp_wtof(text);
//
// Templates are those of printf, read the same on every platform:
//   flags         - + 0 # and blank; "0" fills texts too
//   width         digits or "*"
//   precision     digits or "*"; for texts it counts units of the result
//   modifiers     hh h l ll I32 I64 I w j z t for the size of an argument, where l is the
//   platform's
//                 long; L is a long double, printed as the double nearest to it
//   conversions   d i u o x X, f F e E g G a A, c s, C S, p and %%
// Numbers are correctly rounded, exact ties to the even digit. An exponent has two digits or more,
// "%a" 13 digits by default; what isn't finite prints as "inf" or "nan" (capital under a capital
// conversion) with its sign. "%p" prints 16 capital hexadecimal digits. A null text prints as
// "(null)". "%n" isn't known.
//
// %c and %s take the width of the family that they are used in, %C and %S the other one; with h
// they take narrow and with l or w wide text in both. Text passes between the widths by the
// LC_CTYPE locale of the process.
//
// Nothing here throws, allocates or changes a locale, and everything may run on any thread.
#pragma once

#include <tchar.h>

#include <clocale>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

#include "kelp0lang/Export.h"
#include "kelptext/WideChar.h"

extern "C" {

// The number that a text begins with: blanks (the six of ASCII), a sign, digits with a point among
// them, and an exponent behind "e" or "E". Reading stops at the first unit that doesn't go on so;
// text without a number, and null, give 0. The result is the nearest double; a number too large
// gives HUGE_VAL with its sign, one too small 0. Hexadecimal numbers, "inf" and "nan" aren't read.
KELP0LANG_API double kelp_atof(const char* text);
KELP0LANG_API double kelp_wtof(const WChar* text);

// Into a buffer that has room for the text. They give its length without the terminator; a template
// that can't be read, or a character that the locale can't express, gives -1 and the empty text.
KELP0LANG_API int kelp_sprintf(char* buffer, const char* format, ...);
KELP0LANG_API int kelp_vsprintf(char* buffer, const char* format, std::va_list args);
KELP0LANG_API int kelp_swprintf(WChar* buffer, const WChar* format, ...);
KELP0LANG_API int kelp_vswprintf(WChar* buffer, const WChar* format, std::va_list args);

// Into a buffer of size units, terminator included. Text that doesn't fit isn't cut: it gives -1
// and the empty text, as all failures do. A null buffer, or one without room, gives -1.
KELP0LANG_API int kelp_sprintf_s(char* buffer, std::size_t size, const char* format, ...);
KELP0LANG_API int kelp_snwprintf(WChar* buffer, std::size_t size, const WChar* format, ...);
KELP0LANG_API int kelp_swprintf_s(WChar* buffer, std::size_t size, const WChar* format, ...);
KELP0LANG_API int kelp_vsnwprintf(WChar* buffer, std::size_t size, const WChar* format,
                                  std::va_list args);

// Onto a stream, as one piece between threads. They give the number of units, or -1 where the
// template can't be read, a character can't be expressed or the stream fails; what went before
// stays written. Wide text becomes multibyte text as fputws makes it, and a character of it that
// the locale lacks a "?", which the rest of the text follows.
KELP0LANG_API int kelp_printf(const char* format, ...);
KELP0LANG_API int kelp_vprintf(const char* format, std::va_list args);
KELP0LANG_API int kelp_fprintf(std::FILE* file, const char* format, ...);
KELP0LANG_API int kelp_vfprintf(std::FILE* file, const char* format, std::va_list args);
KELP0LANG_API int kelp_wprintf(const WChar* format, ...);
KELP0LANG_API int kelp_fwprintf(std::FILE* file, const WChar* format, ...);

// The "C" locale as an object of the C runtime, for a program's own calls of functions that take
// one. The library owns it and keeps it while it is loaded; null where it couldn't be made.
KELP0LANG_API _locale_t kelp_get_c_locale();
}

namespace kelp::detail {

// The engine behind every text that this library prints: a printf template over units of either
// width, with the decimal point as a parameter. It never allocates, and prints the same on every
// platform. Gives the length without the terminator; a text that doesn't fit into size units, or a
// template that can't be read, gives -1 and leaves the empty text.
int FormatV(char* buffer, std::size_t size, char point, const char* format, std::va_list args);
int FormatV(WChar* buffer, std::size_t size, WChar point, const WChar* format, std::va_list args);
int Format(char* buffer, std::size_t size, char point, const char* format, ...);
int Format(WChar* buffer, std::size_t size, WChar point, const WChar* format, ...);

// The text of "%.{decimals}f" without the road through a template: terminated, into a buffer of
// kFixedBuffer units. Gives the length, or -1 and no text for magnitudes from 2^63 up, for what
// isn't finite, and for more than 17 decimals.
inline constexpr int kFixedBuffer = 40;
int FormatFixed(WChar* buffer, double value, int decimals, WChar point);

// The decimal point of the process locale (LC_NUMERIC).
WChar ProcessDecimalPoint();

// Make and free what kelp_get_c_locale gives, when the library is attached and detached.
void CreateCLocale();
void FreeCLocale();

}  // namespace kelp::detail
