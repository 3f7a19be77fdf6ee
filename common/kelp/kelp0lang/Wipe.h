// Memory that held a secret is overwritten before it is given back.
//
//   detail::Wipe(key, sizeof key);
//
// For digests, ciphers and what is derived from a pass phrase.
#pragma once

#include <cstddef>
#include <cstring>

#include "kelptext/Compiler.h"

namespace kelp::detail {

// Fills memory with zeros. A compiler drops stores that nobody reads, above all those into what is
// about to end.
inline void Wipe(void* memory, std::size_t size) noexcept {
  if (size != 0) std::memset(memory, 0, size);
  KeepStores(memory);
}

}  // namespace kelp::detail
