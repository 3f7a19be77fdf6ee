#include "sarnutils/Memory.h"

#include <cstdlib>
#include <new>

void* sarn_operator_new(std::size_t size) {
  // malloc(0) may give null, which would look like exhausted memory.
  if (void* block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}

void sarn_operator_delete(void* block) noexcept {
  std::free(block);
}
