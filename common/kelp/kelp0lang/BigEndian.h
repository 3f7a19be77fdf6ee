// 32-bit words as digests and ciphers keep them in memory: the highest byte first, at any address.
#pragma once

#include <cstdint>

namespace kelp::detail {

inline std::uint32_t LoadBigEndian(const unsigned char* bytes) noexcept {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

inline void StoreBigEndian(std::uint32_t word, unsigned char* bytes) noexcept {
  bytes[0] = static_cast<unsigned char>(word >> 24);
  bytes[1] = static_cast<unsigned char>(word >> 16);
  bytes[2] = static_cast<unsigned char>(word >> 8);
  bytes[3] = static_cast<unsigned char>(word);
}

}  // namespace kelp::detail
