// Starting programs.
#include <shellapi.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "Fail.h"
#include "kernel32/CommandLine.h"
#include "kernel32/PathName.h"
#include "kernel32/Process.h"
#include "kernel32/Spawn.h"

namespace {

constexpr std::uintptr_t kStarted = 42;
constexpr ULONG kKnownMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;

// Gives an error number.
int Start(const std::string& program, const std::string& folder, std::vector<std::string> arguments,
          pid_t& id) {
  arguments.insert(arguments.begin(), program);
  winapi::Spawn spawn;
  if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&spawn.actions, folder.c_str());
  return spawn.Start(program, std::move(arguments), id);
}

BOOL FailStart(SHELLEXECUTEINFOW* info, DWORD error) {
  info->hInstApp = reinterpret_cast<HINSTANCE>(std::uintptr_t{std::min<DWORD>(error, 32)});
  return Fail(error);
}

}  // namespace

BOOL WINAPI ShellExecuteExW(SHELLEXECUTEINFOW* info) {
  if (info->cbSize != sizeof *info) return Fail(ERROR_ACCESS_DENIED);
  info->hProcess = nullptr;
  const bool isKnown = info->lpVerb == nullptr || FoldedName(info->lpVerb) == u"OPEN";
  if (!isKnown || (info->fMask & ~kKnownMask) != 0) {
    return FailStart(info, ERROR_NOT_SUPPORTED);
  }
  const std::string program = ToPosixPath(info->lpFile);
  if (program.empty()) return FailStart(info, GetLastError());
  const std::string folder = info->lpDirectory == nullptr ? "" : ToPosixPath(info->lpDirectory);
  const std::string parameters = info->lpParameters == nullptr ? "" : ToUtf8(info->lpParameters);
  pid_t id = 0;
  const int error = Start(program, folder, winapi::SplitArguments(parameters), id);
  if (error != 0) {
    SetFileError(error, program);
    return FailStart(info, error == ENOEXEC ? ERROR_BAD_EXE_FORMAT : GetLastError());
  }
  info->hInstApp = reinterpret_cast<HINSTANCE>(kStarted);
  const HANDLE process = winapi::AddChild(id);
  if ((info->fMask & SEE_MASK_NOCLOSEPROCESS) != 0) {
    info->hProcess = process;
  } else {
    CloseHandle(process);
  }
  return TRUE;
}
