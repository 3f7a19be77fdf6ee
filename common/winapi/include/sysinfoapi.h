// What the system is, and where it keeps its own files.
#pragma once

#include "windef.h"

// The folder of the system's own programs, /usr. Gives the length without the terminator, or, where
// size units don't hold it, the size needed with it.
WINAPI_EXPORT UINT WINAPI GetWindowsDirectoryW(LPWSTR buffer, UINT size);
