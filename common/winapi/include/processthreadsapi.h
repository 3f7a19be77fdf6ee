// Threads and processes.
#pragma once

#include "windef.h"

// The number of the calling thread: unique in the system while the thread lives, never 0.
WINAPI_EXPORT DWORD WINAPI GetCurrentThreadId();
// The number of this process.
WINAPI_EXPORT DWORD WINAPI GetCurrentProcessId();
