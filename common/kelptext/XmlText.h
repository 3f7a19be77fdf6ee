// What writers of XML have to know of the units of a text; internal to the libraries.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "kelptext/Characters.h"
#include "kelptext/WideChar.h"

namespace kelp::detail {

// Whether a unit is ASCII, no control character, and none of < > & " '
inline bool IsPlainXml(WChar unit) {
  static constexpr auto kPlain = [] {
    std::array<bool, 128> plain{};
    for (std::size_t i = 0x20; i < plain.size(); ++i) plain[i] = true;
    for (const char special : {'<', '>', '&', '"', '\''}) plain[special] = false;
    return plain;
  }();
  return unit < kPlain.size() && kPlain[unit];
}

#ifdef __SSE2__
// Bit i of the result is set where byte i isn't plain. As signed bytes all that isn't ASCII lies
// below the blank, like the control characters.
inline unsigned OthersThanPlainXml(__m128i bytes) {
  const __m128i low = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
  const __m128i brackets =
      _mm_cmpeq_epi8(_mm_or_si128(bytes, _mm_set1_epi8('<' ^ '>')), _mm_set1_epi8('>'));
  const __m128i ands =
      _mm_cmpeq_epi8(_mm_or_si128(bytes, _mm_set1_epi8('&' ^ '\'')), _mm_set1_epi8('\''));
  const __m128i quotes = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
  const __m128i others = _mm_or_si128(_mm_or_si128(low, brackets), _mm_or_si128(ands, quotes));
  return static_cast<unsigned>(_mm_movemask_epi8(others));
}
#endif

// Narrows plain units up to the first that isn't; gives their number. The target holds count bytes,
// of which those behind the plain ones may be written too.
inline std::size_t NarrowPlainXml(const WChar* units, std::size_t count, char* target) {
  std::size_t done = 0;
#ifdef __SSE2__
  // Units of 0x100 or more are packed as 0xFF or 0, neither of which is plain.
  for (; count - done >= 16; done += 16) {
    const auto* const from = reinterpret_cast<const __m128i*>(units + done);
    const __m128i bytes = _mm_packus_epi16(_mm_loadu_si128(from), _mm_loadu_si128(from + 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target + done), bytes);
    const unsigned others = OthersThanPlainXml(bytes);
    if (others != 0) return done + static_cast<std::size_t>(std::countr_zero(others));
  }
  if (count - done >= 8) {
    const __m128i half = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + done));
    const __m128i bytes = _mm_packus_epi16(half, half);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target + done), bytes);
    const unsigned others = OthersThanPlainXml(bytes);
    if (others != 0) return done + static_cast<std::size_t>(std::countr_zero(others));
    done += 8;
  }
#endif
  for (; done < count && IsPlainXml(units[done]); ++done) {
    target[done] = static_cast<char>(units[done]);
  }
  return done;
}

// The code point at the front of text that isn't at its end, whose units are taken off: U+FFFD for
// a surrogate without its other half.
inline std::uint32_t TakeXmlCodePoint(const WChar*& unit, const WChar* end) {
  constexpr std::uint32_t kReplacement = 0xFFFD;
  const WChar first = *unit++;
  if (IsLowSurrogate(first)) return kReplacement;
  if (!IsHighSurrogate(first)) return static_cast<std::uint16_t>(first);
  if (unit == end || !IsLowSurrogate(*unit)) return kReplacement;
  return 0x10000u + ((first & 0x3FFu) << 10 | (*unit++ & 0x3FFu));
}

}  // namespace kelp::detail
