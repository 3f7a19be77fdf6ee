// The last error of a thread.
#pragma once

#include "windef.h"

// What the last call on this thread that sets it left; a call that succeeds may leave it as it was.
WINAPI_EXPORT DWORD WINAPI GetLastError();
WINAPI_EXPORT void WINAPI SetLastError(DWORD error);
