// The clock, and what the system is and where it keeps its own files.
#pragma once

#include "minwinbase.h"

// Now, in UTC and as the machine's clock shows it.
WINAPI_EXPORT void WINAPI GetSystemTime(LPSYSTEMTIME time);
WINAPI_EXPORT void WINAPI GetLocalTime(LPSYSTEMTIME time);
WINAPI_EXPORT void WINAPI GetSystemTimeAsFileTime(LPFILETIME time);

// Milliseconds since the machine was started, those of its sleep included. The shorter count begins
// anew at 0 every 49.7 days.
WINAPI_EXPORT DWORD WINAPI GetTickCount();
WINAPI_EXPORT ULONGLONG WINAPI GetTickCount64();

// The version of Windows that the layer's calls are those of: 10.0, a workstation without a service
// pack. The size of the record says which one it is; another size is ERROR_INSUFFICIENT_BUFFER.
#define VER_PLATFORM_WIN32_NT 2
#define VER_NT_WORKSTATION 1
typedef struct _OSVERSIONINFOA {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  char szCSDVersion[128];
} OSVERSIONINFOA, *LPOSVERSIONINFOA;
typedef struct _OSVERSIONINFOW {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  WCHAR szCSDVersion[128];
} OSVERSIONINFOW, *LPOSVERSIONINFOW;
typedef struct _OSVERSIONINFOEXW {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  WCHAR szCSDVersion[128];
  WORD wServicePackMajor;
  WORD wServicePackMinor;
  WORD wSuiteMask;
  BYTE wProductType;
  BYTE wReserved;
} OSVERSIONINFOEXW;
WINAPI_EXPORT BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW info);
WINAPI_EXPORT BOOL WINAPI GetVersionExA(LPOSVERSIONINFOA info);

// The folder of the system's own programs, /usr. Gives the length without the terminator, or, where
// size units don't hold it, the size needed with it.
WINAPI_EXPORT UINT WINAPI GetWindowsDirectoryW(LPWSTR buffer, UINT size);
