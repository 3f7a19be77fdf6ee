#include "kelptext/Utf8.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kelp::detail {
namespace {

// One step of decoding: takes at least one byte, never one at or behind end.
std::uint32_t DecodeStep(const unsigned char*& byte, const unsigned char* end) {
  const std::uint32_t lead = *byte++;
  int continuation = 0;
  std::uint32_t value = lead;
  if ((lead & 0xE0) == 0xC0) {
    continuation = 1;
    value = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    continuation = 2;
    value = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    continuation = 3;
    value = lead & 0x07;
  }
  for (; continuation > 0; --continuation) {
    value <<= 6;
    if (byte < end) value |= *byte++ & 0x3Fu;
  }
  return value;
}

// One step of encoding: takes one unit, or two where the first is a high surrogate.
std::uint32_t EncodeStep(const WChar*& unit, const WChar* end) {
  const std::uint32_t first = static_cast<std::uint16_t>(*unit++);
  if (first < 0xD800 || first > 0xDBFF || unit == end) return first;
  return (first << 10) + static_cast<std::uint16_t>(*unit++) - 0x035FDC00u;
}

std::size_t EncodedSize(std::uint32_t value) {
  return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

WChar* PutUtf16(std::uint32_t value, WChar* out) {
  if (value < 0x10000) {
    *out++ = static_cast<WChar>(value);
  } else {
    *out++ = static_cast<WChar>((value >> 10) + 0xD7C0);
    *out++ = static_cast<WChar>((value & 0x3FF) + 0xDC00);
  }
  return out;
}

#ifdef __SSE2__

// Whole blocks of 16 are worth a look only where the text is plain for a while.
constexpr std::ptrdiff_t kBlock = 16;

// Sixteen bytes widened to sixteen units; bit i of the result is set where byte i isn't ASCII.
unsigned WidenBlock(const unsigned char* bytes, WChar* out) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(block, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(block, zero));
  return static_cast<unsigned>(_mm_movemask_epi8(block));
}

unsigned NonAsciiBytes(const unsigned char* bytes) {
  return static_cast<unsigned>(
      _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))));
}

// Sixteen units narrowed to sixteen bytes; bit i of the result is set where unit i isn't ASCII, and
// byte i then has no meaning.
unsigned NarrowBlock(const WChar* units, char* out) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + 8));
  // The saturating sum has its top bit set from 0x80 on, and the signed pack keeps that bit.
  const __m128i gap = _mm_set1_epi16(0x7F80);
  const __m128i others = _mm_packs_epi16(_mm_adds_epu16(low, gap), _mm_adds_epu16(high, gap));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
  return static_cast<unsigned>(_mm_movemask_epi8(others));
}

// A pair of blocks.
unsigned NarrowTwoBlocks(const WChar* units, char* out) {
  const unsigned low = NarrowBlock(units, out);
  return NarrowBlock(units + kBlock, out + kBlock) << kBlock | low;
}

// Narrows as many pairs of blocks as are ASCII throughout; gives the number of units.
std::ptrdiff_t NarrowAsciiPairs(const WChar* units, char* out, std::ptrdiff_t pairs) {
  const auto* const begin = reinterpret_cast<const __m128i*>(units);
  const __m128i* from = begin;
  for (auto* to = reinterpret_cast<__m128i*>(out); pairs > 0; --pairs, from += 4, to += 2) {
    const __m128i a = _mm_loadu_si128(from);
    const __m128i b = _mm_loadu_si128(from + 1);
    const __m128i c = _mm_loadu_si128(from + 2);
    const __m128i d = _mm_loadu_si128(from + 3);
    const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    const __m128i others = _mm_adds_epu16(all, _mm_set1_epi16(0x7F80));
    if ((_mm_movemask_epi8(others) & 0xAAAA) != 0) break;
    _mm_storeu_si128(to, _mm_packus_epi16(a, b));
    _mm_storeu_si128(to + 1, _mm_packus_epi16(c, d));
  }
  return (from - begin) * 8;
}

// Encodes pairs of blocks while both ends are far enough for whole stores; moves unit and out.
//
// The places of the other units are taken from one mask, without a look at the text in between, so
// that a step needn't wait for the one before it. The units behind each such place are narrowed
// again to where they now belong; what is written too far is written over. At the worst a step
// takes kPair + 1 units, three bytes each but for a pair at the end, whose two take four, and
// narrows kPair more: it reads 2 * kPair + 1 units and writes 4 * kPair + 1 bytes.
void EncodeBlocks(const WChar*& unit, const WChar* end, char*& out, const char* outEnd) {
  constexpr std::ptrdiff_t kPair = 2 * kBlock;
  // Much text is ASCII to its end. Once other units have come, more of them will, and this look
  // ahead would cost more than it saves.
  const std::ptrdiff_t ascii =
      NarrowAsciiPairs(unit, out, std::min(end - unit, outEnd - out) / kPair);
  unit += ascii;
  out += ascii;
  while (end - unit > 2 * kPair && outEnd - out > 4 * kPair) {
    const WChar* const pairEnd = unit + kPair;
    std::uint64_t others = NarrowTwoBlocks(unit, out);
    while (others != 0) {
      const int plain = std::countr_zero(others);
      unit += plain;
      out += plain;
      const WChar* const other = unit;
      out = PutUtf8(EncodeStep(unit, end), out);
      others >>= plain + (unit - other);
      NarrowTwoBlocks(unit, out);
    }
    if (unit < pairEnd) {
      out += pairEnd - unit;
      unit = pairEnd;
    }
  }
}

#endif

}  // namespace

std::size_t DecodedUtf8Length(const char* bytes, std::size_t size) {
  const auto* byte = reinterpret_cast<const unsigned char*>(bytes);
  const unsigned char* end = byte + size;
  std::size_t length = 0;
  while (byte < end) {
#ifdef __SSE2__
    while (end - byte >= kBlock && NonAsciiBytes(byte) == 0) {
      byte += kBlock;
      length += kBlock;
    }
    if (byte == end) break;
#endif
    length += DecodeStep(byte, end) < 0x10000 ? 1 : 2;
  }
  return length;
}

std::size_t DecodeUtf8(const char* bytes, std::size_t size, WChar* target, std::size_t room) {
  const auto* byte = reinterpret_cast<const unsigned char*>(bytes);
  const unsigned char* end = byte + size;
  WChar* out = target;
  [[maybe_unused]] const WChar* outEnd = target + room;
  while (byte < end) {
#ifdef __SSE2__
    // The plain units at the front of a block count; what stands behind them is written over.
    while (*byte < 0x80 && end - byte >= kBlock && outEnd - out >= kBlock) {
      const unsigned others = WidenBlock(byte, out);
      const int plain = others == 0 ? kBlock : std::countr_zero(others);
      byte += plain;
      out += plain;
      if (byte == end) return static_cast<std::size_t>(out - target);
    }
#endif
    out = PutUtf16(DecodeStep(byte, end), out);
  }
  return static_cast<std::size_t>(out - target);
}

std::size_t EncodedUtf8Length(const WChar* units, std::size_t size) {
  const WChar* unit = units;
  const WChar* end = units + size;
  std::size_t length = 0;
  while (unit < end) length += EncodedSize(EncodeStep(unit, end));
  return length;
}

std::size_t EncodeUtf8(const WChar* units, std::size_t size, char* target, std::size_t room) {
  const WChar* unit = units;
  const WChar* end = units + size;
  char* out = target;
  [[maybe_unused]] const char* outEnd = target + room;
#ifdef __SSE2__
  EncodeBlocks(unit, end, out, outEnd);
#endif
  while (unit < end) {
#ifdef __SSE2__
    while (*unit < 0x80 && end - unit >= kBlock && outEnd - out >= kBlock) {
      const unsigned others = NarrowBlock(unit, out);
      const int plain = others == 0 ? kBlock : std::countr_zero(others);
      unit += plain;
      out += plain;
      if (unit == end) return static_cast<std::size_t>(out - target);
    }
#endif
    out = PutUtf8(EncodeStep(unit, end), out);
  }
  return static_cast<std::size_t>(out - target);
}

}  // namespace kelp::detail
