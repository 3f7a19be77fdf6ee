#include "bench/BitsByHand.h"

#include <cstring>

namespace bench {
namespace {

// Of the eight bytes from a place on, the first one on top.
std::uint64_t LoadWord(const unsigned char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return __builtin_bswap64(word);
}

void StoreWord(std::uint64_t word, unsigned char* bytes) {
  word = __builtin_bswap64(word);
  std::memcpy(bytes, &word, sizeof word);
}

}  // namespace

std::vector<unsigned char> PackByHand(const std::vector<BitField>& fields) {
  std::vector<unsigned char> bytes;
  unsigned current = 0;
  int used = 0;
  for (const BitField& field : fields) {
    std::uint32_t value = field.value;
    int left = field.bits;
    for (; left >= 8; left -= 8, value >>= 8) {
      const unsigned byte = value & 0xFF;
      bytes.push_back(static_cast<unsigned char>(current | byte >> used));
      current = byte << (8 - used) & 0xFF;
    }
    for (; left > 0; --left, value >>= 1) {
      current |= (value & 1) << (7 - used);
      if (++used < 8) continue;
      bytes.push_back(static_cast<unsigned char>(current));
      current = 0;
      used = 0;
    }
  }
  if (used > 0) bytes.push_back(static_cast<unsigned char>(current));
  return bytes;
}

std::uint64_t SumByHand(const unsigned char* bytes, const std::vector<BitField>& fields) {
  std::uint64_t sum = 0;
  int used = 0;
  for (const BitField& field : fields) {
    std::uint32_t value = 0;
    int have = 0;
    for (; have + 8 <= field.bits; have += 8, ++bytes) {
      const unsigned byte = used == 0 ? *bytes : (bytes[0] << used | bytes[1] >> (8 - used)) & 0xFF;
      value |= byte << have;
    }
    for (; have < field.bits; ++have) {
      value |= static_cast<std::uint32_t>(*bytes >> (7 - used) & 1) << have;
      if (++used < 8) continue;
      used = 0;
      ++bytes;
    }
    sum += value;
  }
  return sum;
}

void WriteRunByHand(const unsigned char* run, std::size_t size, unsigned char* target) {
  std::uint64_t carry = std::uint64_t{*target} << 56;
  std::size_t i = 0;
  for (; i + 8 <= size; i += 8) {
    const std::uint64_t word = LoadWord(run + i);
    StoreWord(carry | word >> 3, target + i);
    carry = word << 61;
  }
  for (; i < size; ++i) {
    target[i] = static_cast<unsigned char>(carry >> 56 | run[i] >> 3);
    carry = std::uint64_t{run[i]} << 61;
  }
  target[size] = static_cast<unsigned char>(carry >> 56);
}

void ReadRunByHand(const unsigned char* source, unsigned char* run, std::size_t size) {
  std::size_t i = 0;
  for (; i + 8 <= size; i += 8) {
    StoreWord(LoadWord(source + i) << 3 | source[i + 8] >> 5, run + i);
  }
  for (; i < size; ++i) run[i] = static_cast<unsigned char>(source[i] << 3 | source[i + 1] >> 5);
}

void CopyRunByHand(const unsigned char* source, unsigned char* target, std::size_t size) {
  std::memcpy(target, source, size);
}

}  // namespace bench
