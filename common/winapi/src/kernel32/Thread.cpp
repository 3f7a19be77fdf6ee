// Threads, and the numbers of threads and processes.
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Fail.h"
#include "FileTimes.h"
#include "kernel32/KernelObject.h"

namespace winapi {
namespace {

using Ticks = std::uint64_t;

constinit thread_local DWORD threadId = 0;

Ticks SinceBoot() {
  std::timespec time;
  clock_gettime(CLOCK_BOOTTIME, &time);
  return static_cast<Ticks>(time.tv_sec * kTicksPerSecond + time.tv_nsec / 100);
}

Ticks Now() {
  std::timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  return ToTicks(time.tv_sec, time.tv_nsec);
}

Ticks ToTicks(const timeval& time) {
  return static_cast<Ticks>(time.tv_sec * kTicksPerSecond + time.tv_usec * 10);
}

// The processor's times of the calling thread.
void ReadOwnTimes(Thread::Times& times) {
  rusage usage;
  getrusage(RUSAGE_THREAD, &usage);
  times.kernel = ToTicks(usage.ru_stime);
  times.user = ToTicks(usage.ru_utime);
}

// The times that the system shows of a thread that hasn't ended. Without them all stay as they are.
void ReadShownTimes(DWORD id, Thread::Times& times) {
  const std::string path = "/proc/self/task/" + std::to_string(id) + "/stat";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "r"),
                                                             std::fclose);
  if (file == nullptr) return;
  char line[1024] = {};
  std::fread(line, 1, sizeof(line) - 1, file.get());
  // Behind the name, which stands in parentheses and may hold others.
  const std::size_t name = std::string_view(line).rfind(')');
  if (name == std::string_view::npos) return;
  unsigned long user = 0;
  unsigned long kernel = 0;
  unsigned long long start = 0;
  constexpr const char* kFields =
      ") %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %lu %lu %*d %*d %*d %*d %*d %*d %llu";
  if (std::sscanf(line + name, kFields, &user, &kernel, &start) != 3) return;
  const Ticks unit = static_cast<Ticks>(kTicksPerSecond / sysconf(_SC_CLK_TCK));
  times.user = user * unit;
  times.kernel = kernel * unit;
  times.creation = Now() - SinceBoot() + start * unit;
}

// A thread keeps its record to its end.
using Record = std::shared_ptr<Thread>;

void EndThread(void* pointer) {
  const std::unique_ptr<Record> record(static_cast<Record*>(pointer));
  Thread& thread = **record;
  thread.windows.reset();
  currentThread = nullptr;

  KernelLock lock;
  while (!thread.owned.empty()) {
    KernelObject& object = *thread.owned.back();
    thread.owned.pop_back();
    object.Abandon();
    lock.EndWaits(object);
  }
  ReadOwnTimes(thread.times);
  thread.times.exit = Now();
  thread.ended = true;
  lock.EndWaits(thread);
}

// What is called behind the destructors of a thread's local objects.
pthread_key_t EndKey() {
  static const pthread_key_t key = [] {
    pthread_key_t made;
    pthread_key_create(&made, EndThread);
    return made;
  }();
  return key;
}

void Adopt(Record thread) {
  currentThread = thread.get();
  thread->id = GetCurrentThreadId();
  pthread_setspecific(EndKey(), new Record(std::move(thread)));
}

// What a new thread is given.
struct Start {
  Record thread;
  LPTHREAD_START_ROUTINE function;
  LPVOID parameter;
  Parking* hasId;  // opened when the thread knows its number; may be null
};

void* RunThread(void* pointer) {
  Start start = std::move(*std::unique_ptr<Start>(static_cast<Start*>(pointer)));
  Thread& thread = *start.thread;
  Adopt(std::move(start.thread));
  if (start.hasId != nullptr) Parking::Wake(start.hasId->Open());
  const DWORD exitCode = start.function(start.parameter);
  const KernelLock lock;
  thread.exitCode = exitCode;
  return nullptr;
}

// Starts a thread that nobody joins; gives an error number.
int StartThread(SIZE_T stackSize, std::unique_ptr<Start> start) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  std::size_t usualSize = 0;
  pthread_attr_getstacksize(&attributes, &usualSize);
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  if (stackSize > usualSize) {
    pthread_attr_setstacksize(&attributes, (stackSize + page - 1) / page * page);
  }
  pthread_t thread;
  const int error = pthread_create(&thread, &attributes, RunThread, start.get());
  if (error == 0) (void)start.release();
  pthread_attr_destroy(&attributes);
  return error;
}

}  // namespace

Thread& Thread::Current() {
  if (currentThread == nullptr) Adopt(std::make_shared<Thread>());
  return *currentThread;
}

}  // namespace winapi

using winapi::KernelLock;
using winapi::Thread;

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, LPDWORD newThreadId) {
  if (flags != 0) {
    return Fail<HANDLE>(ERROR_NOT_SUPPORTED);
  }
  const auto thread = std::make_shared<Thread>();
  thread->times.creation = winapi::Now();
  winapi::Parking hasId;
  auto* const wanted = newThreadId == nullptr ? nullptr : &hasId;
  const HANDLE handle = KernelLock().Add(thread);
  if (handle == nullptr) return nullptr;
  if (winapi::StartThread(stackSize, std::make_unique<winapi::Start>(
                                         winapi::Start{thread, start, parameter, wanted})) != 0) {
    CloseHandle(handle);
    return Fail<HANDLE>(ERROR_NOT_ENOUGH_MEMORY);
  }
  if (newThreadId != nullptr) {
    hasId.Sleep(nullptr);
    *newThreadId = thread->id;
  }
  return handle;
}

BOOL WINAPI GetExitCodeThread(HANDLE thread, LPDWORD exitCode) {
  Thread::Current();
  const KernelLock lock;
  const auto* const object = lock.Find<Thread>(thread);
  if (object == nullptr) return FALSE;
  *exitCode = object->ended ? object->exitCode : STILL_ACTIVE;
  return TRUE;
}

BOOL WINAPI GetThreadTimes(HANDLE thread, LPFILETIME creation, LPFILETIME exit, LPFILETIME kernel,
                           LPFILETIME user) {
  const Thread* const current = &Thread::Current();
  const KernelLock lock;
  auto* const object = lock.Find<Thread>(thread);
  if (object == nullptr) return FALSE;
  Thread::Times times = object->times;
  if (!object->ended && (object != current || times.creation == 0)) {
    winapi::ReadShownTimes(object->id, times);
    // That of a thread that CreateThread made is known better.
    if (object->times.creation != 0) times.creation = object->times.creation;
    object->times.creation = times.creation;
  }
  if (object == current) winapi::ReadOwnTimes(times);
  *creation = ToFileTime(times.creation);
  *exit = ToFileTime(times.exit);
  *kernel = ToFileTime(times.kernel);
  *user = ToFileTime(times.user);
  return TRUE;
}

HANDLE WINAPI GetCurrentThread() {
  return winapi::kCurrentThread;
}

DWORD WINAPI GetCurrentThreadId() {
  if (winapi::threadId == 0) winapi::threadId = static_cast<DWORD>(gettid());
  return winapi::threadId;
}

DWORD WINAPI GetCurrentProcessId() {
  return static_cast<DWORD>(getpid());
}
