// Blocks of sixteen bytes of UTF-8, as the sources of the codec look at them; internal to them.
#pragma once

#ifdef __SSE2__

#include <emmintrin.h>

#include "kelptext/WideChar.h"

namespace kelp::detail {

inline constexpr int kBlock = 16;
inline constexpr int kPair = 2 * kBlock;

inline __m128i LoadBytes(const unsigned char* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}
inline __m128i LoadUnits(const WChar* units) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

inline __m128i AllBytes(int value) {
  return _mm_set1_epi8(static_cast<char>(value));
}

// Lanes of all ones where bytes[i] >= least, of which least isn't 0.
inline __m128i BytesFrom(__m128i bytes, int least) {
  return _mm_cmpeq_epi8(_mm_subs_epu8(AllBytes(least), bytes), _mm_setzero_si128());
}

// Lanes of all ones where a byte continues a sequence. As signed bytes these are the lowest.
inline __m128i Continuations(__m128i bytes) {
  return _mm_cmplt_epi8(bytes, AllBytes(0xC0));
}

// A block, and the bytes that stand one, two and three before its own.
struct ByteWindow {
  // Reads the three bytes before too.
  explicit ByteWindow(const unsigned char* bytes)
      : at(LoadBytes(bytes)),
        back1(LoadBytes(bytes - 1)),
        back2(LoadBytes(bytes - 2)),
        back3(LoadBytes(bytes - 3)) {}

  __m128i at, back1, back2, back3;
};

// Lanes of all ones where text isn't well-formed: each lead byte has as many bytes behind it as it
// announces and its value needs, and no other bytes stand there.
inline __m128i Misplaced(const ByteWindow& window) {
  const __m128i wanted =
      _mm_or_si128(BytesFrom(window.back1, 0xC0),
                   _mm_or_si128(BytesFrom(window.back2, 0xE0), BytesFrom(window.back3, 0xF0)));
  // F0 and a byte below 0x90 make a value of one unit.
  const __m128i overlong = _mm_and_si128(_mm_cmplt_epi8(window.at, AllBytes(0x90)),
                                         _mm_cmpeq_epi8(window.back1, AllBytes(0xF0)));
  return _mm_or_si128(_mm_xor_si128(Continuations(window.at), wanted),
                      _mm_or_si128(overlong, BytesFrom(window.at, 0xF8)));
}

}  // namespace kelp::detail

#endif
