// Threads, waiting and progress beside Qt, the standard library and bare calls.
#include <QRunnable>
#include <QSemaphore>
#include <QThreadPool>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>

#include "bench/BenchTable.h"
#include "kelp0lang/ProcessProgress.h"
#include "kelp0lang/SyncObj.h"
#include "kelp0lang/ThreadFactory.h"

namespace bench {
namespace {

constexpr unsigned long kForever = 0xFFFFFFFF;

// Measures a call that is made again and again.
template <class Call>
Measure Repeat(Call call) {
  return [call](benchmark::State& state) {
    for (auto _ : state) call();
    state.SetItemsProcessed(state.iterations());
  };
}

class OurTask : public kelp::CThreadFactory::ITask {
 public:
  unsigned long Run() override { return 7; }
};

void RunOurTask(OurTask& task) {
  auto* const factory = kelp::CThreadFactory::GetInstance();
  kelp::CThreadFactory::CHandle* handle = nullptr;
  factory->CreateThreadForTask(&task, false, &handle);
  factory->WaitFor(handle, kForever);
  unsigned long code = 0;
  factory->GetExitCodeThread(handle, code);
  benchmark::DoNotOptimize(code);
  factory->CloseHandle(handle);
}

// Qt's pool doesn't tell the end of one task.
class QtTask : public QRunnable {
 public:
  QtTask() { setAutoDelete(false); }
  void run() override {
    code = 7;
    done.release();
  }
  unsigned long code = 0;
  QSemaphore done;
};

void RunQtTask(QThreadPool& pool, QtTask& task) {
  pool.start(&task);
  task.done.acquire();
  benchmark::DoNotOptimize(task.code);
}

void RunAsync() {
  benchmark::DoNotOptimize(std::async(std::launch::async, [] { return 7ul; }).get());
}

void AddTasks() {
  const auto task = std::make_shared<OurTask>();
  const auto qtTask = std::make_shared<QtTask>();
  const auto pool = std::make_shared<QThreadPool>();
  Compare("run a task and wait for it", Repeat([task] { RunOurTask(*task); }),
          {{"QThreadPool", 1.0, Repeat([pool, qtTask] { RunQtTask(*pool, *qtTask); })},
           {"std::async", 1.0, Repeat(RunAsync)}},
          Clock::kWall);
}

// An event by the means of the standard library.
class StdEvent {
 public:
  void Set() {
    {
      const std::lock_guard lock(m_mutex);
      m_set = true;
    }
    m_changed.notify_one();
  }
  void Take() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_set; });
    m_set = false;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_set = false;
};

void AddSyncObjects() {
  const auto mutex = std::make_shared<kelp::CSyncMutex>(false);
  const auto stdMutex = std::make_shared<std::mutex>();
  const auto recursive = std::make_shared<std::recursive_mutex>();
  Compare(
      "Lock and Unlock a CSyncMutex", Repeat([mutex] {
        mutex->Lock();
        mutex->Unlock();
      }),
      {{"std::mutex", kOnlyShown, Repeat([stdMutex] { const std::lock_guard lock(*stdMutex); })},
       {"std::recursive_mutex", kOnlyShown,
        Repeat([recursive] { const std::lock_guard lock(*recursive); })}});

  const auto event = std::make_shared<kelp::CSyncEvent>(false, false);
  const auto stdEvent = std::make_shared<StdEvent>();
  Compare("set and take a CSyncEvent", Repeat([event] {
            event->SetEvent();
            event->Lock();
          }),
          {{"condition_variable", kOnlyShown, Repeat([stdEvent] {
              stdEvent->Set();
              stdEvent->Take();
            })}});
}

using Progress = kelp::CProcessProgressManager;

class CountingListener : public Progress::IProgressNotification {
 public:
  void OnProcessProgress(Progress*, double overall, double) override { m_sum += overall; }

 private:
  double m_sum = 0.0;
};

// Five tasks deep, with one listener.
struct DeepTask {
  DeepTask() {
    progress.Register(&listener);
    for (int i = 0; i < 5; ++i) progress.InitTask(KTEXT("task"), 0.5);
  }
  CountingListener listener;
  Progress progress;
};

void AddProgress() {
  const auto deep = std::make_shared<DeepTask>();
  std::vector<double> values(1024);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i) / 1024;
  Compare("SetCurTaskPercentComlete",
          Over(values,
               [deep](double value) {
                 deep->progress.SetCurTaskPercentComlete(value);
                 return 0;
               }),
          {{"call of the listener", 10.0, Over(values, [deep](double value) {
              Progress::IProgressNotification* listener = &deep->listener;
              benchmark::DoNotOptimize(listener);
              listener->OnProcessProgress(&deep->progress, value, value);
              return 0;
            })}});
}

}  // namespace

void AddThreadWorks() {
  AddTasks();
  AddSyncObjects();
  AddProgress();
}

}  // namespace bench
