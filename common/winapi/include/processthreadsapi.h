// Threads and processes.
#pragma once

#include "minwinbase.h"
#include "winnt.h"

typedef DWORD(WINAPI* LPTHREAD_START_ROUTINE)(LPVOID parameter);

#define STILL_ACTIVE ((DWORD)0x00000103)

// Starts a thread with a stack of at least stackSize bytes; 0 is the usual size. It runs on when
// its handle is closed. threadId may be null. The security attributes aren't looked at; flags are
// 0, others fail with ERROR_NOT_SUPPORTED.
WINAPI_EXPORT HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES security, SIZE_T stackSize,
                                         LPTHREAD_START_ROUTINE start, LPVOID parameter,
                                         DWORD flags, LPDWORD threadId);
// What the thread's function gave, or STILL_ACTIVE before its end.
WINAPI_EXPORT BOOL WINAPI GetExitCodeThread(HANDLE thread, LPDWORD exitCode);

// When a thread was made and, if it has ended, when it did; and the time that the processor spent
// on it in the system and in the program. The processor's times of a thread that is running are
// exact to a microsecond for the calling thread, to some 10 milliseconds for another.
WINAPI_EXPORT BOOL WINAPI GetThreadTimes(HANDLE thread, LPFILETIME creation, LPFILETIME exit,
                                         LPFILETIME kernel, LPFILETIME user);

// A handle that stands for the thread that uses it; there is no need to close it.
WINAPI_EXPORT HANDLE WINAPI GetCurrentThread();
// The number of the calling thread: unique in the system while the thread lives, never 0.
WINAPI_EXPORT DWORD WINAPI GetCurrentThreadId();
// The number of this process.
WINAPI_EXPORT DWORD WINAPI GetCurrentProcessId();

// A process by its number, to ask about it: ERROR_INVALID_PARAMETER where there is none,
// ERROR_ACCESS_DENIED for one that this user may not look into, and ERROR_NOT_SUPPORTED for other
// rights than these two. A handle that comes from here can't be waited for.
#define PROCESS_VM_READ 0x0010
#define PROCESS_QUERY_INFORMATION 0x0400
WINAPI_EXPORT HANDLE WINAPI OpenProcess(DWORD access, BOOL inherit, DWORD processId);
// STILL_ACTIVE before its end. Only of a process that this one has started is it known afterwards;
// of another it is ERROR_NOT_SUPPORTED. One that was killed by a signal gives 128 and its number.
WINAPI_EXPORT BOOL WINAPI GetExitCodeProcess(HANDLE process, LPDWORD exitCode);
WINAPI_EXPORT DWORD WINAPI GetProcessId(HANDLE process);
