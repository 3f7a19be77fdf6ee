// Critical sections, events, mutexes, semaphores, and waiting for them.
#pragma once

#include <pthread.h>

#include "minwinbase.h"
#include "winnt.h"

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

// The objects belong to the process: a name, by which other processes would share them, fails with
// ERROR_NOT_SUPPORTED. The security attributes aren't looked at. Null is a failure.

// A set event stays so until ResetEvent, or without manualReset until one wait has taken it.
WINAPI_EXPORT HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES security, BOOL manualReset,
                                         BOOL initialState, LPCWSTR name);
WINAPI_EXPORT BOOL WINAPI SetEvent(HANDLE event);
WINAPI_EXPORT BOOL WINAPI ResetEvent(HANDLE event);
// Sets the event for the threads that wait for it now, one or all, and leaves it reset.
WINAPI_EXPORT BOOL WINAPI PulseEvent(HANDLE event);

// A mutex belongs to one thread, which may take it again and releases it as many times. Where the
// thread ends without, the mutex is abandoned: the next wait takes it and says so.
WINAPI_EXPORT HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES security, BOOL initialOwner,
                                         LPCWSTR name);
// ERROR_NOT_OWNER where the mutex isn't the calling thread's.
WINAPI_EXPORT BOOL WINAPI ReleaseMutex(HANDLE mutex);

// Each wait takes one of the count, which a release adds to; it stays within 0 and maximumCount.
WINAPI_EXPORT HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES security, LONG initialCount,
                                             LONG maximumCount, LPCWSTR name);
// previousCount may be null. More than fits changes nothing and fails with ERROR_TOO_MANY_POSTS.
WINAPI_EXPORT BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG count, LPLONG previousCount);

#define INFINITE 0xFFFFFFFF
#define MAXIMUM_WAIT_OBJECTS 64
#define WAIT_OBJECT_0 ((DWORD)0x00000000)
#define WAIT_ABANDONED ((DWORD)0x00000080)
#define WAIT_ABANDONED_0 ((DWORD)0x00000080)
#define WAIT_TIMEOUT ((DWORD)258)
#define WAIT_FAILED ((DWORD)0xFFFFFFFF)

// The calling thread sleeps until the object is signalled, and takes what it waited for: an event
// without manual reset, a mutex, one of a semaphore. Threads that wait for the same are served in
// the order in which they came. A thread is signalled when it has ended.
WINAPI_EXPORT DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds);
// For one of up to MAXIMUM_WAIT_OBJECTS objects, the first in the array of those that are
// signalled; or for all, of which none is taken before all can be. All must be different ones.
// An abandoned mutex among all gives WAIT_ABANDONED_0.
WINAPI_EXPORT DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                                                  DWORD milliseconds);

// 0 gives up the rest of the thread's turn.
WINAPI_EXPORT void WINAPI Sleep(DWORD milliseconds);
