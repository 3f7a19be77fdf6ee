#include "kelp0lang/ThreadFactory.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/PinLibrary.h"

namespace kelp {
namespace {

constexpr DWORD kNoExitCode = 0xFFFFFFFF;
constexpr DWORD kClosingTime = 15000;  // ms

constinit CThreadFactory* instance = nullptr;

}  // namespace

// The pool's lock guards all but the count.
class CThreadFactory::CHandle {
 public:
  explicit CHandle(std::int32_t references) : m_references(references) {}
  ~CHandle() {
    if (m_done != nullptr) ::CloseHandle(m_done);
  }
  CHandle(const CHandle&) = delete;
  CHandle& operator=(const CHandle&) = delete;

  void AddReference() { ++m_references; }
  void SubReference() {
    if (--m_references == 0) delete this;
  }

  // The event that tells of the end, null where that has come.
  HANDLE DoneEvent() {
    if (m_running && m_done == nullptr) m_done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return m_running ? m_done : nullptr;
  }
  void End(DWORD exitCode) {
    m_exitCode = exitCode;
    m_running = false;
    if (m_done != nullptr) SetEvent(m_done);
  }
  bool GetExitCode(unsigned long& code) const {
    code = m_running ? STILL_ACTIVE : m_exitCode;
    return !m_running;
  }

 private:
  std::atomic<std::int32_t> m_references;
  DWORD m_exitCode = kNoExitCode;
  bool m_running = true;
  HANDLE m_done = nullptr;  // made for the first that waits
};

// A thread of the pool. Task and handle are there while it is among the running ones.
struct CThreadFactory::Worker {
  ~Worker() {
    if (thread != nullptr) ::CloseHandle(thread);
    if (wake != nullptr) ::CloseHandle(wake);
  }
  static DWORD WINAPI Main(LPVOID worker);
  DWORD RunTask();

  HANDLE thread = nullptr;
  HANDLE wake = nullptr;
  std::shared_ptr<Pool> pool;
  ITask* task = nullptr;
  CHandle* handle = nullptr;
  bool autoDelete = false;

  // That which the thread is.
  static thread_local Worker* current;
};

constinit thread_local CThreadFactory::Worker* CThreadFactory::Worker::current = nullptr;

namespace {

// A run that the closing waits for. The thread's handle is open until then.
struct RunAtClosing {
  CThreadFactory::CHandle* handle;
  HANDLE thread;
};

}  // namespace

// Its workers own it too: one whose task overruns the closing still finds it.
class CThreadFactory::Pool : public std::enable_shared_from_this<Pool> {
 public:
  bool Start(ITask* task, bool autoDelete, CHandle** handle);
  void Populate(int count);
  void WaitFor(CHandle* handle, DWORD milliseconds);
  bool GetExitCode(const CHandle* handle, unsigned long& code);
  void Close();

  // The end of a worker's task. False where the worker is to end too.
  bool Finish(Worker& worker, DWORD exitCode);
  // The worker's task has deleted itself.
  void Forget(Worker& worker);

 private:
  bool PinLibrary();
  Worker* Build();
  Worker* TakeWorker();
  std::vector<RunAtClosing> RequestAborts();
  HANDLE DoneEvent(CHandle* handle);

  CCriticalSec m_section;
  std::vector<Worker*> m_running;
  std::vector<Worker*> m_idle;
  bool m_closing = false;
  bool m_closed = false;  // nobody wakes an idle worker any more
  bool m_pinned = false;
};

DWORD WINAPI CThreadFactory::Worker::Main(LPVOID pointer) {
  const std::unique_ptr<Worker> worker(static_cast<Worker*>(pointer));
  current = worker.get();
  for (;;) {
    WaitForSingleObject(worker->wake, INFINITE);
    if (worker->handle == nullptr) return 0;
    if (!worker->pool->Finish(*worker, worker->RunTask())) return 0;
  }
}

// A task that has deleted itself is null behind that.
DWORD CThreadFactory::Worker::RunTask() {
  DWORD exitCode = kNoExitCode;
  bool restart = false;
  do {
    restart = false;
    try {
      exitCode = static_cast<DWORD>(task->Run());
    } catch (...) {
      try {
        if (task != nullptr) task->OnThreadException(restart);
      } catch (...) {
        restart = false;
      }
    }
  } while (restart && task != nullptr);
  return exitCode;
}

// Workers sleep in this library, which so stays loaded once there is one.
bool CThreadFactory::Pool::PinLibrary() {
  if (!m_pinned) m_pinned = detail::PinLibrary();
  return m_pinned;
}

CThreadFactory::Worker* CThreadFactory::Pool::Build() {
  if (!PinLibrary()) return nullptr;
  m_idle.reserve(m_running.size() + m_idle.size() + 1);  // it comes back without a failure
  std::unique_ptr<Worker> worker(new (std::nothrow) Worker);
  if (worker == nullptr) return nullptr;
  worker->pool = shared_from_this();
  worker->wake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  if (worker->wake == nullptr) return nullptr;
  worker->thread = CreateThread(nullptr, 0, Worker::Main, worker.get(), 0, nullptr);
  return worker->thread == nullptr ? nullptr : worker.release();
}

CThreadFactory::Worker* CThreadFactory::Pool::TakeWorker() {
  if (m_closing) return nullptr;
  if (m_idle.empty()) return Build();
  Worker* const worker = m_idle.back();
  m_idle.pop_back();
  return worker;
}

bool CThreadFactory::Pool::Start(ITask* task, bool autoDelete, CHandle** handle) {
  if (handle != nullptr) *handle = nullptr;
  HANDLE wake = nullptr;
  {
    const CCriticalSecLock lock(&m_section);
    // What may fail comes first, so that a worker among the running ones has all that is its.
    m_running.reserve(m_running.size() + 1);
    std::unique_ptr<CHandle> made(new (std::nothrow) CHandle(handle == nullptr ? 1 : 2));
    Worker* const worker = made == nullptr ? nullptr : TakeWorker();
    if (worker == nullptr) return false;
    m_running.push_back(worker);
    CHandle* const run = made.release();
    if (handle != nullptr) *handle = run;
    task->m_handle = run;
    worker->handle = run;
    worker->task = task;
    worker->autoDelete = autoDelete;
    wake = worker->wake;
  }
  SetEvent(wake);
  return true;
}

bool CThreadFactory::Pool::Finish(Worker& worker, DWORD exitCode) {
  const CCriticalSecLock lock(&m_section);
  std::erase(m_running, &worker);
  if (worker.task != nullptr) worker.task->m_handle = nullptr;
  worker.handle->End(exitCode);
  std::exchange(worker.handle, nullptr)->SubReference();
  const ITask* const task = std::exchange(worker.task, nullptr);
  if (worker.autoDelete) delete task;
  if (m_closed) return false;
  m_idle.push_back(&worker);
  return true;
}

void CThreadFactory::Pool::Forget(Worker& worker) {
  const CCriticalSecLock lock(&m_section);
  worker.task = nullptr;
}

CThreadFactory::ITask::~ITask() {
  Worker* const worker = Worker::current;
  if (worker != nullptr && worker->task == this) worker->pool->Forget(*worker);
}

void CThreadFactory::ITask::OnAbortRequested() {}
void CThreadFactory::ITask::OnThreadException(bool&) {}

void CThreadFactory::Pool::Populate(int count) {
  const CCriticalSecLock lock(&m_section);
  while (!m_closing && static_cast<int>(m_idle.size()) < count) {
    Worker* const worker = Build();
    if (worker == nullptr) return;
    m_idle.push_back(worker);
  }
}

HANDLE CThreadFactory::Pool::DoneEvent(CHandle* handle) {
  const CCriticalSecLock lock(&m_section);
  return handle->DoneEvent();
}

void CThreadFactory::Pool::WaitFor(CHandle* handle, DWORD milliseconds) {
  const HANDLE done = DoneEvent(handle);
  if (done != nullptr) WaitForSingleObject(done, milliseconds);
}

bool CThreadFactory::Pool::GetExitCode(const CHandle* handle, unsigned long& code) {
  const CCriticalSecLock lock(&m_section);
  return handle->GetExitCode(code);
}

std::vector<RunAtClosing> CThreadFactory::Pool::RequestAborts() {
  const CCriticalSecLock lock(&m_section);
  m_closing = true;
  std::vector<RunAtClosing> runs;
  for (const Worker* worker : m_running) {
    worker->handle->AddReference();
    runs.push_back({worker->handle, worker->thread});
    if (worker->task != nullptr) worker->task->OnAbortRequested();
  }
  return runs;
}

void CThreadFactory::Pool::Close() {
  const std::vector<RunAtClosing> runs = RequestAborts();
  const DWORD start = GetTickCount();
  for (const RunAtClosing& run : runs) {
    const DWORD passed = GetTickCount() - start;
    // Where the process is ending, Windows may have ended the thread, and the run never does.
    const HANDLE ends[] = {DoneEvent(run.handle), run.thread};
    if (ends[0] != nullptr) {
      WaitForMultipleObjects(2, ends, FALSE, kClosingTime - std::min(passed, kClosingTime));
    }
    run.handle->SubReference();
  }
  const CCriticalSecLock lock(&m_section);
  m_closed = true;
  for (const Worker* worker : m_idle) SetEvent(worker->wake);
  m_idle.clear();
}

CThreadFactory::CThreadFactory() : m_pool(std::make_shared<Pool>()) {}

CThreadFactory::~CThreadFactory() {
  m_pool->Close();
  instance = nullptr;
}

CThreadFactory* CThreadFactory::GetInstance() {
  if (instance == nullptr) instance = new CThreadFactory;
  return instance;
}

bool CThreadFactory::CreateThreadForTask(ITask* task, bool autoDelete, CHandle** handle) {
  return m_pool->Start(task, autoDelete, handle);
}

void CThreadFactory::Populate(int count) {
  m_pool->Populate(count);
}

void CThreadFactory::WaitFor(CHandle* handle, unsigned long milliseconds) {
  m_pool->WaitFor(handle, static_cast<DWORD>(milliseconds));
}

bool CThreadFactory::GetExitCodeThread(CHandle* handle, unsigned long& code) {
  return m_pool->GetExitCode(handle, code);
}

void CThreadFactory::CloseHandle(CHandle* handle) {
  handle->SubReference();
}

}  // namespace kelp
