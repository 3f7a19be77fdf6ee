// Lengths of wide and narrow text, comparison and searches within; internal to the library.
//
// All stay between the given ends: the wide ones go eight or sixteen units at a time where the
// processor has SSE2, as every 64-bit x86 does.
#pragma once

#include <tchar.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

#include "kelptext/WideChar.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kelp::detail {

// Units before the terminator.
inline std::size_t TerminatedLength(const char* text) {
  return std::strlen(text);
}
inline std::size_t TerminatedLength(const WChar* text) {
  return wcslen(text);
}

// A length that has been reckoned in 64 bits as that of a text; one that no text can have is
// refused as a block is that there is no memory for.
inline int FittingLength(std::uint64_t length) {
  if (length > INT_MAX) throw std::bad_alloc();
  return static_cast<int>(length);
}

#ifdef __SSE2__

// Lanes of all ones where eight units equal wanted.
inline __m128i EqualUnits(const WChar* units, WChar wanted) {
  return _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(units)),
                         _mm_set1_epi16(static_cast<short>(wanted)));
}

// One bit for each of the sixteen lanes of two results.
inline unsigned LaneBits(__m128i low, __m128i high) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
}

#endif

// Negative, 0 or positive: the order of count units as unsigned values.
inline int CompareUnits(const char* a, const char* b, std::size_t count) {
  return std::memcmp(a, b, count);
}

inline int CompareUnits(const WChar* a, const WChar* b, std::size_t count) {
#ifdef __SSE2__
  for (; count >= 8; a += 8, b += 8, count -= 8) {
    const __m128i theirs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
    const __m128i equal =
        _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a)), theirs);
    const auto other = static_cast<unsigned>(_mm_movemask_epi8(equal)) ^ 0xFFFFu;
    if (other != 0) {
      const int place = std::countr_zero(other) / 2;
      return a[place] - b[place];
    }
  }
#endif
  for (; count > 0; ++a, ++b, --count) {
    if (*a != *b) return *a - *b;
  }
  return 0;
}

// The first unit equal to wanted, or end.
inline const char* FindUnit(const char* begin, const char* end, char wanted) {
  const void* found = std::memchr(begin, wanted, static_cast<std::size_t>(end - begin));
  return found == nullptr ? end : static_cast<const char*>(found);
}

// The first unit equal to a or to b, or end.
inline const WChar* FindEither(const WChar* begin, const WChar* end, WChar a, WChar b) {
#ifdef __SSE2__
  for (; end - begin >= 16; begin += 16) {
    const unsigned hits =
        LaneBits(_mm_or_si128(EqualUnits(begin, a), EqualUnits(begin, b)),
                 _mm_or_si128(EqualUnits(begin + 8, a), EqualUnits(begin + 8, b)));
    if (hits != 0) return begin + std::countr_zero(hits);
  }
#endif
  return std::find_if(begin, end, [a, b](WChar unit) { return unit == a || unit == b; });
}

inline const WChar* FindUnit(const WChar* begin, const WChar* end, WChar wanted) {
#ifdef __SSE2__
  for (; end - begin >= 16; begin += 16) {
    const unsigned hits = LaneBits(EqualUnits(begin, wanted), EqualUnits(begin + 8, wanted));
    if (hits != 0) return begin + std::countr_zero(hits);
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
  const auto size = static_cast<std::ptrdiff_t>(TerminatedLength(wanted));
  if (size == 0) return begin;
#ifdef __SSE2__
  // Sixteen places at a time, those where the first and the last unit of wanted both fit: in
  // running text they are few.
  const std::ptrdiff_t last = size - 1;
  for (; end - begin >= 16 + last; begin += 16) {
    const __m128i fitLow =
        _mm_and_si128(EqualUnits(begin, *wanted), EqualUnits(begin + last, wanted[last]));
    const __m128i fitHigh =
        _mm_and_si128(EqualUnits(begin + 8, *wanted), EqualUnits(begin + 8 + last, wanted[last]));
    const __m128i zeroLow = EqualUnits(begin, 0);
    const __m128i zeroHigh = EqualUnits(begin + 8, 0);
    if (LaneBits(_mm_or_si128(fitLow, zeroLow), _mm_or_si128(fitHigh, zeroHigh)) == 0) continue;
    const unsigned zeros = LaneBits(zeroLow, zeroHigh);
    const unsigned beforeZero = (zeros - 1) & ~zeros;
    for (unsigned fits = LaneBits(fitLow, fitHigh) & beforeZero; fits != 0; fits &= fits - 1) {
      const WChar* place = begin + std::countr_zero(fits);
      if (std::equal(wanted, wanted + last, place)) return place;
    }
    if (zeros != 0) return nullptr;
  }
#endif
  for (;;) {
    begin = FindEither(begin, end, *wanted, 0);
    if (end - begin < size || *begin == 0) return nullptr;
    if (std::equal(wanted, wanted + size, begin)) return begin;
    ++begin;
  }
}

}  // namespace kelp::detail
