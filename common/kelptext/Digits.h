// The decimal digits of whole numbers and the powers of ten; internal to the library.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace kelp::detail {

template <class T, std::size_t kCount>
constexpr std::array<T, kCount> PowersOf10() {
  std::array<T, kCount> powers{1};
  for (std::size_t i = 1; i < kCount; ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}

// All that 64 bits hold, and all that a double holds exactly.
inline constexpr auto kPowersOf10 = PowersOf10<std::uint64_t, 20>();
inline constexpr auto kExactPowersOf10 = PowersOf10<double, 23>();

template <class C>
constexpr bool IsDigit(C unit) {
  return unit >= '0' && unit <= '9';
}

// "00", "01" to "99".
template <class C>
inline constexpr auto kDigitPairs = [] {
  std::array<C, 200> pairs{};
  for (int i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<C>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<C>('0' + i % 10);
  }
  return pairs;
}();

inline int CountDigits(std::uint64_t value) {
  value |= 1;  // 0 has one digit too
  const int guess = std::bit_width(value) * 1233 >> 12;
  return guess + (value >= kPowersOf10[guess]);
}

// Exactly count digits, with leading zeros.
template <class C>
void WriteDigits(C* target, std::uint64_t value, int count) {
  for (; count >= 2; value /= 100) {
    count -= 2;
    std::memcpy(target + count, &kDigitPairs<C>[value % 100 * 2], 2 * sizeof(C));
  }
  if (count == 1) *target = static_cast<C>('0' + value);
}

}  // namespace kelp::detail
