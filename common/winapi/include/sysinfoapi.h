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

// The folder of the system's own programs, /usr. Gives the length without the terminator, or, where
// size units don't hold it, the size needed with it.
WINAPI_EXPORT UINT WINAPI GetWindowsDirectoryW(LPWSTR buffer, UINT size);
