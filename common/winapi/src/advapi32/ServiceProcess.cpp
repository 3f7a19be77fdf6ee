#include "advapi32/ServiceProcess.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>
#include <vector>

#include "advapi32/ServiceMessages.h"
#include "advapi32/ServiceState.h"
#include "kernel32/CommandLine.h"
#include "kernel32/PathName.h"

namespace winapi {
namespace {

constexpr int kLowestOwn = 10;

bool IsFile(const std::string& path) {
  struct stat status;
  return !path.empty() && stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

struct Split {
  std::u16string_view program;
  std::u16string_view rest;
};

Split SplitProgram(std::u16string_view text) {
  constexpr std::u16string_view kBlanks = u" \t";
  const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
  text.remove_prefix(start);
  if (text.starts_with(u'"')) {
    text.remove_prefix(1);
    const std::size_t end = std::min(text.find(u'"'), text.size());
    return {text.substr(0, end), text.substr(std::min(end + 1, text.size()))};
  }
  std::size_t end = text.find_first_of(kBlanks);
  for (; end < text.size(); end = text.find_first_of(kBlanks, end + 1)) {
    if (IsFile(ToPosixPath(std::u16string(text.substr(0, end)).c_str()))) break;
  }
  end = std::min(end, text.size());
  return {text.substr(0, end), text.substr(end)};
}

// The supervisor's end, and the program's.
bool MakeConnection(Descriptor& own, Descriptor& others) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return false;
  own = Raised(Descriptor(ends[0]));
  others = Raised(Descriptor(ends[1]));
  return own >= 0 && others >= 0;
}

struct ProgramEnds {
  Descriptor status;
  Descriptor control;
  Descriptor state;
};

int Spawn(std::vector<std::string> arguments, const ProgramEnds& ends, pid_t& id) {
  const std::string program = arguments.front();
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends.status, kStatusEnd);
  posix_spawn_file_actions_adddup2(&actions, ends.control, kControlEnd);
  posix_spawn_file_actions_adddup2(&actions, ends.state, kProgramState);
  const int error = posix_spawn(&id, program.c_str(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

}  // namespace

Descriptor Raised(Descriptor descriptor) {
  return Descriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, kLowestOwn));
}

DWORD BecomeOwner(uid_t owner) {
  if (geteuid() != 0 || owner == 0) return ERROR_SUCCESS;
  std::vector<char> buffer(65536);
  passwd entry;
  passwd* found = nullptr;
  getpwuid_r(owner, &entry, buffer.data(), buffer.size(), &found);
  if (found == nullptr) return ERROR_INVALID_SERVICE_ACCOUNT;
  const bool done = initgroups(entry.pw_name, entry.pw_gid) == 0 && setgid(entry.pw_gid) == 0 &&
                    setuid(owner) == 0;
  return done ? ERROR_SUCCESS : ERROR_INVALID_SERVICE_ACCOUNT;
}

std::vector<std::string> ProgramArguments(std::u16string_view commandLine) {
  const Split split = SplitProgram(commandLine);
  const std::string program = ToPosixPath(std::u16string(split.program).c_str());
  if (program.empty()) return {};
  std::vector<std::string> arguments = SplitArguments(ToUtf8(split.rest));
  arguments.insert(arguments.begin(), program);
  return arguments;
}

DWORD StartProgram(const InstalledService& service, ServiceProcess& process) {
  const std::vector<std::string> arguments = ProgramArguments(service.terms.program);
  if (arguments.empty()) return GetLastError();
  ProgramEnds ends;
  if (!MakeConnection(process.status, ends.status) ||
      !MakeConnection(process.control, ends.control)) {
    return ERROR_TOO_MANY_OPEN_FILES;
  }
  ends.state = Raised(ServiceState::OpenForProgram(service.place));
  if (ends.state < 0) return ServiceFileError(errno);
  setenv(kProgramVariable, std::to_string(getpid()).c_str(), 1);
  const int error = Spawn(arguments, ends, process.id);
  if (error == ENOEXEC) return ERROR_BAD_EXE_FORMAT;
  if (error != 0) {
    SetFileError(error, arguments.front());
    return GetLastError();
  }
  process.ended = Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process.id, 0)));
  return ERROR_SUCCESS;
}

}  // namespace winapi
