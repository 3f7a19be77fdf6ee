// The pool of worker threads of the process.
//
//   class Import : public kelp::CThreadFactory::ITask {
//     unsigned long Run() override { ...; return 0; }
//   };
//   Import import;
//   auto* factory = kelp::CThreadFactory::GetInstance();
//   kelp::CThreadFactory::CHandle* handle;
//   if (factory->CreateThreadForTask(&import, false, &handle)) {
//     factory->WaitFor(handle, INFINITE);
//     factory->CloseHandle(handle);
//   }
//
// Work that no class is wanted for is a function: StartTask([path] { Import(path); });
//
// A task starts at once, on an idle worker or a new one: there is no queue. A worker whose task has
// ended sleeps until the next one. The workers live until the pool is closed, with the process-wide
// objects: then all tasks that run are asked to abort and have 15 seconds together to do so. One
// that takes longer isn't killed; its worker ends with it. From the first worker on the library
// stays loaded until the process ends, even where a program gives it back before.
//
// Threads: all operations of the factory are safe from any thread, but for the first GetInstance.
#pragma once

#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "kelp0lang/Export.h"
#include "kelp0lang/Singleton.h"

namespace kelp {

class KELP0LANG_API CThreadFactory : public ISingleton {
 public:
  // The run of a task, as the host that asked for it knows it.
  class CHandle;

  // Work for a thread. It outlives its run, unless the pool deletes it behind that. Run may end
  // with "delete this", where nothing else keeps the task.
  class KELP0LANG_API ITask {
   public:
    ITask() = default;
    ITask(const ITask&) = default;
    ITask& operator=(const ITask&) = default;
    // Where the pool deletes the task, this runs within the pool's lock, as OnAbortRequested does.
    virtual ~ITask();
    // The work, on a worker; gives the exit code, of which 32 bits count. An exception ends it, see
    // OnThreadException.
    virtual unsigned long Run() = 0;
    // The pool is closing: Run should come to its end soon. Called from the closing thread within
    // the pool's lock: it returns quickly and calls nothing of the pool.
    virtual void OnAbortRequested();
    // An exception of any type has left Run; called within its handler. With restart set to true
    // Run is called once more, on the same thread.
    virtual void OnThreadException(bool& restart);

    // The run in progress, null otherwise.
    CHandle* GetCurrentThread() { return m_handle; }

   private:
    friend class CThreadFactory;
    CHandle* m_handle = nullptr;
  };

  static CThreadFactory* GetInstance();

  // Starts a task. With autoDelete the pool deletes it when it has ended. Unless handle is null it
  // receives the run, which the caller gives back by CloseHandle. False, and a null handle, when
  // the pool is closing or memory or a thread can't be had; the task is the caller's then.
  bool CreateThreadForTask(ITask* task, bool autoDelete, CHandle** handle);
  // Sees to it that at least count workers are idle, for tasks that are to start without delay.
  void Populate(int count);

  // Waits until the task has ended or the time has run out; INFINITE has no end.
  void WaitFor(CHandle* handle, unsigned long milliseconds);
  // True and the exit code when the task has ended, which is 0xFFFFFFFF where an exception ended
  // it; false and 259 while it runs.
  bool GetExitCodeThread(CHandle* handle, unsigned long& code);
  void CloseHandle(CHandle* handle);

 private:
  class Pool;
  struct Worker;
  CThreadFactory();
  ~CThreadFactory() override;

  std::shared_ptr<Pool> m_pool;
};

// A function as a task. It gives nothing, or the exit code.
template <class Work>
class CFunctionTask : public CThreadFactory::ITask {
 public:
  explicit CFunctionTask(Work work) : m_work(std::move(work)) {}
  unsigned long Run() override {
    if constexpr (std::is_void_v<std::invoke_result_t<Work&>>) {
      m_work();
      return 0;
    } else {
      return static_cast<unsigned long>(m_work());
    }
  }

 private:
  Work m_work;
};

// Runs a function on a worker, which deletes it behind that; an exception that leaves it ends the
// run. Unless handle is null it receives the run, as from CreateThreadForTask. False where the
// function can't be started; it is gone then.
template <class Work>
bool StartTask(Work&& work, CThreadFactory::CHandle** handle = nullptr) {
  using Task = CFunctionTask<std::decay_t<Work>>;
  if (handle != nullptr) *handle = nullptr;
  std::unique_ptr<Task> task(new (std::nothrow) Task(std::forward<Work>(work)));
  if (task == nullptr) return false;
  if (!CThreadFactory::GetInstance()->CreateThreadForTask(task.get(), true, handle)) return false;
  task.release();
  return true;
}

}  // namespace kelp
