// Searches within wide and narrow text; internal to the library.
//
// Both stay between the given ends: the wide ones go eight units at a time where the processor has
// SSE2, as every 64-bit x86 does.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>

#include "kelp0lang/WideChar.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kelp::detail {

// The first unit equal to wanted, or end.
inline const char* FindUnit(const char* begin, const char* end, char wanted) {
  const void* found = std::memchr(begin, wanted, static_cast<std::size_t>(end - begin));
  return found == nullptr ? end : static_cast<const char*>(found);
}

// The first unit equal to a or to b, or end.
inline const WChar* FindEither(const WChar* begin, const WChar* end, WChar a, WChar b) {
#ifdef __SSE2__
  const __m128i wantedA = _mm_set1_epi16(static_cast<short>(a));
  const __m128i wantedB = _mm_set1_epi16(static_cast<short>(b));
  for (; end - begin >= 16; begin += 16) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin + 8));
    const __m128i hitLow =
        _mm_or_si128(_mm_cmpeq_epi16(low, wantedA), _mm_cmpeq_epi16(low, wantedB));
    const __m128i hitHigh =
        _mm_or_si128(_mm_cmpeq_epi16(high, wantedA), _mm_cmpeq_epi16(high, wantedB));
    const int hits = _mm_movemask_epi8(_mm_packs_epi16(hitLow, hitHigh));
    if (hits != 0) return begin + __builtin_ctz(static_cast<unsigned>(hits));
  }
#endif
  return std::find_if(begin, end, [a, b](WChar unit) { return unit == a || unit == b; });
}

inline const WChar* FindUnit(const WChar* begin, const WChar* end, WChar wanted) {
#ifdef __SSE2__
  const __m128i sought = _mm_set1_epi16(static_cast<short>(wanted));
  for (; end - begin >= 16; begin += 16) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin + 8));
    const int hits = _mm_movemask_epi8(
        _mm_packs_epi16(_mm_cmpeq_epi16(low, sought), _mm_cmpeq_epi16(high, sought)));
    if (hits != 0) return begin + __builtin_ctz(static_cast<unsigned>(hits));
  }
#endif
  return std::find(begin, end, wanted);
}

// The first place of a terminated text in [begin, end), itself ended by the first zero unit at the
// latest; null if there is none.
inline const char* FindText(const char* begin, const char*, const char* wanted) {
  return std::strstr(begin, wanted);
}

inline const WChar* FindText(const WChar* begin, const WChar* end, const WChar* wanted) {
  if (*wanted == 0) return begin;
  for (;;) {
    begin = FindEither(begin, end, *wanted, 0);
    if (begin == end || *begin == 0) return nullptr;
    // The units behind end - 1 are met only through the terminator at end, which differs from every
    // unit of wanted before its own terminator.
    const WChar* text = begin + 1;
    const WChar* rest = wanted + 1;
    while (*rest != 0 && *text == *rest) ++text, ++rest;
    if (*rest == 0) return begin;
    ++begin;
  }
}

}  // namespace kelp::detail
