#include "kelp0lang/Des3.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "kelp0lang/BigEndian.h"
#include "kelp0lang/Wipe.h"
#include "kelptext/Compiler.h"

namespace {

constexpr int kRounds = 16;
constexpr std::size_t kKeySize = 8;

// The selection functions S1 to S8 of FIPS 46-3, row by row.
constexpr unsigned char kSelection[8][64] = {
    {14, 4,  13, 1, 2,  15, 11, 8,  3,  10, 6,  12, 5,  9,  0, 7,  //
     0,  15, 7,  4, 14, 2,  13, 1,  10, 6,  12, 11, 9,  5,  3, 8,  //
     4,  1,  14, 8, 13, 6,  2,  11, 15, 12, 9,  7,  3,  10, 5, 0,  //
     15, 12, 8,  2, 4,  9,  1,  7,  5,  11, 3,  14, 10, 0,  6, 13},
    {15, 1,  8,  14, 6,  11, 3,  4,  9,  7, 2,  13, 12, 0, 5,  10,  //
     3,  13, 4,  7,  15, 2,  8,  14, 12, 0, 1,  10, 6,  9, 11, 5,   //
     0,  14, 7,  11, 10, 4,  13, 1,  5,  8, 12, 6,  9,  3, 2,  15,  //
     13, 8,  10, 1,  3,  15, 4,  2,  11, 6, 7,  12, 0,  5, 14, 9},
    {10, 0,  9,  14, 6, 3,  15, 5,  1,  13, 12, 7,  11, 4,  2,  8,  //
     13, 7,  0,  9,  3, 4,  6,  10, 2,  8,  5,  14, 12, 11, 15, 1,  //
     13, 6,  4,  9,  8, 15, 3,  0,  11, 1,  2,  12, 5,  10, 14, 7,  //
     1,  10, 13, 0,  6, 9,  8,  7,  4,  15, 14, 3,  11, 5,  2,  12},
    {7,  13, 14, 3, 0,  6,  9,  10, 1,  2, 8, 5,  11, 12, 4,  15,  //
     13, 8,  11, 5, 6,  15, 0,  3,  4,  7, 2, 12, 1,  10, 14, 9,   //
     10, 6,  9,  0, 12, 11, 7,  13, 15, 1, 3, 14, 5,  2,  8,  4,   //
     3,  15, 0,  6, 10, 1,  13, 8,  9,  4, 5, 11, 12, 7,  2,  14},
    {2,  12, 4,  1,  7,  10, 11, 6,  8,  5,  3,  15, 13, 0, 14, 9,   //
     14, 11, 2,  12, 4,  7,  13, 1,  5,  0,  15, 10, 3,  9, 8,  6,   //
     4,  2,  1,  11, 10, 13, 7,  8,  15, 9,  12, 5,  6,  3, 0,  14,  //
     11, 8,  12, 7,  1,  14, 2,  13, 6,  15, 0,  9,  10, 4, 5,  3},
    {12, 1,  10, 15, 9, 2,  6,  8,  0,  13, 3,  4,  14, 7,  5,  11,  //
     10, 15, 4,  2,  7, 12, 9,  5,  6,  1,  13, 14, 0,  11, 3,  8,   //
     9,  14, 15, 5,  2, 8,  12, 3,  7,  0,  4,  10, 1,  13, 11, 6,   //
     4,  3,  2,  12, 9, 5,  15, 10, 11, 14, 1,  7,  6,  0,  8,  13},
    {4,  11, 2,  14, 15, 0, 8,  13, 3,  12, 9, 7,  5,  10, 6, 1,  //
     13, 0,  11, 7,  4,  9, 1,  10, 14, 3,  5, 12, 2,  15, 8, 6,  //
     1,  4,  11, 13, 12, 3, 7,  14, 10, 15, 6, 8,  0,  5,  9, 2,  //
     6,  11, 13, 8,  1,  4, 10, 7,  9,  5,  0, 15, 14, 2,  3, 12},
    {13, 2,  8,  4, 6,  15, 11, 1,  10, 9,  3,  14, 5,  0,  12, 7,  //
     1,  15, 13, 8, 10, 3,  7,  4,  12, 5,  6,  11, 0,  14, 9,  2,  //
     7,  11, 4,  1, 9,  12, 14, 2,  0,  6,  10, 13, 15, 3,  5,  8,  //
     2,  1,  14, 7, 4,  10, 8,  13, 15, 12, 9,  0,  3,  5,  6,  11},
};

// Permutations say for each bit of the result which one it is before, counted from 1 at the top.
constexpr unsigned char kP[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23, 26, 5,  18, 31, 10,
                                  2,  8, 24, 14, 32, 27, 3,  9,  19, 13, 30, 6,  22, 11, 4,  25};
constexpr unsigned char kPermutedChoice1[56] = {
    57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18, 10, 2,  59, 51, 43,
    35, 27, 19, 11, 3,  60, 52, 44, 36, 63, 55, 47, 39, 31, 23, 15, 7,  62, 54,
    46, 38, 30, 22, 14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
constexpr unsigned char kPermutedChoice2[48] = {
    14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,  26, 8,  16, 7,  27, 20, 13, 2,
    41, 52, 31, 37, 47, 55, 30, 40, 51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
constexpr unsigned char kShifts[kRounds] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};

// The bits of a value of width bits in the order of a permutation.
template <std::size_t count>
constexpr std::uint64_t Permuted(std::uint64_t value, int width,
                                 const unsigned char (&permutation)[count]) noexcept {
  std::uint64_t result = 0;
  for (const unsigned char bit : permutation) result = result << 1 | (value >> (width - bit) & 1);
  return result;
}

// Within the rounds both words stand one bit to the left of their place, so that the six bits that
// the even boxes select by lie together in the bytes, and those of the odd boxes four bits further.
constexpr int kTurn = 1;

// A box and the permutation behind it, by the six bits as they stand.
constexpr auto kBoxes = [] {
  std::array<std::array<std::uint32_t, 64>, 8> boxes{};
  for (unsigned box = 0; box < 8; ++box) {
    for (unsigned bits = 0; bits < 64; ++bits) {
      const unsigned row = (bits >> 4 & 2) | (bits & 1);
      const unsigned selected = kSelection[box][row * 16 + (bits >> 1 & 15)];
      const auto permuted = Permuted(std::uint64_t{selected} << (28 - 4 * box), 32, kP);
      boxes[box][bits] = std::rotl(static_cast<std::uint32_t>(permuted), kTurn);
    }
  }
  return boxes;
}();

// What one round adds to the one word, by the other one and the pair of key words.
KELP_ALWAYS_INLINE std::uint32_t Round(std::uint32_t word, const unsigned* pair) noexcept {
  const std::uint32_t odd = std::rotr(word, 4) ^ pair[0];
  const std::uint32_t even = word ^ pair[1];
  return kBoxes[0][odd >> 24 & 63] ^ kBoxes[2][odd >> 16 & 63] ^ kBoxes[4][odd >> 8 & 63] ^
         kBoxes[6][odd & 63] ^ kBoxes[1][even >> 24 & 63] ^ kBoxes[3][even >> 16 & 63] ^
         kBoxes[5][even >> 8 & 63] ^ kBoxes[7][even & 63];
}

// The 16 rounds on turned words.
KELP_ALWAYS_INLINE void Rounds(const unsigned* schedule, std::uint32_t& left,
                               std::uint32_t& right) noexcept {
  for (int round = 0; round < kRounds; round += 2, schedule += 4) {
    left ^= Round(right, schedule);
    right ^= Round(left, schedule + 2);
  }
}

// Exchanges the bits of low that the mask names with those of high, shift bits above.
inline void Exchange(std::uint32_t& high, std::uint32_t& low, int shift,
                     std::uint32_t mask) noexcept {
  const std::uint32_t different = (high >> shift ^ low) & mask;
  low ^= different;
  high ^= different << shift;
}

// The initial permutation is five exchanges of bits; the final one takes them back.
inline void PermuteAndTurn(std::uint32_t& left, std::uint32_t& right) noexcept {
  Exchange(left, right, 4, 0x0F0F0F0F);
  Exchange(left, right, 16, 0x0000FFFF);
  Exchange(right, left, 2, 0x33333333);
  Exchange(right, left, 8, 0x00FF00FF);
  Exchange(left, right, 1, 0x55555555);
  left = std::rotl(left, kTurn);
  right = std::rotl(right, kTurn);
}
inline void TurnAndPermuteBack(std::uint32_t& left, std::uint32_t& right) noexcept {
  left = std::rotr(left, kTurn);
  right = std::rotr(right, kTurn);
  Exchange(left, right, 1, 0x55555555);
  Exchange(right, left, 8, 0x00FF00FF);
  Exchange(right, left, 2, 0x33333333);
  Exchange(left, right, 16, 0x0000FFFF);
  Exchange(left, right, 4, 0x0F0F0F0F);
}

// A half of the key register, 28 bits, further by some.
std::uint32_t Shifted(std::uint32_t half, int bits) noexcept {
  return (half << bits | half >> (28 - bits)) & 0x0FFFFFFF;
}

}  // namespace

void RawDES_UncheckedSetKey(bool forward, const unsigned char* key, unsigned* schedule) {
  std::uint64_t whole =
      std::uint64_t{kelp::detail::LoadBigEndian(key)} << 32 | kelp::detail::LoadBigEndian(key + 4);
  whole = Permuted(whole, 64, kPermutedChoice1);
  auto left = static_cast<std::uint32_t>(whole >> 28);
  auto right = static_cast<std::uint32_t>(whole & 0x0FFFFFFF);
  for (int round = 0; round < kRounds; ++round) {
    left = Shifted(left, kShifts[round]);
    right = Shifted(right, kShifts[round]);
    const auto chosen = Permuted(std::uint64_t{left} << 28 | right, 56, kPermutedChoice2);
    unsigned* const pair = schedule + 2 * (forward ? round : kRounds - 1 - round);
    pair[0] = pair[1] = 0;
    for (int box = 0; box < 8; ++box) {
      pair[box % 2] = pair[box % 2] << 8 | (chosen >> (42 - 6 * box) & 63);
    }
  }
}

void RawDES_RawProcessBlock(const unsigned* schedule, unsigned& left, unsigned& right) {
  std::uint32_t turnedLeft = std::rotl(left, kTurn);
  std::uint32_t turnedRight = std::rotl(right, kTurn);
  Rounds(schedule, turnedLeft, turnedRight);
  left = std::rotr(turnedLeft, kTurn);
  right = std::rotr(turnedRight, kTurn);
}

CDes3::~CDes3() {
  kelp::detail::Wipe(this, sizeof *this);
}

void CDes3::SetKey(bool forward, unsigned /*size*/, const void* key) {
  const auto* const first = static_cast<const unsigned char*>(key);
  const auto* const last = first + 2 * kKeySize;
  RawDES_UncheckedSetKey(forward, forward ? first : last, m_first);
  RawDES_UncheckedSetKey(!forward, first + kKeySize, m_second);
  RawDES_UncheckedSetKey(forward, forward ? last : first, m_third);
}

void CDes3::ProcessBlock(const void* in, const void* xorBlock, void* out) const {
  const auto* const source = static_cast<const unsigned char*>(in);
  std::uint32_t left = kelp::detail::LoadBigEndian(source);
  std::uint32_t right = kelp::detail::LoadBigEndian(source + 4);
  PermuteAndTurn(left, right);
  // The final permutation of a pass and the initial one of the next take each other back; what
  // stays of them is that the words change places.
  Rounds(m_first, left, right);
  Rounds(m_second, right, left);
  Rounds(m_third, left, right);
  TurnAndPermuteBack(right, left);
  if (xorBlock != nullptr) {
    const auto* const other = static_cast<const unsigned char*>(xorBlock);
    right ^= kelp::detail::LoadBigEndian(other);
    left ^= kelp::detail::LoadBigEndian(other + 4);
  }
  auto* const target = static_cast<unsigned char*>(out);
  kelp::detail::StoreBigEndian(right, target);
  kelp::detail::StoreBigEndian(left, target + 4);
}
