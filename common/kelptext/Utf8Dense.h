// The UTF-8 of text in which much isn't ASCII: Greek, Cyrillic, Chinese, emoji; internal to the
// codec.
//
// Going from one such character to the next, a processor waits for each to know where the next one
// begins, and can't foresee their kinds. Here a pair of blocks is taken at once, every unit and
// every byte for itself. That takes a table's shuffle of bytes, which SSE2 lacks.
#pragma once

#ifdef __SSE2__

#include "kelptext/Characters.h"
#include "kelptext/Utf8Blocks.h"
#include "kelptext/WideChar.h"

namespace kelp::detail {

// Whether this processor can do what the two functions need.
bool CanTakeDensePairs() noexcept;

// How much of a pair of blocks is taken where a character begins: all but a character that the end
// cuts.
inline int DensePairSize(const WChar* units) noexcept {
  return kPair - (IsHighSurrogate(units[kPair - 1]) ? 1 : 0);
}
inline int DensePairSize(const unsigned char* bytes) noexcept {
  const unsigned char* const last = bytes + kPair - 1;
  return kPair - (last[-2] >= 0xF0 ? 3 : 0) - (last[-1] >= 0xE0 ? 2 : 0) - (*last >= 0xC0 ? 1 : 0);
}

// Each takes DensePairSize of a pair and gives how much it wrote: 0 where the text isn't
// well-formed.

// Reads kPair units and the one before; there is room for 4 * kPair bytes.
int EncodeDensePair(const WChar* units, char* out) noexcept;

// Reads kPair bytes and the three before; there is room for kPair units.
int DecodeDensePair(const unsigned char* bytes, WChar* out) noexcept;

}  // namespace kelp::detail

#endif
