// The strings of modules' tables.
#include <windows.h>

#include "CopyText.h"

int WINAPI LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int size) {
  constexpr UINT kBlockSize = 16;
  if (buffer == nullptr || size < 0) return 0;
  const HRSRC resource =
      FindResourceW(module, MAKEINTRESOURCEW((id & 0xFFFF) / kBlockSize + 1), RT_STRING);
  const auto* counted = static_cast<const WCHAR*>(LockResource(LoadResource(module, resource)));
  if (counted == nullptr) return CopyText(u"", buffer, size);
  for (UINT i = 0; i < id % kBlockSize; ++i) counted += 1 + *counted;
  if (size > 0) return CopyText({counted + 1, *counted}, buffer, size);
  *reinterpret_cast<LPCWSTR*>(buffer) = counted + 1;
  return *counted;
}
