#include "advapi32/ServiceStart.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

#include "advapi32/ServiceMessages.h"
#include "advapi32/ServiceState.h"
#include "kernel32/Descriptor.h"
#include "kernel32/PathName.h"
#include "kernel32/Spawn.h"

namespace winapi {
namespace {

using Names = std::vector<std::u16string>;
using Clock = std::chrono::steady_clock;

// Beside the module that the layer is within. Empty where that isn't a file any more.
std::string SupervisorProgram() {
  constexpr DWORD kHere =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE module;
  WCHAR path[PATH_MAX];
  if (!GetModuleHandleExW(kHere, reinterpret_cast<LPCWSTR>(&StartWithNeeds), &module)) return {};
  if (GetModuleFileNameW(module, path, PATH_MAX) == PATH_MAX) return {};
  std::error_code error;
  const auto file = std::filesystem::canonical(ToPosixPath(path), error);
  return error ? std::string() : (file.parent_path() / "winapi-service").string();
}

// A process of its own session, with none of this one's signals and files but where it reports.
int SpawnApart(const std::string& program, const std::vector<std::string>& arguments, int report,
               pid_t& id) {
  Spawn spawn;
  posix_spawn_file_actions_adddup2(&spawn.actions, report, kReportEnd);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&spawn.actions, standard, "/dev/null", O_RDWR, 0);
  }
  posix_spawn_file_actions_addchdir_np(&spawn.actions, "/");
  sigset_t all;
  sigfillset(&all);
  posix_spawnattr_setsigdefault(&spawn.attributes, &all);
  spawn.AddFlags(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
  return spawn.Start(program, arguments, id);
}

DWORD Start(const InstalledService& service, const std::vector<std::string>& arguments) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return ERROR_TOO_MANY_OPEN_FILES;
  const Descriptor reader(ends[0]);
  Descriptor writer(ends[1]);
  const std::string program = SupervisorProgram();
  std::vector<std::string> all = {program, service.place.folder, service.place.stem};
  all.insert(all.end(), arguments.begin(), arguments.end());
  pid_t id = 0;
  const int failed = program.empty() ? ENOENT : SpawnApart(program, all, writer, id);
  if (failed != 0) {
    SetFileError(failed, program);
    return GetLastError();
  }
  writer = Descriptor();
  // It has forked once it is ready; only a host that ignores its children has nothing to wait for.
  while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
  }
  DWORD error = 0;
  const bool hasSaid = ReadBytes(reader, &error, sizeof error).count == sizeof error;
  return hasSaid ? error : DWORD{ERROR_SERVICE_REQUEST_TIMEOUT};
}

// A service that is starting has the time that it asks for, anew with each check point.
bool ComesToRun(const ServicePlace& place) {
  constexpr auto kPause = std::chrono::milliseconds(50);
  constexpr DWORD kLeastHint = kAnswerLimit;
  auto since = Clock::now();
  DWORD checkPoint = 0;
  for (;;) {
    const SERVICE_STATUS_PROCESS status = StatusOf(place);
    if (status.dwCurrentState != SERVICE_START_PENDING) {
      return status.dwCurrentState == SERVICE_RUNNING;
    }
    if (status.dwCheckPoint != checkPoint) since = Clock::now();
    checkPoint = status.dwCheckPoint;
    if (Clock::now() - since > std::chrono::milliseconds(std::max(status.dwWaitHint, kLeastHint))) {
      return false;
    }
    usleep(static_cast<useconds_t>(std::chrono::microseconds(kPause).count()));
  }
}

// The names are those of the services on the way here.
DWORD StartNeeds(const ServiceTerms& terms, Names& way) {
  way.push_back(FoldedName(terms.name));
  for (const std::u16string& need : terms.needs) {
    if (std::find(way.begin(), way.end(), FoldedName(need)) != way.end()) {
      return ERROR_CIRCULAR_DEPENDENCY;
    }
    InstalledService needed;
    DWORD error = FindService(need, needed);
    if (error == ERROR_SERVICE_DOES_NOT_EXIST) return ERROR_SERVICE_DEPENDENCY_DELETED;
    if (error != ERROR_SUCCESS) return ERROR_SERVICE_DEPENDENCY_FAIL;
    if (StatusOf(needed.place).dwCurrentState == SERVICE_RUNNING) continue;
    error = StartNeeds(needed.terms, way);
    if (error != ERROR_SUCCESS) return error;
    if (StatusOf(needed.place).dwCurrentState == SERVICE_STOPPED) {
      error = Start(needed, {});
      if (error != ERROR_SUCCESS && error != ERROR_SERVICE_ALREADY_RUNNING) {
        return ERROR_SERVICE_DEPENDENCY_FAIL;
      }
    }
    if (!ComesToRun(needed.place)) return ERROR_SERVICE_DEPENDENCY_FAIL;
  }
  way.pop_back();
  return ERROR_SUCCESS;
}

bool Needs(const ServiceTerms& terms, const std::u16string& foldedName) {
  return std::any_of(terms.needs.begin(), terms.needs.end(),
                     [&](const std::u16string& need) { return FoldedName(need) == foldedName; });
}

// Each behind those that need it.
void AddDependents(const std::u16string& foldedName, const std::vector<InstalledService>& all,
                   Names& seen, std::vector<InstalledService>& dependents) {
  for (const InstalledService& service : all) {
    const std::u16string name = FoldedName(service.terms.name);
    if (!Needs(service.terms, foldedName)) continue;
    if (std::find(seen.begin(), seen.end(), name) != seen.end()) continue;
    seen.push_back(name);
    AddDependents(name, all, seen, dependents);
    dependents.push_back(service);
  }
}

}  // namespace

DWORD StartWithNeeds(const InstalledService& service, const std::vector<std::string>& arguments) {
  DWORD error = StartRefusal(service.terms);
  if (error != ERROR_SUCCESS) return error;
  if (StatusOf(service.place).dwCurrentState != SERVICE_STOPPED) {
    return ERROR_SERVICE_ALREADY_RUNNING;
  }
  Names way;
  error = StartNeeds(service.terms, way);
  return error == ERROR_SUCCESS ? Start(service, arguments) : error;
}

std::vector<InstalledService> DependentsOf(const ServiceTerms& terms) {
  const std::u16string name = FoldedName(terms.name);
  Names seen = {name};
  std::vector<InstalledService> dependents;
  AddDependents(name, AllServices(), seen, dependents);
  return dependents;
}

SERVICE_STATUS_PROCESS StatusOf(const ServicePlace& place) {
  std::optional<ServiceState> state;
  if (ServiceState::Open(place, false, state) == ERROR_SUCCESS) return state->Status();
  SERVICE_STATUS_PROCESS stopped = {};
  stopped.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  stopped.dwCurrentState = SERVICE_STOPPED;
  return stopped;
}

}  // namespace winapi
