// The heap of the process.
#pragma once

#include "winnt.h"

WINAPI_EXPORT HANDLE WINAPI GetProcessHeap();
// Flags are 0 or HEAP_ZERO_MEMORY; others have no effect here. Null where there is no room; the
// last error stays as it was.
WINAPI_EXPORT LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T size);
WINAPI_EXPORT BOOL WINAPI HeapFree(HANDLE heap, DWORD flags, LPVOID block);
