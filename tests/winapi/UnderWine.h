// Wine departs from the documented meaning of some calls; a test leaves those answers out there.
#pragma once

#include <windows.h>

#ifdef _WIN32
inline bool UnderWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
#else
inline bool UnderWine() {
  return false;
}
#endif
