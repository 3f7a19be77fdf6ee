#include "kelptext/Utf8Dense.h"

#ifdef __SSE2__

#include <cpuid.h>
#include <immintrin.h>

#include <array>
#include <bit>
#include <cstdint>

#include "kelptext/Compiler.h"

#define KELP_DENSE KELP_TARGET("sse4.1,popcnt")

namespace kelp::detail {
namespace {

// Where the bytes of a result come from, in their order. Where fifteen are enough the last tells
// how many there are.
struct alignas(16) Places {
  std::uint8_t bytes[16];
};

KELP_DENSE KELP_ALWAYS_INLINE __m128i Packed(__m128i lanes, const Places& places) {
  return _mm_shuffle_epi8(lanes, _mm_load_si128(reinterpret_cast<const __m128i*>(places.bytes)));
}

KELP_ALWAYS_INLINE __m128i AllUnits(int value) {
  return _mm_set1_epi16(static_cast<short>(value));
}

// Every unit becomes some of the three bytes E0 | x >> 12, 80 | (x >> 6 & 3F), 80 | (x & 3F) of 16
// bits x, which stand in a lane of 32 bits: the last, the last two or all of them; a high surrogate
// the first two, and a low one the last two. These are the places of four units. Bit i of the key
// is set where unit i has no first byte; bit 4 + i where it has the last alone, or, as a high
// surrogate, the first two.
constexpr auto kEncodedPlaces = [] {
  std::array<Places, 256> all{};
  for (unsigned key = 0; key < all.size(); ++key) {
    std::uint8_t count = 0;
    for (unsigned unit = 0; unit < 4; ++unit) {
      const bool noFirst = (key >> unit & 1) != 0;
      const bool other = (key >> (4 + unit) & 1) != 0;
      const unsigned first = !noFirst ? 0 : other ? 2 : 1;
      const unsigned last = !noFirst && other ? 1 : 2;
      for (unsigned i = first; i <= last; ++i) {
        all[key].bytes[count++] = static_cast<std::uint8_t>(4 * unit + i);
      }
    }
    all[key].bytes[15] = count;
  }
  return all;
}();

KELP_DENSE KELP_ALWAYS_INLINE char* PutEncoded(__m128i lanes, unsigned key, char* out) {
  const Places& places = kEncodedPlaces[key];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Packed(lanes, places));
  return out + places.bytes[15];
}

// Encodes eight units. Sets lanes of wrong where a low surrogate and a high one before it don't go
// together.
KELP_DENSE KELP_ALWAYS_INLINE char* EncodeEight(const WChar* units, char* out, __m128i& wrong) {
  const __m128i unit = LoadUnits(units);
  const __m128i before = LoadUnits(units - 1);
  const __m128i sort = _mm_and_si128(unit, AllUnits(0xFC00));
  const __m128i high = _mm_cmpeq_epi16(sort, AllUnits(0xD800));
  const __m128i low = _mm_cmpeq_epi16(_mm_and_si128(before, AllUnits(0xFC00)), AllUnits(0xD800));
  wrong = _mm_or_si128(wrong, _mm_xor_si128(low, _mm_cmpeq_epi16(sort, AllUnits(0xDC00))));
  const __m128i zero = _mm_setzero_si128();
  const __m128i below80 = _mm_cmpeq_epi16(_mm_subs_epu16(unit, AllUnits(0x7F)), zero);
  const __m128i below800 = _mm_cmpeq_epi16(_mm_subs_epu16(unit, AllUnits(0x7FF)), zero);

  // The bits of a pair's value: of the high surrogate those from the seventh up, moved so that the
  // first two bytes have them; of the low one the rest, with two of the high one before it.
  const __m128i ofHigh = _mm_sub_epi16(_mm_slli_epi16(unit, 4), AllUnits((0xD800 - 0x40) << 4));
  const __m128i ofLow =
      _mm_add_epi16(_mm_sub_epi16(unit, AllUnits(0xDC00)), _mm_slli_epi16(before, 10));
  const __m128i x = _mm_blendv_epi8(_mm_blendv_epi8(unit, ofLow, low), ofHigh, high);

  // The lead bytes are E0, F0 for a pair, and C0 in the second place.
  const __m128i leads =
      _mm_or_si128(_mm_or_si128(AllUnits(0x80E0), _mm_and_si128(high, AllUnits(0x10))),
                   _mm_and_si128(below800, AllUnits(0x4000)));
  const __m128i firstTwo = _mm_or_si128(
      leads,
      _mm_or_si128(_mm_srli_epi16(x, 12), _mm_and_si128(_mm_slli_epi16(x, 2), AllUnits(0x3F00))));
  const __m128i third = _mm_blendv_epi8(
      _mm_or_si128(_mm_and_si128(x, AllUnits(0x3F)), AllUnits(0x80)), unit, below80);

  const __m128i noFirst = _mm_or_si128(below800, low);
  const __m128i other = _mm_or_si128(below80, high);
  const __m128i keys =
      _mm_packs_epi16(_mm_unpacklo_epi64(noFirst, other), _mm_unpackhi_epi64(noFirst, other));
  const auto bits = static_cast<unsigned>(_mm_movemask_epi8(keys));
  out = PutEncoded(_mm_unpacklo_epi16(firstTwo, third), bits & 0xFF, out);
  return PutEncoded(_mm_unpackhi_epi16(firstTwo, third), bits >> 8, out);
}

// Which units of eight there are, by a key with a bit for each.
constexpr auto kDecodedPlaces = [] {
  std::array<Places, 256> all{};
  for (unsigned key = 0; key < all.size(); ++key) {
    unsigned count = 0;
    for (unsigned unit = 0; unit < 8; ++unit) {
      if ((key >> unit & 1) == 0) continue;
      all[key].bytes[count++] = static_cast<std::uint8_t>(2 * unit);
      all[key].bytes[count++] = static_cast<std::uint8_t>(2 * unit + 1);
    }
  }
  return all;
}();

KELP_DENSE KELP_ALWAYS_INLINE WChar* PutDecoded(__m128i units, unsigned key, WChar* out) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Packed(units, kDecodedPlaces[key]));
  return out + std::popcount(key);
}

// What each byte of a block, and those before it, are to the unit that ends there. A lane in which
// no unit ends has no meaning.
struct ByteParts {
  __m128i last;      // its six bits, or the seven of ASCII
  __m128i former;    // the six of the byte before, or the five of a lead byte; 0 for ASCII
  __m128i leadOf3;   // the lead byte of three; 0 where there is another
  __m128i leadOf4;   // the bits that the lead byte of four has, where endsHigh is set
  __m128i endsHigh;  // all ones where a high surrogate ends: at the third byte of four
  __m128i endsLow;   // all ones where a low one does: at the fourth
};

template <bool upper>
KELP_ALWAYS_INLINE __m128i Interleaved(__m128i even, __m128i odd) {
  return upper ? _mm_unpackhi_epi8(even, odd) : _mm_unpacklo_epi8(even, odd);
}

// The units that eight of the bytes end.
template <bool upper>
KELP_DENSE KELP_ALWAYS_INLINE __m128i UnitsOf(const ByteParts& parts) {
  const __m128i zero = _mm_setzero_si128();
  // The bits of the last two bytes.
  const __m128i twelve =
      _mm_maddubs_epi16(Interleaved<upper>(parts.last, parts.former), AllUnits(0x4001));
  const __m128i whole =
      _mm_or_si128(twelve, _mm_slli_epi16(Interleaved<upper>(zero, parts.leadOf3), 4));
  const __m128i low = _mm_or_si128(_mm_and_si128(twelve, AllUnits(0x3FF)), AllUnits(0xDC00));
  const __m128i high = _mm_add_epi16(_mm_add_epi16(_mm_srli_epi16(twelve, 4), AllUnits(0xD7C0)),
                                     Interleaved<upper>(zero, parts.leadOf4));
  return _mm_blendv_epi8(
      _mm_blendv_epi8(whole, low, Interleaved<upper>(parts.endsLow, parts.endsLow)), high,
      Interleaved<upper>(parts.endsHigh, parts.endsHigh));
}

// Decodes a block. Sets lanes of wrong where it isn't well-formed.
KELP_DENSE KELP_ALWAYS_INLINE WChar* DecodeBlock(const unsigned char* bytes, WChar* out,
                                                 __m128i& wrong) {
  const ByteWindow window(bytes);
  wrong = _mm_or_si128(wrong, Misplaced(window));
  const __m128i ascii = _mm_cmpgt_epi8(window.at, AllBytes(-1));
  const __m128i four = BytesFrom(window.back2, 0xF0);
  const __m128i three = _mm_andnot_si128(four, BytesFrom(window.back2, 0xE0));
  const ByteParts parts = {
      _mm_and_si128(window.at, _mm_or_si128(ascii, AllBytes(0x3F))),
      _mm_andnot_si128(ascii, _mm_and_si128(window.back1, AllBytes(0x3F))),
      _mm_and_si128(three, window.back2),
      _mm_and_si128(window.back2, AllBytes(7)),
      four,
      BytesFrom(window.back3, 0xF0),
  };
  // No unit ends at a lead byte, nor at the second byte of three or four.
  const __m128i none = _mm_or_si128(BytesFrom(window.at, 0xC0), BytesFrom(window.back1, 0xE0));
  const unsigned ends = ~static_cast<unsigned>(_mm_movemask_epi8(none));
  out = PutDecoded(UnitsOf<false>(parts), ends & 0xFF, out);
  return PutDecoded(UnitsOf<true>(parts), ends >> 8 & 0xFF, out);
}

}  // namespace

bool CanTakeDensePairs() noexcept {
  unsigned a = 0, b = 0, c = 0, d = 0;
  constexpr unsigned kNeeded = bit_SSSE3 | bit_SSE4_1 | bit_POPCNT;
  return __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & kNeeded) == kNeeded;
}

KELP_DENSE int EncodeDensePair(const WChar* units, char* out) noexcept {
  // One that was joined with a high surrogate may itself look like one.
  if (IsHighSurrogate(units[-1])) return 0;
  __m128i wrong = _mm_setzero_si128();
  char* end = out;
  for (int i = 0; i < kPair; i += 8) end = EncodeEight(units + i, end, wrong);
  if (_mm_movemask_epi8(wrong) != 0) return 0;
  return static_cast<int>(end - out) - (DensePairSize(units) < kPair ? 2 : 0);
}

KELP_DENSE int DecodeDensePair(const unsigned char* bytes, WChar* out) noexcept {
  // Bytes that were taken as continuations may themselves look like lead bytes.
  if (bytes[-1] >= 0xC0 || bytes[-2] >= 0xE0 || bytes[-3] >= 0xF0) return 0;
  __m128i wrong = _mm_setzero_si128();
  WChar* end = DecodeBlock(bytes, out, wrong);
  end = DecodeBlock(bytes + kBlock, end, wrong);
  if (_mm_movemask_epi8(wrong) != 0) return 0;
  // Three bytes of four have given a high surrogate.
  return static_cast<int>(end - out) - (DensePairSize(bytes) == kPair - 3 ? 1 : 0);
}

}  // namespace kelp::detail

#endif
