// What one writes without a class for bits: the same bytes as CBitStreamWriter's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

// A field of a record: so many bits of a value, from 1 to 32.
struct BitField {
  std::uint32_t value;
  int bits;
};

// A loop that shifts, bit by bit where the field isn't of whole bytes.
[[gnu::visibility("default")]] std::vector<unsigned char> PackByHand(
    const std::vector<BitField>& fields);
// The sum of all fields, whose values aren't looked at.
[[gnu::visibility("default")]] std::uint64_t SumByHand(const unsigned char* bytes,
                                                       const std::vector<BitField>& fields);

// Runs of bytes behind three bits, by 64-bit words. The target has room for a byte more.
[[gnu::visibility("default")]] void WriteRunByHand(const unsigned char* run, std::size_t size,
                                                   unsigned char* target);
[[gnu::visibility("default")]] void ReadRunByHand(const unsigned char* source, unsigned char* run,
                                                  std::size_t size);

// memcpy as a call of a library.
[[gnu::visibility("default")]] void CopyRunByHand(const unsigned char* source,
                                                  unsigned char* target, std::size_t size);

}  // namespace bench
