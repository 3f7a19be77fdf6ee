// The UTF-8 codec behind String and WString; internal to the library.
//
// Sequences aren't checked. Decoding takes a lead byte and as many bytes as it announces, masks
// them, and passes a byte that begins no sequence through as its own value. Encoding joins a high
// surrogate with whatever unit follows. Neither reads past the input: a sequence cut short by the
// end decodes as if zero bits followed, and a high surrogate at the end encodes as itself.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kelptext/WideChar.h"

namespace kelp::detail {

// Units that the bytes decode to; never more than size.
std::size_t DecodedUtf8Length(const char* bytes, std::size_t size);
// Decodes into target, which holds at least DecodedUtf8Length units; gives their number.
std::size_t DecodeUtf8(const char* bytes, std::size_t size, WChar* target, std::size_t room);

// Bytes that the units encode to; never more than 3 * size.
std::size_t EncodedUtf8Length(const WChar* units, std::size_t size);
// Encodes into target, which holds at least EncodedUtf8Length bytes; gives their number.
std::size_t EncodeUtf8(const WChar* units, std::size_t size, char* target, std::size_t room);

// Writes the 1 to 4 bytes of a code point; gives the place behind them.
inline char* PutUtf8(std::uint32_t value, char* out) {
  if (value < 0x80) {
    *out++ = static_cast<char>(value);
  } else if (value < 0x800) {
    *out++ = static_cast<char>(0xC0 | value >> 6);
    *out++ = static_cast<char>(0x80 | (value & 0x3F));
  } else if (value < 0x10000) {
    *out++ = static_cast<char>(0xE0 | value >> 12);
    *out++ = static_cast<char>(0x80 | (value >> 6 & 0x3F));
    *out++ = static_cast<char>(0x80 | (value & 0x3F));
  } else {
    *out++ = static_cast<char>(0xF0 | value >> 18);
    *out++ = static_cast<char>(0x80 | (value >> 12 & 0x3F));
    *out++ = static_cast<char>(0x80 | (value >> 6 & 0x3F));
    *out++ = static_cast<char>(0x80 | (value & 0x3F));
  }
  return out;
}

}  // namespace kelp::detail
