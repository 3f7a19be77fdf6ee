// The processes of the machine and their modules, as /proc shows them.
#include <dirent.h>
#include <psapi.h>
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
std::string_view BaseNameOf(const Module& module) {
  constexpr std::string_view kDeleted = " (deleted)";
  std::string_view path = module.path;
  if (path.ends_with(kDeleted)) path.remove_suffix(kDeleted.size());
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

BOOL WINAPI EnumProcesses(DWORD* processIds, DWORD size, LPDWORD needed) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc"), closedir);
  if (folder == nullptr) return Fail(ERROR_GEN_FAILURE);
  const DWORD room = size / sizeof(DWORD);
  DWORD count = 0;
  while (const dirent* const entry = readdir(folder.get())) {
    const auto number = ProcessNumber(entry->d_name);
    if (number && count < room) processIds[count++] = *number;
  }
  *needed = count * static_cast<DWORD>(sizeof(DWORD));
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
  return static_cast<DWORD>(CopyText(FromUtf8(BaseNameOf(*found)), name, static_cast<int>(size)));
}
