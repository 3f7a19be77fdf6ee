// Doubles to and from decimal text; internal to the library.
//
// What is written is correctly rounded, an exact tie to the even digit, and what is read is the
// nearest double. Nothing here allocates or looks at a locale.
#pragma once

#include <cstddef>

#include "kelptext/WideChar.h"

namespace kelp::detail {

inline constexpr int kMaxFixedDecimals = 17;
// Units of the longest text of WriteFixed: sign, 19 digits, point, decimals.
inline constexpr int kFixedRoom = 1 + 19 + 1 + kMaxFixedDecimals;

// The text of "%.{decimals}f", without a terminator; gives its length. It covers magnitudes below
// 2^63 and up to kMaxFixedDecimals decimals, and gives -1 for all else. Instantiated for both
// units.
template <class C>
int WriteFixed(C* target, double value, int decimals, C point);

// The parts of a floating conversion: body, then zeros that the body doesn't spell, then tail (the
// exponent). The decimal point is '.', letters are small.
struct FloatText {
  std::size_t bodySize;
  std::size_t zeros;
  std::size_t tailSize;
  // The longest body is that of 309 digits with all 1074 decimals that a double can have.
  char body[309 + 1 + 1074 + 1];
  char tail[8];
};

// The text of a finite magnitude under conversion f, e, g or a. A negative precision means the
// default; alternate is the flag '#'.
void SpellFloat(FloatText& out, double magnitude, char conversion, int precision, bool alternate);

// The number that terminated text begins with, see kelp_atof, under a given decimal point.
// Instantiated for both units.
template <class C>
double ParseDecimal(const C* text, C point = C{'.'});

}  // namespace kelp::detail
