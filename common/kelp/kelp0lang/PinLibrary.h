// For what leaves threads of its own in this library's code.
#pragma once

#include <windows.h>

namespace kelp::detail {

// The library stays loaded from now on until the process ends, whatever a program gives back.
inline bool PinLibrary() {
  constexpr DWORD kPin = GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
  HMODULE library;
  return GetModuleHandleExW(kPin, reinterpret_cast<LPCWSTR>(&PinLibrary), &library) != FALSE;
}

}  // namespace kelp::detail
