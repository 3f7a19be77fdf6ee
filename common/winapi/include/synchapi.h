// Critical sections.
#pragma once

#include <pthread.h>

#include "windef.h"

typedef struct _RTL_CRITICAL_SECTION {
  pthread_mutex_t mutex;
} CRITICAL_SECTION, *LPCRITICAL_SECTION;

// A section is entered by one thread at a time; that thread may enter it again and leaves it as
// many times. Leaving a section that the thread hasn't entered, and deleting one that is entered,
// are errors of the caller.
WINAPI_EXPORT void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION section);
WINAPI_EXPORT void WINAPI EnterCriticalSection(LPCRITICAL_SECTION section);
// False where another thread is inside.
WINAPI_EXPORT BOOL WINAPI TryEnterCriticalSection(LPCRITICAL_SECTION section);
WINAPI_EXPORT void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION section);
WINAPI_EXPORT void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION section);
