// Which version of Windows the layer stands for.
#include <windows.h>

#include <cstddef>

#include "Fail.h"

namespace {

constexpr DWORD kMajor = 10;
constexpr DWORD kMinor = 0;
constexpr DWORD kBuild = 19045;

template <class Info>
void Fill(Info& info) {
  info.dwMajorVersion = kMajor;
  info.dwMinorVersion = kMinor;
  info.dwBuildNumber = kBuild;
  info.dwPlatformId = VER_PLATFORM_WIN32_NT;
  info.szCSDVersion[0] = 0;
}

}  // namespace

BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW info) {
  const bool isLong = info->dwOSVersionInfoSize == sizeof(OSVERSIONINFOEXW);
  if (!isLong && info->dwOSVersionInfoSize != sizeof(OSVERSIONINFOW)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  Fill(*info);
  if (isLong) {
    auto* const whole = reinterpret_cast<OSVERSIONINFOEXW*>(info);
    whole->wServicePackMajor = whole->wServicePackMinor = whole->wSuiteMask = 0;
    whole->wProductType = VER_NT_WORKSTATION;
    whole->wReserved = 0;
  }
  return TRUE;
}

BOOL WINAPI GetVersionExA(LPOSVERSIONINFOA info) {
  if (info->dwOSVersionInfoSize != sizeof(OSVERSIONINFOA)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  Fill(*info);
  return TRUE;
}
