// Waiting for objects, and for time to pass.
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

#include "Fail.h"
#include "kernel32/KernelObject.h"

namespace winapi {
namespace {

std::timespec After(DWORD milliseconds) {
  constexpr long kSecond = 1'000'000'000;
  std::timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  time.tv_sec += milliseconds / 1000;
  time.tv_nsec += milliseconds % 1000 * 1'000'000L;
  if (time.tv_nsec >= kSecond) {
    ++time.tv_sec;
    time.tv_nsec -= kSecond;
  }
  return time;
}

// Sleeps until the wait, now enlisted, has ended or its time has run out.
DWORD Await(PendingWait& wait, DWORD milliseconds) {
  Parking& parking = wait.thread.parking;
  if (milliseconds == INFINITE) {
    parking.Sleep(nullptr);
    return wait.result;
  }
  const std::timespec deadline = After(milliseconds);
  if (parking.Sleep(&deadline)) return wait.result;
  KernelLock lock;
  // It may have ended after all, before the lock was had.
  if (parking.IsOpen()) return wait.result;
  lock.Dismiss(wait);
  return WAIT_TIMEOUT;
}

DWORD WaitFor(DWORD count, const HANDLE* handles, bool all, DWORD milliseconds) {
  KernelObject* objects[MAXIMUM_WAIT_OBJECTS];
  Thread& thread = Thread::Current();
  PendingWait wait{thread, {}, all, WAIT_FAILED};
  {
    KernelLock lock;
    for (DWORD i = 0; i < count; ++i) {
      objects[i] = lock.Find(handles[i]);
      if (objects[i] == nullptr) return WAIT_FAILED;
      if (all && std::find(objects, objects + i, objects[i]) != objects + i) {
        return Fail(ERROR_INVALID_PARAMETER, WAIT_FAILED);
      }
    }
    if (lock.TryTake(thread, objects, count, all, wait.result)) return wait.result;
    if (milliseconds == 0) return WAIT_TIMEOUT;
    for (DWORD i = 0; i < count; ++i) wait.objects.push_back(objects[i]->shared_from_this());
    lock.Enlist(wait);
  }
  return Await(wait, milliseconds);
}

}  // namespace
}  // namespace winapi

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return winapi::WaitFor(1, &object, false, milliseconds);
}

DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                                    DWORD milliseconds) {
  if (count == 0 || count > MAXIMUM_WAIT_OBJECTS) return Fail(ERROR_INVALID_PARAMETER, WAIT_FAILED);
  return winapi::WaitFor(count, objects, waitAll != FALSE, milliseconds);
}

void WINAPI Sleep(DWORD milliseconds) {
  if (milliseconds == 0) {
    sched_yield();
    return;
  }
  if (milliseconds == INFINITE) {
    for (;;) pause();
  }
  const std::timespec deadline = winapi::After(milliseconds);
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
  }
}
