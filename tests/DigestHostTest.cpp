// What the key derivation gives back to the heap. Only here do a program's operators serve the
// library too.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "kelp0lang/KeyDerivation.h"

namespace {

// Blocks of at least 40 bytes that were given back while this counts, and those with more than
// zeros.
constinit thread_local int given = -1, notWiped = 0;

}  // namespace

void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept {
  const auto* const bytes = static_cast<const char*>(block);
  if (given >= 0 && ++given > 0 && std::count(bytes, bytes + 40, 0) != 40) ++notWiped;
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

TEST(Wiping, DerivationWipesItsBuffers) {
  unsigned char key[24], vector[8];
  given = 0;
  GenerateKeyIVWithSHA(4, "pass", sizeof key, key, sizeof vector, vector);
  const int blocks = std::exchange(given, -1);
  EXPECT_GE(blocks, 1);
  EXPECT_EQ(notWiped, 0);
}
