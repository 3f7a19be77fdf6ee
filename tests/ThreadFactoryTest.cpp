// A program of its own: each test closes the pool, with all else that is process-wide.
#include "kelp0lang/ThreadFactory.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "kelp0lang/SyncObj.h"

using kelp::CSyncEvent;
using kelp::CSyncMutex;
using kelp::CSyncSemaphore;
using kelp::CThreadFactory;
using CHandle = CThreadFactory::CHandle;

namespace {

CThreadFactory* Factory() {
  return CThreadFactory::GetInstance();
}

using Task = kelp::CFunctionTask<std::function<unsigned long()>>;

// The run of a task, waited for and given back.
class Running {
 public:
  explicit Running(CThreadFactory::ITask& task) {
    EXPECT_TRUE(Factory()->CreateThreadForTask(&task, false, &m_handle));
    EXPECT_NE(m_handle, nullptr);
  }
  ~Running() { Factory()->CloseHandle(m_handle); }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  CHandle* Handle() const { return m_handle; }
  unsigned long Wait() {
    Factory()->WaitFor(m_handle, INFINITE);
    unsigned long code = 0;
    EXPECT_TRUE(Factory()->GetExitCodeThread(m_handle, code));
    return code;
  }

 private:
  CHandle* m_handle = nullptr;
};

std::uint64_t Ticks(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// Which thread ran a task, and when it was made.
struct Runner {
  DWORD id;
  std::uint64_t creation;

  static Runner Current() {
    FILETIME times[4];
    EXPECT_TRUE(GetThreadTimes(GetCurrentThread(), &times[0], &times[1], &times[2], &times[3]));
    return {GetCurrentThreadId(), Ticks(times[0])};
  }
};

class ThreadFactory : public testing::Test {
 protected:
  ~ThreadFactory() override { kelp::CSingletonManager::DeleteSingletons(); }

  // The threads of as many tasks as run at once.
  static std::vector<Runner> RunAtOnce(int count) {
    CSyncSemaphore arrived(0, count);
    CSyncEvent go(false, true);
    std::vector<Runner> runners(static_cast<std::size_t>(count));
    std::list<Task> tasks;
    std::list<Running> runs;
    for (Runner& runner : runners) {
      tasks.emplace_back([&] {
        runner = Runner::Current();
        arrived.Unlock();
        go.Lock();
        return 0ul;
      });
      runs.emplace_back(tasks.back());
    }
    for (int i = 0; i < count; ++i) arrived.Lock();
    go.SetEvent();
    for (Running& run : runs) run.Wait();
    return runners;
  }

  static std::set<DWORD> RunIds(int count) {
    std::set<DWORD> ids;
    for (const Runner& runner : RunAtOnce(count)) ids.insert(runner.id);
    return ids;
  }
};

TEST_F(ThreadFactory, WorkersAreUsedAgain) {
  const std::set<DWORD> first = RunIds(1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(RunIds(1), first);
  const std::set<DWORD> two = RunIds(2);
  EXPECT_EQ(two.size(), 2u);
  EXPECT_EQ(two.count(*first.begin()), 1u);
  EXPECT_EQ(RunIds(2), two) << "both went back";
  EXPECT_EQ(two.count(GetCurrentThreadId()), 0u);
}

TEST_F(ThreadFactory, PopulatingCountsTheIdleOnes) {
  Factory()->Populate(4);
  Factory()->Populate(4);
  Factory()->Populate(-1);
  Sleep(50);  // longer than any clock's step
  FILETIME time;
  GetSystemTimeAsFileTime(&time);
  Sleep(50);
  const std::vector<Runner> runners = RunAtOnce(6);
  EXPECT_EQ(std::count_if(runners.begin(), runners.end(),
                          [&](const Runner& runner) { return runner.creation < Ticks(time); }),
            4);
}

TEST_F(ThreadFactory, AHandleTellsOfTheRun) {
  CSyncEvent go(false, true);
  CHandle* seen = nullptr;
  Task task([&] {
    go.Lock();
    seen = task.GetCurrentThread();
    return 42ul;
  });
  EXPECT_EQ(task.GetCurrentThread(), nullptr);
  Running run(task);
  unsigned long code = 0;
  EXPECT_FALSE(Factory()->GetExitCodeThread(run.Handle(), code));
  EXPECT_EQ(code, 259u);
  Factory()->WaitFor(run.Handle(), 0);
  Factory()->WaitFor(run.Handle(), 5);
  EXPECT_FALSE(Factory()->GetExitCodeThread(run.Handle(), code));
  go.SetEvent();
  EXPECT_EQ(run.Wait(), 42u);
  EXPECT_EQ(run.Wait(), 42u) << "and goes on to do so";
  EXPECT_EQ(seen, run.Handle());
  EXPECT_EQ(task.GetCurrentThread(), nullptr);

  Running again(task);
  EXPECT_NE(again.Handle(), run.Handle());
  EXPECT_EQ(again.Wait(), 42u);
}

TEST_F(ThreadFactory, AnExitCodeHas32Bits) {
  for (const std::uint64_t code : {~std::uint64_t{0}, std::uint64_t{5} << 32 | 6}) {
    Task task([=] { return static_cast<unsigned long>(code); });
    EXPECT_EQ(Running(task).Wait(), code & 0xFFFFFFFF);
  }
}

// Throws as long as it is told to, and wants a fresh run as often.
struct Failing : CThreadFactory::ITask {
  Failing(int throws, int restarts, bool throwsAgain)
      : m_throws(throws), m_restarts(restarts), m_throwsAgain(throwsAgain) {}
  unsigned long Run() override {
    threads.insert(GetCurrentThreadId());
    if (runs++ < m_throws) {
      if (runs % 2 == 0) throw std::runtime_error("fails");
      throw 7;
    }
    return 5;
  }
  void OnThreadException(bool& restart) override {
    EXPECT_FALSE(restart);
    EXPECT_NE(std::current_exception(), nullptr);
    restart = m_restarts-- > 0;
    if (m_throwsAgain) throw "and once more";
  }
  int runs = 0;
  std::set<DWORD> threads;

 private:
  int m_throws, m_restarts;
  bool m_throwsAgain;
};

TEST_F(ThreadFactory, ATaskThatThrowsMayRunAgain) {
  const struct {
    int throws, restarts;
    bool throwsAgain;
    int runs;
    unsigned long code;
  } cases[] = {{3, 9, false, 4, 5}, {9, 2, false, 3, 0xFFFFFFFF}, {1, 1, true, 1, 0xFFFFFFFF}};
  for (const auto& c : cases) {
    Failing task(c.throws, c.restarts, c.throwsAgain);
    EXPECT_EQ(Running(task).Wait(), c.code);
    EXPECT_EQ(task.runs, c.runs);
    EXPECT_EQ(task.threads.size(), 1u);
  }
}

struct Tally {
  std::atomic<int> runs{0};
  std::atomic<int> deaths{0};
  std::atomic<int> aborts{0};
};

// Ends in one of several ways.
class Short : public CThreadFactory::ITask {
 public:
  enum Way { kPlain, kAutoDeleted, kThrows, kThrowsOnce, kDeletesItself, kThrowsDeleted, kWays };
  Short(Tally& tally, Way way) : m_tally(tally), m_way(way) {}
  ~Short() override {
    EXPECT_EQ(GetCurrentThread() != nullptr, m_ownDeath);
    ++m_tally.deaths;
  }
  bool IsAutoDeleted() const { return m_way != kPlain && m_way < kDeletesItself; }
  unsigned long Run() override {
    ++m_tally.runs;
    if (m_way == kThrows || (m_way == kThrowsOnce && !m_thrown)) {
      m_thrown = true;
      throw std::runtime_error("fails");
    }
    if (m_way == kDeletesItself || m_way == kThrowsDeleted) {
      const bool throws = m_way == kThrowsDeleted;
      m_ownDeath = true;
      delete this;
      if (throws) throw 1;
    }
    return 3;
  }
  void OnAbortRequested() override { ++m_tally.aborts; }
  void OnThreadException(bool& restart) override { restart = m_way == kThrowsOnce; }

 private:
  Tally& m_tally;
  const Way m_way;
  bool m_thrown = false;
  bool m_ownDeath = false;
};

constexpr unsigned long kExitCodes[] = {3, 3, 0xFFFFFFFF, 3, 3, 0xFFFFFFFF};

TEST_F(ThreadFactory, TasksEndInAllWaysByTheThousand) {
  Factory();
  Tally tally;
  std::atomic<int> runs = 0, deaths = 0;
  std::vector<std::thread> hosts;
  for (unsigned h = 0; h < 3; ++h) {
    hosts.emplace_back([&, h] {
      std::mt19937 random(h);
      for (int i = 0; i < 1000; ++i) {
        const auto way = static_cast<Short::Way>(random() % Short::kWays);
        auto* const task = new Short(tally, way);
        runs += way == Short::kThrowsOnce ? 2 : 1;
        ++deaths;
        const bool waits = way == Short::kPlain || random() % 2 == 0;
        CHandle* handle = nullptr;
        ASSERT_TRUE(
            Factory()->CreateThreadForTask(task, task->IsAutoDeleted(), waits ? &handle : nullptr));
        if (!waits) continue;
        unsigned long code = 0;
        Factory()->WaitFor(handle, INFINITE);
        EXPECT_TRUE(Factory()->GetExitCodeThread(handle, code));
        EXPECT_EQ(code, kExitCodes[way]);
        Factory()->CloseHandle(handle);
        if (way == Short::kPlain) delete task;
      }
    });
  }
  for (std::thread& host : hosts) host.join();
  kelp::CSingletonManager::DeleteSingletons();
  EXPECT_EQ(tally.runs, runs);
  EXPECT_EQ(tally.deaths, deaths);
}

// Tells when tasks have begun, and when the threads that ran them have ended: each leaves a mutex
// behind.
class ThreadEnds {
 public:
  void Begin() {
    const std::lock_guard lock(m_guard);
    m_left.push_back(std::make_unique<CSyncMutex>(true));
    m_begun.Unlock();
  }
  void WaitForBegins(int count) {
    while (count-- > 0) EXPECT_TRUE(m_begun.Lock());
  }
  void WaitForEnds() {
    for (const auto& mutex : m_left) {
      EXPECT_FALSE(mutex->Lock()) << "abandoned";
      EXPECT_TRUE(mutex->Unlock());
    }
  }

 private:
  CSyncSemaphore m_begun{0, 100};
  std::mutex m_guard;
  std::vector<std::unique_ptr<CSyncMutex>> m_left;
};

// Runs until it is asked to abort, and then tries to start another run.
class Patient : public CThreadFactory::ITask {
 public:
  explicit Patient(ThreadEnds& ends) : m_ends(ends), m_asked(false, true) {}
  unsigned long Run() override {
    m_ends.Begin();
    m_asked.Lock();
    auto* handle = reinterpret_cast<CHandle*>(this);
    refused = !Factory()->CreateThreadForTask(this, false, &handle) && handle == nullptr;
    return 1;
  }
  void OnAbortRequested() override { m_asked.SetEvent(); }

  bool refused = false;

 private:
  ThreadEnds& m_ends;
  CSyncEvent m_asked;
};

TEST_F(ThreadFactory, ClosingAsksTheTasksToAbortAndEndsAllWorkers) {
  ThreadEnds ends;
  Patient a(ends), b(ends);
  {
    Task idle([&] { return ends.Begin(), 0ul; });
    Running(idle).Wait();
  }
  Factory()->Populate(3);
  for (Patient* task : {&a, &b}) {
    EXPECT_TRUE(Factory()->CreateThreadForTask(task, false, nullptr));
  }
  ends.WaitForBegins(3);
  kelp::CSingletonManager::DeleteSingletons();
  EXPECT_TRUE(a.refused && b.refused);
  ends.WaitForEnds();
}

// A task that is deaf to the request goes on behind the closing, and its worker then ends too.
TEST_F(ThreadFactory, TasksThatOverrunTheClosingEndInPeace) {
  ThreadEnds ends;
  CSyncEvent go(false, true);
  Tally tally;
  struct Deaf : Short {
    Deaf(Tally& tally, ThreadEnds& ends, CSyncEvent& go, Way way)
        : Short(tally, way), m_ends(ends), m_go(go) {}
    unsigned long Run() override {
      m_ends.Begin();
      m_go.Lock();
      return Short::Run();
    }
    ThreadEnds& m_ends;
    CSyncEvent& m_go;
  };
  CHandle* handle = nullptr;
  Deaf plain(tally, ends, go, Short::kPlain);
  EXPECT_TRUE(Factory()->CreateThreadForTask(&plain, false, &handle));
  for (const auto way : {Short::kAutoDeleted, Short::kDeletesItself}) {
    EXPECT_TRUE(Factory()->CreateThreadForTask(new Deaf(tally, ends, go, way),
                                               way == Short::kAutoDeleted, nullptr));
  }
  Factory()->CloseHandle(handle);
  ends.WaitForBegins(3);
  kelp::CSingletonManager::DeleteSingletons();  // all of its 15 seconds
  EXPECT_EQ(tally.aborts, 3);
  EXPECT_EQ(tally.runs, 0);
  go.SetEvent();
  ends.WaitForEnds();
  EXPECT_EQ(tally.runs, 3);
  EXPECT_EQ(tally.deaths, 2);
}

TEST_F(ThreadFactory, AFunctionIsATask) {
  CSyncEvent ended(false, false);
  const auto shared = std::make_shared<int>(0);
  CHandle* handle = nullptr;
  ASSERT_TRUE(kelp::StartTask(
      [shared, &ended] {
        *shared = 7;
        ended.SetEvent();
      },
      &handle));
  ended.Lock();
  Factory()->WaitFor(handle, INFINITE);
  unsigned long code = 1;
  EXPECT_TRUE(Factory()->GetExitCodeThread(handle, code));
  EXPECT_EQ(code, 0u);
  Factory()->CloseHandle(handle);
  kelp::CSingletonManager::DeleteSingletons();
  EXPECT_EQ(*shared, 7);
  EXPECT_EQ(shared.use_count(), 1) << "the worker gave the function back";
}

// Starts its successor until the pool refuses.
class Chain : public CThreadFactory::ITask {
 public:
  explicit Chain(Tally& tally) : m_tally(tally) { ++m_tally.runs; }
  ~Chain() override { ++m_tally.deaths; }
  unsigned long Run() override {
    auto* const next = new Chain(m_tally);
    if (!Factory()->CreateThreadForTask(next, true, nullptr)) delete next;
    return 0;
  }

 private:
  Tally& m_tally;
};

TEST_F(ThreadFactory, ClosingMeetsTasksThatAreBeingStarted) {
  for (int round = 0; round < 100; ++round) {
    Tally tally;
    for (int i = 0; i < 3; ++i) {
      EXPECT_TRUE(Factory()->CreateThreadForTask(new Chain(tally), true, nullptr));
    }
    if (round % 2 == 0) Sleep(1);
    kelp::CSingletonManager::DeleteSingletons();
    EXPECT_EQ(tally.runs, tally.deaths) << "all were run or given back";
  }
}

}  // namespace
