// The pool where memory runs out, and what it gives back. Only here do a program's operators serve
// the library too.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <new>
#include <thread>

#include "kelp0lang/Singleton.h"
#include "kelp0lang/ThreadFactory.h"

namespace {

// How many allocations of this thread go well yet; negative: all.
constinit thread_local int allocationsLeft = -1;
// Blocks of all threads that haven't been given back.
constinit std::atomic<int> blocks = 0;

}  // namespace

void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  void* const block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  ++blocks;
  return block;
}
void operator delete(void* block) noexcept {
  if (block != nullptr) --blocks;
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  if (block != nullptr) --blocks;
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

std::ptrdiff_t ThreadsOfTheProcess() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

// The first round also makes what stays for good.
TEST(ThreadFactoryMemory, HandlesWorkersAndEventsAreGivenBack) {
  const auto round = [] {
    auto* const factory = kelp::CThreadFactory::GetInstance();
    factory->Populate(2);
    for (int i = 0; i < 4; ++i) {
      Task task;
      EXPECT_TRUE(StartWith(task, -1));
      EXPECT_TRUE(factory->CreateThreadForTask(new Task, true, nullptr));
    }
    kelp::CSingletonManager::DeleteSingletons();
    // The workers' last steps.
    while (ThreadsOfTheProcess() > 1) std::this_thread::yield();
    return blocks.load();
  };
  const int first = round();
  EXPECT_EQ(round(), first);
}

}  // namespace
