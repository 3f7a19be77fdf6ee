// A plug-in that uses the pool, for a program that doesn't know the library.
#include <windows.h>

#include "kelp0lang/ThreadFactory.h"
#include "tests/plugin/Plugin.h"

namespace {

struct Task : kelp::CThreadFactory::ITask {
  unsigned long Run() override { return GetCurrentThreadId(); }
};

}  // namespace

unsigned long RunTask() {
  Task task;
  auto* const factory = kelp::CThreadFactory::GetInstance();
  kelp::CThreadFactory::CHandle* handle = nullptr;
  if (!factory->CreateThreadForTask(&task, false, &handle)) return 0;
  factory->WaitFor(handle, INFINITE);
  unsigned long worker = 0;
  factory->GetExitCodeThread(handle, worker);
  factory->CloseHandle(handle);
  return worker;
}
