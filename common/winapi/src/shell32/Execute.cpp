// Starting programs.
#include <shellapi.h>
#include <spawn.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include "Fail.h"
#include "kernel32/CommandLine.h"
#include "kernel32/PathName.h"
#include "kernel32/Process.h"

namespace {

constexpr std::uintptr_t kStarted = 42;
constexpr ULONG kKnownMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;

// A program with this one's environment, and with none of its blocked signals. Gives an error
// number.
int Start(const std::string& program, const std::string& folder, std::vector<std::string> arguments,
          pid_t& id) {
  arguments.insert(arguments.begin(), program);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  const int error =
      posix_spawn(&id, program.c_str(), &actions, &attributes, pointers.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error;
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
