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

constexpr double kBytesShare = 0.2;      // of the work on a file; the rows are the rest
constexpr unsigned long kGlance = 50;    // ms between two looks at the readers
constexpr std::size_t kMostReaders = 8;  // also where the processors are more

// The files and what becomes of them. Each reader takes the next that nobody has taken.
class Work {
 public:
  Work(const std::vector<Argument>& files, const LengthUnit& unit, Progress& progress)
      : m_unit(unit), m_progress(progress), m_fractions(files.size()) {
    for (const Argument& file : files) m_files.push_back({file, {}, {}});
  }

  // Standard input can keep its reader waiting for ever. It is read by the main thread, where
  // Ctrl-C breaks the wait.
  void ReadInput() {
    for (ReadFile& file : m_files) {
      if (IsInput(file)) ReadInput(file);
    }
  }

  void ReadRest() {
    for (;;) {
      const std::size_t at = m_next++;
      if (at >= m_files.size()) return;
      try {
        Read(at);
      } catch (const Failure& failure) {
        m_files[at].failure = failure.GetMsg();
      } catch (const std::bad_alloc&) {
        m_files[at].failure = Message{KTEXT("{1}: {2}"),
                                      {Shown(m_files[at].source.text),
                                       kelp::Xlate(KTEXT("there isn't enough memory"))}}
                                  .Text();
      }
    }
  }

  double Fraction() const {
    return std::accumulate(m_fractions.begin(), m_fractions.end(), 0.0) /
           static_cast<double>(m_fractions.size());
  }
  std::vector<ReadFile> Take() { return std::move(m_files); }

 private:
  static bool IsInput(const ReadFile& file) { return file.source.text == WString(KTEXT("-")); }

  void ReadInput(ReadFile& file) {
    try {
      m_input = ReadAll(file.source, [this](double) { m_progress.RequireGoingOn(); });
    } catch (const Failure& failure) {
      m_progress.RequireGoingOn();
      file.failure = failure.GetMsg();
    }
    m_progress.RequireGoingOn();
  }

  void Read(std::size_t at) {
    ReadFile& file = m_files[at];
    if (!file.failure.empty()) return;
    const auto watch = [this, at](double begin, double share) {
      return [this, at, begin, share](double fraction) {
        m_fractions[at] = begin + share * fraction;
        if (m_progress.IsAborted()) throw Failure(Stopped());
      };
    };
    const std::string bytes =
        IsInput(file) ? std::move(m_input) : ReadAll(file.source, watch(0, kBytesShare));
    file.points = ReadPoints(bytes, m_unit, watch(kBytesShare, 1 - kBytesShare));
    m_fractions[at] = 1;
  }

  const LengthUnit& m_unit;
  Progress& m_progress;
  std::vector<ReadFile> m_files;
  std::string m_input;  // of standard input
  std::vector<std::atomic<double>> m_fractions;
  std::atomic<std::size_t> m_next{0};
};

// A task of the pool, from its start to its end.
class Reader : public kelp::CThreadFactory::ITask {
 public:
  explicit Reader(Work& work) : m_work(work) {
    // Without a thread for it the work is done at once.
    if (!m_pool->CreateThreadForTask(this, false, &m_run)) m_work.ReadRest();
  }
  ~Reader() override {
    if (m_run == nullptr) return;
    m_pool->WaitFor(m_run, kNoEnd);
    m_pool->CloseHandle(m_run);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  unsigned long Run() override {
    m_work.ReadRest();
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

std::vector<ReadFile> ReadPointFiles(const std::vector<Argument>& files, const LengthUnit& unit,
                                     Progress& progress) {
  progress.Set(0);
  Work work(files, unit, progress);
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
  return work.Take();
}

}  // namespace fieldbook
