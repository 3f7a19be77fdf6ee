#include "kelptext/Utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "kelptext/Utf8Blocks.h"
#include "kelptext/Utf8Dense.h"

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

// Sixteen bytes widened to sixteen units; bit i of the result is set where byte i isn't ASCII.
unsigned WidenBlock(const unsigned char* bytes, WChar* out) {
  const __m128i block = LoadBytes(bytes);
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(block, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(block, zero));
  return static_cast<unsigned>(_mm_movemask_epi8(block));
}

// Lanes with the top bit set where one of sixteen units isn't ASCII.
__m128i OtherUnits(__m128i low, __m128i high) {
  // The saturating sum has that bit from 0x80 on, and the signed pack keeps it.
  const __m128i gap = _mm_set1_epi16(0x7F80);
  return _mm_packs_epi16(_mm_adds_epu16(low, gap), _mm_adds_epu16(high, gap));
}

// Sixteen units narrowed to sixteen bytes; bit i of the result is set where unit i isn't ASCII, and
// byte i then has no meaning.
unsigned NarrowBlock(const WChar* units, char* out) {
  const __m128i low = LoadUnits(units);
  const __m128i high = LoadUnits(units + 8);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
  return static_cast<unsigned>(_mm_movemask_epi8(OtherUnits(low, high)));
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

bool TakesDensePairs() noexcept {
  static const bool takes = CanTakeDensePairs();
  return takes;
}

// Encodes pairs of blocks while both ends are far enough for whole stores; moves unit and out.
//
// The places of the other units are taken from one mask, without a look at the text in between, so
// that a step needn't wait for the one before it. The units behind each such place are narrowed
// again to where they now belong; what is written too far is written over. At the worst a step
// takes kPair + 1 units, three bytes each but for a pair at the end, whose two take four, and
// narrows kPair more: it reads 2 * kPair + 1 units and writes 4 * kPair + 1 bytes.
void EncodeBlocks(const WChar*& unit, const WChar* end, char*& out, const char* outEnd) {
  const WChar* const begin = unit;
  // Much text is ASCII to its end. Once other units have come, more of them will, and this look
  // ahead would cost more than it saves.
  const std::ptrdiff_t ascii =
      NarrowAsciiPairs(unit, out, std::min(end - unit, outEnd - out) / kPair);
  unit += ascii;
  out += ascii;
  while (end - unit > 2 * kPair && outEnd - out > 4 * kPair) {
    const WChar* const pairEnd = unit + kPair;
    std::uint64_t others = NarrowTwoBlocks(unit, out);
    // Accents stand alone. Two such units side by side are an emoji, or text in which most are so.
    const bool dense = (others & others >> 1) != 0;
    if (dense && unit > begin && TakesDensePairs()) {
      const int written = EncodeDensePair(unit, out);
      if (written != 0) {
        unit += DensePairSize(unit);
        out += written;
        continue;
      }
    }
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

std::size_t SumOfHalves(__m128i sums) {
  return static_cast<std::size_t>(_mm_cvtsi128_si64(sums) +
                                  _mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
}

// Counts the units that well-formed text decodes to, sixteen bytes at a time, each sequence with
// its lead byte.
class UnitCounter {
 public:
  // Reads the three bytes before too.
  void Add(const unsigned char* bytes) {
    const ByteWindow window(bytes);
    m_wrong = _mm_or_si128(m_wrong, Misplaced(window));
    // Lanes of all ones take one away from 1, or add one to it.
    const __m128i units = _mm_sub_epi8(_mm_add_epi8(Continuations(window.at), AllBytes(1)),
                                       BytesFrom(window.at, 0xF0));
    m_units = _mm_add_epi64(m_units, _mm_sad_epu8(units, _mm_setzero_si128()));
  }

  bool IsWellFormed() const { return _mm_movemask_epi8(m_wrong) == 0; }
  std::size_t Units() const { return SumOfHalves(m_units); }

 private:
  __m128i m_wrong = _mm_setzero_si128();
  __m128i m_units = _mm_setzero_si128();
};

// Where the sequence begins that the byte at place belongs to, in text that is well-formed up to
// there.
const unsigned char* SequenceStart(const unsigned char* begin, const unsigned char* place) {
  for (int back = 1; back <= 3 && place - begin >= back; ++back) {
    const unsigned char lead = place[-back];
    if (lead < 0x80) break;
    if (lead >= 0xC0) return back < (lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4) ? place - back : place;
  }
  return place;
}

// Units of the blocks at the front of well-formed text; moves byte behind them, to where a sequence
// begins. Text that isn't well-formed stays as it is.
std::size_t CountBlocks(const unsigned char*& byte, const unsigned char* end) {
  if (end - byte < kBlock) return 0;
  UnitCounter counter;
  unsigned char first[3 + kBlock] = {};
  std::memcpy(first + 3, byte, kBlock);
  counter.Add(first + 3);
  const unsigned char* place = byte + kBlock;
  for (; end - place >= kBlock; place += kBlock) counter.Add(place);
  if (!counter.IsWellFormed()) return 0;
  byte = SequenceStart(byte, place);
  const std::size_t cut = byte == place ? 0 : *byte >= 0xF0 ? 2 : 1;
  return counter.Units() - cut;
}

// What a lead byte begins, by its upper five bits: its size, how far up its value stands where four
// bytes are joined, and the bits of the value.
struct Lead {
  std::uint8_t size;
  std::uint8_t shift;
  std::uint32_t bits;
};
constexpr auto kLeads = [] {
  std::array<Lead, 32> leads;
  leads.fill({1, 18, 0xFF});
  for (int i = 0xC0 >> 3; i < 0xE0 >> 3; ++i) leads[i] = {2, 12, 0x7FF};
  for (int i = 0xE0 >> 3; i < 0xF0 >> 3; ++i) leads[i] = {3, 6, 0xFFFF};
  leads[0xF0 >> 3] = {4, 0, 0x1FFFFF};
  return leads;
}();

// A step of decoding and its writing without a branch, since no processor foresees the kinds of
// sequences of a text; at least four bytes can be read and two units written.
void DecodeAhead(const unsigned char*& byte, WChar*& out) {
  const Lead lead = kLeads[*byte >> 3];
  const std::uint32_t all = std::uint32_t{byte[0]} << 18 | (byte[1] & 0x3Fu) << 12 |
                            (byte[2] & 0x3Fu) << 6 | (byte[3] & 0x3Fu);
  const std::uint32_t value = all >> lead.shift & lead.bits;
  const std::uint32_t pair = ((value >> 10) + 0xD7C0) | ((value & 0x3FF) + 0xDC00) << 16;
  // All ones for a pair. Of a condition compilers make a branch.
  const auto isPair = static_cast<std::int32_t>(0xFFFF - value) >> 31;
  const std::uint32_t units = value ^ ((value ^ pair) & static_cast<std::uint32_t>(isPair));
  std::memcpy(out, &units, sizeof(units));
  out += 1 - isPair;
  byte += lead.size;
}

// Decodes pairs of blocks while both ends are far enough for whole stores; moves byte and out. As
// in EncodeBlocks one mask tells the places of the bytes that aren't plain. At the worst a step
// takes kPair + 3 bytes for as many units and widens kPair more.
void DecodeBlocks(const unsigned char*& byte, const unsigned char* end, WChar*& out,
                  const WChar* outEnd) {
  const unsigned char* const begin = byte;
  const auto widen = [](const unsigned char* from, WChar* to) {
    const unsigned low = WidenBlock(from, to);
    return WidenBlock(from + kBlock, to + kBlock) << kBlock | low;
  };
  while (end - byte >= 2 * kPair + 3 && outEnd - out >= 2 * kPair + 3) {
    const unsigned char* const pairEnd = byte + kPair;
    std::uint64_t others = widen(byte, out);
    // Three such bytes side by side are more than an accent.
    const bool dense = (others & others >> 1 & others >> 2) != 0;
    if (dense && byte - begin >= 3 && TakesDensePairs()) {
      const int written = DecodeDensePair(byte, out);
      if (written != 0) {
        byte += DensePairSize(byte);
        out += written;
        continue;
      }
    }
    while (others != 0) {
      const int plain = std::countr_zero(others);
      byte += plain;
      out += plain;
      const unsigned char* const other = byte;
      DecodeAhead(byte, out);
      others >>= plain + (byte - other);
      widen(byte, out);
    }
    if (byte < pairEnd) {
      out += pairEnd - byte;
      byte = pairEnd;
    }
  }
}

// Counts the bytes that units encode to beyond one for each, sixteen at a time, where every high
// surrogate has a low one behind it.
class ByteCounter {
 public:
  void Add(const WChar* units) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i first = LoadUnits(units);
    const __m128i second = LoadUnits(units + 8);
    const __m128i upper = _mm_packus_epi16(_mm_srli_epi16(first, 8), _mm_srli_epi16(second, 8));
    const __m128i kind = _mm_and_si128(upper, AllBytes(0xFC));
    const __m128i high = _mm_cmpeq_epi8(kind, AllBytes(0xD8));
    const __m128i low = _mm_cmpeq_epi8(kind, AllBytes(0xDC));
    const __m128i wanted = _mm_or_si128(m_due, _mm_slli_si128(high, 1));
    m_wrong = _mm_or_si128(m_wrong, _mm_andnot_si128(low, wanted));
    m_due = _mm_srli_si128(high, 15);
    // A byte more from 0x80 on and one from 0x800 on, of which a high surrogate loses both: a pair
    // has four.
    const __m128i from80 = _mm_cmplt_epi8(OtherUnits(first, second), zero);
    const __m128i from800 = BytesFrom(upper, 0x08);
    const __m128i more = _mm_sub_epi8(_mm_add_epi8(high, high), _mm_add_epi8(from80, from800));
    m_more = _mm_add_epi64(m_more, _mm_sad_epu8(more, zero));
  }

  bool IsWellFormed() const { return _mm_movemask_epi8(m_wrong) == 0; }
  // Whether the last unit is a high surrogate, of which nothing is counted.
  bool IsCut() const { return _mm_movemask_epi8(m_due) != 0; }
  std::size_t More() const { return SumOfHalves(m_more); }

 private:
  __m128i m_wrong = _mm_setzero_si128();
  __m128i m_due = _mm_setzero_si128();  // the first lane is set where a low surrogate is to come
  __m128i m_more = _mm_setzero_si128();
};

// Bytes of the pairs of blocks at the front that a ByteCounter can count; moves unit behind them.
std::size_t EncodedBlocksLength(const WChar*& unit, const WChar* end) {
  const WChar* const begin = unit;
  ByteCounter counter;
  for (; end - unit >= kPair; unit += kPair) {
    ByteCounter further = counter;
    further.Add(unit);
    further.Add(unit + kBlock);
    if (!further.IsWellFormed()) break;
    counter = further;
  }
  if (counter.IsCut()) --unit;
  return static_cast<std::size_t>(unit - begin) + counter.More();
}

#endif

}  // namespace

std::size_t DecodedUtf8Length(const char* bytes, std::size_t size) {
  const auto* byte = reinterpret_cast<const unsigned char*>(bytes);
  const unsigned char* end = byte + size;
  std::size_t length = 0;
#ifdef __SSE2__
  length = CountBlocks(byte, end);
#endif
  while (byte < end) length += DecodeStep(byte, end) < 0x10000 ? 1 : 2;
  return length;
}

std::size_t DecodeUtf8(const char* bytes, std::size_t size, WChar* target, std::size_t room) {
  const auto* byte = reinterpret_cast<const unsigned char*>(bytes);
  const unsigned char* end = byte + size;
  WChar* out = target;
  [[maybe_unused]] const WChar* outEnd = target + room;
#ifdef __SSE2__
  DecodeBlocks(byte, end, out, outEnd);
#endif
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
  while (unit < end) {
#ifdef __SSE2__
    length += EncodedBlocksLength(unit, end);
#endif
    for (const WChar* const behind = unit + std::min<std::ptrdiff_t>(end - unit, 8);
         unit < behind;) {
      length += EncodedSize(EncodeStep(unit, end));
    }
  }
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
