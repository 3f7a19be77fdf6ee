// The pool where memory runs out. Only here do a program's operators serve the library too.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "kelp0lang/Singleton.h"
#include "kelp0lang/ThreadFactory.h"

namespace {

// How many allocations of this thread go well yet; negative: all.
constinit thread_local int allocationsLeft = -1;

}  // namespace

void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  void* const block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace {

struct Task : kelp::CThreadFactory::ITask {
  unsigned long Run() override { return 1; }
};

// True when the task was started; its run has ended then.
bool StartWith(Task& task, int allocations) {
  auto* const factory = kelp::CThreadFactory::GetInstance();
  kelp::CThreadFactory::CHandle* handle = nullptr;
  allocationsLeft = allocations;
  bool started = false;
  try {
    started = factory->CreateThreadForTask(&task, false, &handle);
  } catch (const std::bad_alloc&) {
  }
  allocationsLeft = -1;
  EXPECT_EQ(handle != nullptr, started);
  if (!started) return false;
  factory->WaitFor(handle, 0xFFFFFFFF);
  unsigned long code = 0;
  EXPECT_TRUE(factory->GetExitCodeThread(handle, code));
  EXPECT_EQ(code, 1u);
  factory->CloseHandle(handle);
  return true;
}

TEST(ThreadFactoryMemory, ATaskThatCannotBeStartedLeavesThePoolWhole) {
  Task task;
  int refused = 0;
  kelp::CThreadFactory::GetInstance()->Populate(1);
  while (!StartWith(task, refused)) ++refused;
  EXPECT_GT(refused, 0);
  EXPECT_TRUE(StartWith(task, -1));
  EXPECT_EQ(task.GetCurrentThread(), nullptr);
  kelp::CSingletonManager::DeleteSingletons();
}

}  // namespace
