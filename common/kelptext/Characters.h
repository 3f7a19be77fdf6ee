// What a character can take in units of either width; internal to the libraries.
#pragma once

#include "kelptext/WideChar.h"

namespace kelp::detail {

// The longest that a character gets in the other width.
inline constexpr int kMaxCharacterUnits = 16;

// The halves of a character beyond U+FFFF.
constexpr bool IsHighSurrogate(WChar unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(WChar unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace kelp::detail
