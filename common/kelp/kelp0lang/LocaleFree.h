// Formatted output and number parsing under a fixed "C" locale: the decimal point is always ".",
// whatever locale the program has set, so that text written on one machine reads back on another.
//
//   WChar text[32];
//   kelp_snwprintf(text, 32, KTEXT("%.3f"), northing);
//   double back = kelp_wtof(text);
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

#include "kelp0lang/Export.h"
#include "kelp0lang/WideChar.h"

namespace kelp::detail {

// The engine behind every text that this library prints: a printf template over units of either
// width, with the decimal point as a parameter. It never allocates, and prints the same on every
// platform. Gives the length without the terminator; a text that doesn't fit into size units, or a
// template that can't be read, gives -1 and leaves the empty text.
int FormatV(char* buffer, std::size_t size, char point, const char* format, std::va_list args);
int FormatV(WChar* buffer, std::size_t size, WChar point, const WChar* format, std::va_list args);
int Format(char* buffer, std::size_t size, char point, const char* format, ...);
int Format(WChar* buffer, std::size_t size, WChar point, const WChar* format, ...);

// The decimal point of the process locale (LC_NUMERIC).
WChar ProcessDecimalPoint();

}  // namespace kelp::detail
