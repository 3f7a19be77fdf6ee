#include "kelp0lang/TimeProfiler.h"

#include <tchar.h>
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <iterator>
#include <utility>
#include <vector>

#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/Singleton.h"
#include "kelp0lang/String.h"

namespace kelp {
namespace {

struct ThreadTimes {
  FILETIME creation, exit, kernel, user;

  static ThreadTimes Now() {
    ThreadTimes times{};
    GetThreadTimes(GetCurrentThread(), &times.creation, &times.exit, &times.kernel, &times.user);
    return times;
  }
};

int Milliseconds(const FILETIME& start, const FILETIME& end) {
  constexpr std::uint64_t kTicks = 10000;
  const auto ticks = [](const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  };
  return static_cast<int>((ticks(end) - ticks(start)) / kTicks);
}

struct Profile {
  ThreadTimes start;
  ThreadTimes end;
  std::vector<Profile> children;
  WString name;
};

struct Durations {
  int user;
  int kernel;
  int total;
};

Durations DurationsOf(const Profile& profile) {
  const int user = Milliseconds(profile.start.user, profile.end.user);
  const int kernel = Milliseconds(profile.start.kernel, profile.end.kernel);
  return {user, kernel, user + kernel};
}

void WriteDurations(std::FILE* file, const WString& indent, const Durations& durations) {
  kelp_fwprintf(file, KTEXT("%ls  User Time = %d [ms]\n"), indent.c_str(), durations.user);
  kelp_fwprintf(file, KTEXT("%ls  Kernel Time = %d [ms]\n"), indent.c_str(), durations.kernel);
  kelp_fwprintf(file, KTEXT("%ls  Total Time = %d [ms]\n"), indent.c_str(), durations.total);
}

void WriteProfile(std::FILE* file, const Profile& profile, WString indent) {
  kelp_fwprintf(file, KTEXT("%ls* %ls\n"), indent.c_str(), profile.name.c_str());
  indent += KTEXT("  ");
  Durations own = DurationsOf(profile);
  WriteDurations(file, indent, own);
  if (profile.children.empty()) return;
  for (const Profile& child : profile.children) {
    WriteProfile(file, child, indent + KTEXT("  "));
    const Durations durations = DurationsOf(child);
    own.user -= durations.user;
    own.kernel -= durations.kernel;
    own.total -= durations.total;
  }
  WriteDurations(file, indent, own);
}

// The scopes that are open, and where their reports go.
class CTimeProfilerRepository : public ISingleton {
 public:
  static CTimeProfilerRepository& GetInstance();

  void Start(const WChar* name) {
    m_stack.push_back({{}, {}, {}, name});
    m_stack.back().start = ThreadTimes::Now();
  }

  void End() {
    m_stack.back().end = ThreadTimes::Now();
    Profile profile = std::move(m_stack.back());
    m_stack.pop_back();
    if (m_stack.empty()) {
      Report(profile);
    } else {
      m_stack.back().children.push_back(std::move(profile));
    }
  }

 private:
  void Report(const Profile& profile) const {
    std::FILE* const file = _wfopen(m_path.c_str(), KTEXT("at+"));
    if (file == nullptr) return;
    WriteProfile(file, profile, WString());
    std::fclose(file);
  }

  std::vector<Profile> m_stack;  // the outermost first
  WString m_path = KTEXT("D:\\profile_times.txt");
};

constinit CTimeProfilerRepository* instance = nullptr;

CTimeProfilerRepository& CTimeProfilerRepository::GetInstance() {
  if (instance == nullptr) instance = new CTimeProfilerRepository;
  return *instance;
}

constinit WChar programName[128] = {};

}  // namespace

CTimeProfiler::CTimeProfiler(const WChar* name) {
  CTimeProfilerRepository::GetInstance().Start(name == nullptr ? KTEXT("Unknown") : name);
}

CTimeProfiler::~CTimeProfiler() {
  CTimeProfilerRepository::GetInstance().End();
}

}  // namespace kelp

void SetPrgName(const WChar* name) {
  wcscpy_s(kelp::programName, std::size(kelp::programName), name);
}

const WChar* GetPrgName() {
  return kelp::programName;
}
