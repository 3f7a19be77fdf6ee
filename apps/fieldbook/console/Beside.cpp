#include "fieldbook/console/Beside.h"

#include <exception>
#include <list>

#include "kelp0lang/ThreadFactory.h"

namespace fieldbook {
namespace {

constexpr unsigned long kGlance = 50;  // ms between two looks at the work

// A task of the pool, from its start to its end.
class Helper : public kelp::CThreadFactory::ITask {
 public:
  explicit Helper(const std::function<void()>& work) : m_work(work) {
    // Without a thread for it the work is done at once.
    if (!m_pool->CreateThreadForTask(this, false, &m_run)) Run();
  }
  ~Helper() override {
    if (m_run == nullptr) return;
    m_pool->WaitFor(m_run, kNoEnd);
    m_pool->CloseHandle(m_run);
  }
  Helper(const Helper&) = delete;
  Helper& operator=(const Helper&) = delete;

  unsigned long Run() override {
    try {
      m_work();
    } catch (...) {
      m_failure = std::current_exception();
    }
    return 0;
  }

  // Waits a moment for the end; false if it hasn't come.
  bool WaitForEnd() {
    if (m_run == nullptr) return true;
    m_pool->WaitFor(m_run, kGlance);
    unsigned long code = 0;
    return m_pool->GetExitCodeThread(m_run, code);
  }
  void RequireDone() const {
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
  }

 private:
  static constexpr unsigned long kNoEnd = 0xFFFFFFFF;

  const std::function<void()>& m_work;
  std::exception_ptr m_failure;
  kelp::CThreadFactory* m_pool = kelp::CThreadFactory::GetInstance();
  kelp::CThreadFactory::CHandle* m_run = nullptr;
};

}  // namespace

void RunBeside(std::size_t threads, const std::function<void()>& work,
               const std::function<void()>& tick, const std::function<void()>& stop) {
  std::list<Helper> helpers;  // whatever happens, they end before the work goes
  try {
    for (; threads > 0; --threads) helpers.emplace_back(work);
    for (Helper& helper : helpers) {
      while (!helper.WaitForEnd()) tick();
    }
  } catch (...) {
    stop();
    throw;
  }
  for (const Helper& helper : helpers) helper.RequireDone();
}

}  // namespace fieldbook
