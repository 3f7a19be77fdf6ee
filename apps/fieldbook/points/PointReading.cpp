#include "fieldbook/points/PointReading.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <numeric>
#include <thread>
#include <utility>

#include "fieldbook/console/Beside.h"
#include "fieldbook/points/OpenBytes.h"
#include "fieldbook/web/WebFetch.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr std::size_t kMostReaders = 8;  // also where the processors are more
constexpr double kFetchShare = 0.8;      // of the work on a file from the web

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
  // Who waits for a server waits no longer.
  void Stop() { m_web.Stop(); }
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
    if (IsWebAddress(m_files[at].text)) {
      DoFetched(at, watch);
    } else {
      const auto bytes = IsInput(m_files[at]) ? BytesOf(m_input) : OpenBytes(m_files[at]);
      m_work(at, *bytes, watch);
    }
    m_fractions[at] = 1;
  }

  // It is kept, as standard input is, since it is looked at twice.
  void DoFetched(std::size_t at, const Watch& watch) {
    const std::string fetched =
        FetchFromWeb(m_web, m_files[at], [&](double part) { watch(kFetchShare * part); });
    m_work(at, *BytesOf(fetched),
           [&](double part) { watch(kFetchShare + (1 - kFetchShare) * part); });
  }

  const std::vector<Argument>& m_files;
  const FileWork& m_work;
  Progress& m_progress;
  std::vector<WString> m_failures;
  std::string m_input;  // of standard input
  WebSession m_web;
  std::vector<std::atomic<double>> m_fractions;
  std::atomic<std::size_t> m_next{0};
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
  RunBeside(
      CountReaders(files.size()), [&] { work.DoRest(); }, [&] { progress.Set(work.Fraction()); },
      [&] { work.Stop(); });
  progress.Set(1);
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

std::string FetchBeside(const Argument& address, Progress& progress) {
  WebSession session;
  std::string fetched;
  std::atomic<double> fraction{0};
  const auto fetch = [&] {
    fetched = FetchFromWeb(session, address, [&](double part) {
      fraction = part;
      if (progress.IsAborted()) throw Failure(Stopped());
    });
  };
  RunBeside(
      1, fetch, [&] { progress.Set(fraction); }, [&] { session.Stop(); });
  return fetched;
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
