// The compression of SHA-1 (FIPS 180-1), in the forms that a processor can run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelp::detail {

inline constexpr std::size_t kShaBlock = 64;
inline constexpr std::size_t kShaWords = 5;

// Takes count blocks of 64 bytes, at any address, into a chaining value of five words.
using ShaBlocksForm = void(std::uint32_t* state, const unsigned char* blocks, std::size_t count);

// The forms that this processor runs, the fastest last: first the portable one, behind it that of
// the SHA instructions where there are such. All give the same.
std::span<ShaBlocksForm* const> ShaBlocksForms() noexcept;

// By the fastest form, which is looked for once.
inline void TakeShaBlocks(std::uint32_t* state, const unsigned char* blocks, std::size_t count) {
  static ShaBlocksForm* const fastest = ShaBlocksForms().back();
  fastest(state, blocks, count);
}

}  // namespace kelp::detail
