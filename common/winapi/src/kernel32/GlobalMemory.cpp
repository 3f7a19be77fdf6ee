// Memory by its own handle.
#include <windows.h>

#include <cstdlib>

#include "Fail.h"

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size) {
  if ((flags & ~static_cast<UINT>(GPTR)) != 0) return Fail<HGLOBAL>(ERROR_INVALID_PARAMETER);
  // An allocation of nothing is one too.
  const SIZE_T room = size == 0 ? 1 : size;
  const HGLOBAL memory = (flags & GMEM_ZEROINIT) != 0 ? std::calloc(room, 1) : std::malloc(room);
  return memory == nullptr ? Fail<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY) : memory;
}

HGLOBAL WINAPI GlobalFree(HGLOBAL memory) {
  std::free(memory);
  return nullptr;
}
