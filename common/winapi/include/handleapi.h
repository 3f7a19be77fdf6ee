// Handles of objects.
#pragma once

#include "windef.h"

// The object goes with its last handle; threads that wait for it go on waiting.
WINAPI_EXPORT BOOL WINAPI CloseHandle(HANDLE object);
