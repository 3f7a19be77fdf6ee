// Blocks of memory that Windows keeps in heaps of its own; here they are those of the C runtime.
#include <windows.h>

#include <cstdlib>

HANDLE WINAPI GetProcessHeap() {
  static char heap;
  return &heap;
}

LPVOID WINAPI HeapAlloc(HANDLE, DWORD flags, SIZE_T size) {
  return (flags & HEAP_ZERO_MEMORY) != 0 ? std::calloc(1, size) : std::malloc(size);
}

BOOL WINAPI HeapFree(HANDLE, DWORD, LPVOID block) {
  std::free(block);
  return TRUE;
}

HANDLE WINAPI LocalFree(HANDLE block) {
  std::free(block);
  return nullptr;
}
