#include <unistd.h>
#include <windows.h>

namespace {

constinit thread_local DWORD threadId = 0;

}  // namespace

DWORD WINAPI GetCurrentThreadId() {
  if (threadId == 0) threadId = static_cast<DWORD>(gettid());
  return threadId;
}

DWORD WINAPI GetCurrentProcessId() {
  return static_cast<DWORD>(getpid());
}
