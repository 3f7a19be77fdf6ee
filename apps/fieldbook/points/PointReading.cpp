#include "fieldbook/points/PointReading.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <new>
#include <numeric>
#include <thread>
#include <utility>

#include "kelp0lang/ThreadFactory.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr unsigned long kGlance = 50;    // ms between two looks at the readers
constexpr std::size_t kMostReaders = 8;  // also where the processors are more

bool IsInput(const Argument& file) {
  return file.text == WString(KTEXT("-"));
}

// The files and what becomes of them. Each reader takes the next that nobody has taken.
class Work {
 public:
  Work(const std::vector<Argument>& files, const FileWork& work, Progress& progress)
      : m_files(files),
        m_work(work),
        m_progress(progress),
        m_failures(files.size()),
        m_fractions(files.size()) {}

  // Standard input can keep its reader waiting for ever. It is read by the main thread, where
  // Ctrl-C breaks the wait.
  void ReadInput() {
    for (std::size_t at = 0; at < m_files.size(); ++at) {
      if (IsInput(m_files[at])) ReadInput(at);
    }
  }

  void DoRest() {
    for (;;) {
      const std::size_t at = m_next++;
      if (at >= m_files.size()) return;
      try {
        Do(at);
      } catch (const LayoutFailure& failure) {
        m_failures[at] = InFile(m_files[at], failure.GetMsg());
      } catch (const Failure& failure) {
        m_failures[at] = failure.GetMsg();
      } catch (const std::bad_alloc&) {
        m_failures[at] = InFile(m_files[at], kelp::Xlate(KTEXT("there isn't enough memory")));
      }
    }
  }

  double Fraction() const {
    return std::accumulate(m_fractions.begin(), m_fractions.end(), 0.0) /
           static_cast<double>(m_fractions.size());
  }
  std::vector<WString> TakeFailures() { return std::move(m_failures); }

 private:
  void ReadInput(std::size_t at) {
    try {
      m_input = ReadAll(m_files[at], [this](double) { m_progress.RequireGoingOn(); });
    } catch (const Failure& failure) {
      m_progress.RequireGoingOn();
      m_failures[at] = failure.GetMsg();
    }
    m_progress.RequireGoingOn();
  }

  void Do(std::size_t at) {
    if (!m_failures[at].empty()) return;
    const Watch watch = [this, at](double fraction) {
      m_fractions[at] = fraction;
      if (m_progress.IsAborted()) throw Failure(Stopped());
    };
    const auto bytes = IsInput(m_files[at]) ? BytesOf(m_input) : OpenBytes(m_files[at]);
    m_work(at, *bytes, watch);
    m_fractions[at] = 1;
  }

  const std::vector<Argument>& m_files;
  const FileWork& m_work;
  Progress& m_progress;
  std::vector<WString> m_failures;
  std::string m_input;  // of standard input
  std::vector<std::atomic<double>> m_fractions;
  std::atomic<std::size_t> m_next{0};
};

// A task of the pool, from its start to its end.
class Reader : public kelp::CThreadFactory::ITask {
 public:
  explicit Reader(Work& work) : m_work(work) {
    // Without a thread for it the work is done at once.
    if (!m_pool->CreateThreadForTask(this, false, &m_run)) m_work.DoRest();
  }
  ~Reader() override {
    if (m_run == nullptr) return;
    m_pool->WaitFor(m_run, kNoEnd);
    m_pool->CloseHandle(m_run);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  unsigned long Run() override {
    m_work.DoRest();
    return 0;
  }

  // Waits a moment for the end; false if it hasn't come.
  bool WaitForEnd() {
    if (m_run == nullptr) return true;
    m_pool->WaitFor(m_run, kGlance);
    unsigned long code = 0;
    return m_pool->GetExitCodeThread(m_run, code);
  }

 private:
  static constexpr unsigned long kNoEnd = 0xFFFFFFFF;

  Work& m_work;
  kelp::CThreadFactory* m_pool = kelp::CThreadFactory::GetInstance();
  kelp::CThreadFactory::CHandle* m_run = nullptr;
};

std::size_t CountReaders(std::size_t files) {
  const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
  return std::min({files, processors, kMostReaders});
}

}  // namespace

std::vector<WString> ForEachFile(const std::vector<Argument>& files, const FileWork& fileWork,
                                 Progress& progress) {
  progress.Set(0);
  Work work(files, fileWork, progress);
  work.ReadInput();
  std::list<Reader> readers;  // whatever happens, they end before the work goes
  for (std::size_t count = CountReaders(files.size()); count > 0; --count) {
    readers.emplace_back(work);
  }
  for (Reader& reader : readers) {
    while (!reader.WaitForEnd()) progress.Set(work.Fraction());
  }
  progress.Set(1);
  readers.clear();
  return work.TakeFailures();
}

void WithFile(const Argument& file, const std::function<void(ByteSource&, const Watch&)>& work,
              Progress& progress) {
  const FileWork onFile = [&work](std::size_t, ByteSource& bytes, const Watch& watch) {
    work(bytes, watch);
  };
  const WString failure = ForEachFile({file}, onFile, progress).front();
  if (!failure.empty()) throw Failure(failure);
}

WString InFile(const Argument& file, const WString& what) {
  return Message{KTEXT("{1}: {2}"), {Shown(file.text), what}}.Text();
}

void RequirePoints(const Argument& file, std::size_t points, const FaultList& faults) {
  if (points > 0) return;
  if (faults.IsEmpty()) {
    throw Failure({KTEXT("{1}: this isn't a points file: it holds no point"), {Shown(file.text)}});
  }
  const RowFault first = faults.Told().front();
  throw Failure({KTEXT("{1}: this isn't a points file: line {2}: {3}"),
                 {Shown(file.text), WString::ValueOf(first.line), first.message.Text()}});
}

}  // namespace fieldbook
