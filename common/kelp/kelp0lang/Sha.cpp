#include "kelp0lang/Sha.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kelp0lang/BigEndian.h"
#include "kelp0lang/ShaBlocks.h"
#include "kelp0lang/Wipe.h"

namespace {

constexpr std::uint32_t kStart[] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
constexpr unsigned kLengthOffset = 56;  // of the message's length, at the end of its last block

unsigned char* Bytes(unsigned* words) noexcept {
  return reinterpret_cast<unsigned char*>(words);
}

}  // namespace

CSha::~CSha() {
  kelp::detail::Wipe(this, sizeof *this);
}

void CSha::Reset() {
  std::copy(std::begin(kStart), std::end(kStart), m_state);
  m_byteCountLow = 0;
  m_byteCountHigh = 0;
  kelp::detail::Wipe(m_data, sizeof m_data);
}

void CSha::Update(unsigned size, const void* data) {
  if (size == 0) return;
  const auto* bytes = static_cast<const unsigned char*>(data);
  const unsigned filled = m_byteCountLow % GetBlockSize();
  m_byteCountLow += size;
  if (m_byteCountLow < size) ++m_byteCountHigh;
  if (filled != 0) {
    const unsigned taken = std::min(size, GetBlockSize() - filled);
    std::memcpy(Bytes(m_data) + filled, bytes, taken);
    if (filled + taken < GetBlockSize()) return;
    HashBlock(m_data);
    bytes += taken;
    size -= taken;
  }
  const unsigned left = HashMultipleBlocks(size, bytes);
  if (left != 0) std::memcpy(m_data, bytes + (size - left), left);
}

bool CSha::Result(unsigned size, void* digest) {
  if (size > GetDigestSize()) return false;
  const unsigned bitsHigh = GetBitCountHi();
  const unsigned bitsLow = GetBitCountLo();
  PadLastBlock(kLengthOffset, 0x80);
  kelp::detail::StoreBigEndian(bitsHigh, Bytes(m_data) + kLengthOffset);
  kelp::detail::StoreBigEndian(bitsLow, Bytes(m_data) + kLengthOffset + 4);
  HashBlock(m_data);
  unsigned char whole[sizeof m_state];
  for (std::size_t i = 0; i < std::size(m_state); ++i) {
    kelp::detail::StoreBigEndian(m_state[i], whole + 4 * i);
  }
  std::copy_n(whole, size, static_cast<unsigned char*>(digest));
  kelp::detail::Wipe(whole, sizeof whole);
  Reset();
  return true;
}

void CSha::HashBlock(const void* block) {
  HashMultipleBlocks(GetBlockSize(), block);
}

unsigned CSha::HashMultipleBlocks(unsigned size, const void* blocks) {
  kelp::detail::TakeShaBlocks(m_state, static_cast<const unsigned char*>(blocks),
                              size / GetBlockSize());
  return size % GetBlockSize();
}

void CSha::PadLastBlock(unsigned offset, unsigned char first) {
  unsigned filled = m_byteCountLow % GetBlockSize();
  unsigned char* const bytes = Bytes(m_data);
  bytes[filled++] = first;
  if (filled > offset) {
    std::memset(bytes + filled, 0, GetBlockSize() - filled);
    HashBlock(m_data);
    filled = 0;
  }
  std::memset(bytes + filled, 0, offset - filled);
}
