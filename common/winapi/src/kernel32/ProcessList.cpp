// The processes of the machine and their modules, as /proc shows them.
#include <dirent.h>
#include <psapi.h>
#include <tlhelp32.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "CopyText.h"
#include "Fail.h"
#include "kernel32/PathName.h"
#include "kernel32/Process.h"

namespace {

struct Module {
  std::uintptr_t base;
  std::string path;
};

std::optional<DWORD> ProcessNumber(const char* name) {
  DWORD number = 0;
  const char* const end = name + std::strlen(name);
  const auto result = std::from_chars(name, end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

// Empty where they can't be had.
std::vector<DWORD> ProcessNumbers() {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc"), closedir);
  std::vector<DWORD> numbers;
  if (folder == nullptr) return numbers;
  while (const dirent* const entry = readdir(folder.get())) {
    if (const auto number = ProcessNumber(entry->d_name)) numbers.push_back(*number);
  }
  return numbers;
}

std::string ProgramOf(const std::string& folder) {
  char path[PATH_MAX];
  const ssize_t length = readlink((folder + "exe").c_str(), path, sizeof path);
  return std::string(path, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
}

// Each file that the process has mapped, at its lowest address, the program first. A line is
// "start-end rights offset device inode path".
std::vector<Module> ModulesOf(pid_t id) {
  const std::string folder = "/proc/" + std::to_string(id) + '/';
  const std::string program = ProgramOf(folder);
  std::vector<Module> modules;
  if (program.empty()) return modules;
  std::ifstream maps(folder + "maps");
  for (std::string line; std::getline(maps, line);) {
    const std::size_t path = line.find('/');
    if (path == std::string::npos) continue;
    const std::string_view name = std::string_view(line).substr(path);
    const auto isName = [name](const Module& module) { return module.path == name; };
    if (std::any_of(modules.begin(), modules.end(), isName)) continue;
    std::uintptr_t base = 0;
    std::from_chars(line.data(), line.data() + path, base, 16);
    modules.push_back({base, std::string(name)});
  }
  std::stable_partition(modules.begin(), modules.end(),
                        [&](const Module& module) { return module.path == program; });
  return modules;
}

// Empty, and the last error, where the handle isn't one or there are none to be seen.
std::vector<Module> ModulesOf(HANDLE handle) {
  pid_t id = 0;
  {
    const winapi::KernelLock lock;
    const auto* const process = lock.Find<winapi::Process>(handle);
    if (process == nullptr) return {};
    id = process->id;
  }
  std::vector<Module> modules = ModulesOf(id);
  if (modules.empty()) SetLastError(ERROR_PARTIAL_COPY);
  return modules;
}

HMODULE HandleOf(const Module& module) {
  return reinterpret_cast<HMODULE>(module.base);
}

// A program that was replaced while it runs bears a note.
std::string_view BaseNameOf(std::string_view path) {
  constexpr std::string_view kDeleted = " (deleted)";
  if (path.ends_with(kDeleted)) path.remove_suffix(kDeleted.size());
  return path.substr(path.rfind('/') + 1);
}

class Snapshot : public winapi::KernelObject {
 public:
  static constexpr winapi::KernelType kType = winapi::KernelType::kSnapshot;

  explicit Snapshot(std::vector<PROCESSENTRY32W> entries)
      : KernelObject(kType), entries(std::move(entries)) {}
  bool IsSignalled(const winapi::Thread&) const override { return false; }

  const std::vector<PROCESSENTRY32W> entries;
  std::size_t next = 0;
};

// A line of /proc/N/stat: "number (name) state parent ...", the number of threads in the 20th
// place. The name may hold anything.
bool ReadEntry(DWORD number, PROCESSENTRY32W& entry) {
  const std::string folder = "/proc/" + std::to_string(number) + '/';
  std::ifstream stat(folder + "stat");
  std::string line;
  std::getline(stat, line, '\0');
  const std::size_t begin = line.find('(');
  const std::size_t end = line.rfind(')');
  if (begin == std::string::npos || end == std::string::npos) return false;
  std::istringstream rest(line.substr(end + 1));
  std::string skipped;
  entry = {};
  entry.dwSize = sizeof entry;
  entry.th32ProcessID = number;
  rest >> skipped >> entry.th32ParentProcessID;
  for (int i = 5; i < 20; ++i) rest >> skipped;
  rest >> entry.cntThreads;
  const std::string program = ProgramOf(folder);
  const std::string name = line.substr(begin + 1, end - begin - 1);
  CopyText(FromUtf8(program.empty() ? name : BaseNameOf(program)), entry.szExeFile, MAX_PATH);
  return !rest.fail();
}

BOOL GiveEntry(HANDLE handle, bool isFirst, PROCESSENTRY32W* entry) {
  if (entry->dwSize != sizeof *entry) return Fail(ERROR_BAD_LENGTH);
  const winapi::KernelLock lock;
  auto* const snapshot = lock.Find<Snapshot>(handle);
  if (snapshot == nullptr) return FALSE;
  if (isFirst) snapshot->next = 0;
  if (snapshot->next == snapshot->entries.size()) return Fail(ERROR_NO_MORE_FILES);
  *entry = snapshot->entries[snapshot->next++];
  return TRUE;
}

}  // namespace

BOOL WINAPI EnumProcesses(DWORD* processIds, DWORD size, LPDWORD needed) {
  const std::vector<DWORD> numbers = ProcessNumbers();
  if (numbers.empty()) return Fail(ERROR_GEN_FAILURE);
  const std::size_t count = std::min(numbers.size(), size / sizeof(DWORD));
  std::copy_n(numbers.begin(), count, processIds);
  *needed = static_cast<DWORD>(count * sizeof(DWORD));
  return TRUE;
}

BOOL WINAPI EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, LPDWORD needed) {
  const std::vector<Module> found = ModulesOf(process);
  if (found.empty()) return FALSE;
  const std::size_t room = size / sizeof(HMODULE);
  std::transform(found.begin(),
                 found.begin() + static_cast<std::ptrdiff_t>(std::min(room, found.size())), modules,
                 HandleOf);
  *needed = static_cast<DWORD>(found.size() * sizeof(HMODULE));
  return TRUE;
}

DWORD WINAPI GetModuleBaseNameW(HANDLE process, HMODULE module, LPWSTR name, DWORD size) {
  const std::vector<Module> modules = ModulesOf(process);
  if (modules.empty()) return 0;
  const auto found = std::find_if(modules.begin(), modules.end(), [&](const Module& candidate) {
    return module == nullptr || HandleOf(candidate) == module;
  });
  if (found == modules.end()) return Fail(ERROR_INVALID_HANDLE, DWORD{0});
  return static_cast<DWORD>(
      CopyText(FromUtf8(BaseNameOf(found->path)), name, static_cast<int>(size)));
}

HANDLE WINAPI CreateToolhelp32Snapshot(DWORD flags, DWORD) {
  if (flags != TH32CS_SNAPPROCESS) return Fail(ERROR_NOT_SUPPORTED, INVALID_HANDLE_VALUE);
  std::vector<PROCESSENTRY32W> entries;
  PROCESSENTRY32W entry;
  for (const DWORD number : ProcessNumbers()) {
    if (ReadEntry(number, entry)) entries.push_back(entry);
  }
  return winapi::KernelLock().Add(std::make_shared<Snapshot>(std::move(entries)));
}

BOOL WINAPI Process32FirstW(HANDLE snapshot, LPPROCESSENTRY32W entry) {
  return GiveEntry(snapshot, true, entry);
}

BOOL WINAPI Process32NextW(HANDLE snapshot, LPPROCESSENTRY32W entry) {
  return GiveEntry(snapshot, false, entry);
}
