// What a service's program calls.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Fail.h"
#include "advapi32/ServiceMessages.h"
#include "kernel32/Descriptor.h"
#include "kernel32/PathName.h"

namespace {

struct Handler {
  LPHANDLER_FUNCTION plain = nullptr;
  LPHANDLER_FUNCTION_EX extended = nullptr;
  LPVOID context = nullptr;
};

// The one service of this process.
struct Program {
  std::mutex mutex;
  std::condition_variable changed;
  bool isConnected = false;
  bool isStopped = false;
  Handler handler;
  LPSERVICE_MAIN_FUNCTIONW main = nullptr;
  std::vector<std::u16string> arguments;
  std::mutex saying;  // one status at a time
};

// It outlives all threads and static objects.
Program& TheProgram() {
  static Program& program = *new Program;
  return program;
}

const SERVICE_STATUS_HANDLE kHandle = reinterpret_cast<SERVICE_STATUS_HANDLE>(&TheProgram);

// Whether the supervisor has started this process: its own children inherit the variable too.
bool IsService() {
  const char* const supervisor = std::getenv(winapi::kProgramVariable);
  return supervisor != nullptr && std::to_string(getppid()) == supervisor;
}

// Reads the service's name and its arguments. False where the supervisor has gone.
bool Connect(Program& program) {
  for (const int descriptor : {winapi::kStatusEnd, winapi::kControlEnd, winapi::kProgramState}) {
    if (fcntl(descriptor, F_SETFD, FD_CLOEXEC) != 0) return false;
  }
  unsetenv(winapi::kProgramVariable);
  const winapi::ProgramAnswer ready = {0, NO_ERROR};
  if (send(winapi::kControlEnd, &ready, sizeof ready, MSG_NOSIGNAL) < 0) return false;
  std::string block(winapi::kMostBlock, '\0');
  ssize_t count;
  do {
    count = recv(winapi::kControlEnd, block.data(), block.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count <= 0) return false;
  std::string_view rest = std::string_view(block).substr(0, static_cast<std::size_t>(count));
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\0'), rest.size());
    program.arguments.push_back(FromUtf8(rest.substr(0, end)));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return true;
}

DWORD WINAPI RunMain(LPVOID) {
  Program& program = TheProgram();
  std::vector<LPWSTR> pointers;
  for (std::u16string& argument : program.arguments) pointers.push_back(argument.data());
  const auto count = static_cast<DWORD>(pointers.size());
  pointers.push_back(nullptr);
  program.main(count, pointers.data());
  return 0;
}

DWORD Handle(Program& program, DWORD control) {
  Handler handler;
  {
    const std::lock_guard lock(program.mutex);
    handler = program.handler;
  }
  if (handler.extended != nullptr) return handler.extended(control, 0, nullptr, handler.context);
  if (handler.plain == nullptr) return ERROR_CALL_NOT_IMPLEMENTED;
  handler.plain(control);
  return NO_ERROR;
}

// Until the supervisor closes the connection.
void TakeControls(Program& program) {
  for (;;) {
    winapi::ProgramControl control;
    const ssize_t count = recv(winapi::kControlEnd, &control, sizeof control, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count != sizeof control) return;
    const winapi::ProgramAnswer answer = {control.number, Handle(program, control.control)};
    send(winapi::kControlEnd, &answer, sizeof answer, MSG_NOSIGNAL);
  }
}

// A service that nobody can reach any more is told to stop, and ended if it doesn't.
void AwaitStop(Program& program) {
  {
    const std::lock_guard lock(program.mutex);
    if (program.isStopped) return;
  }
  std::thread([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(winapi::kAnswerLimit));
    _exit(EXIT_FAILURE);
  }).detach();
  Handle(program, SERVICE_CONTROL_STOP);
  std::unique_lock lock(program.mutex);
  program.changed.wait(lock, [&] { return program.isStopped; });
}

SERVICE_STATUS_HANDLE Register(const Handler& handler) {
  Program& program = TheProgram();
  const std::lock_guard lock(program.mutex);
  if (!program.isConnected) return Fail<SERVICE_STATUS_HANDLE>(ERROR_SERVICE_NOT_IN_EXE);
  program.handler = handler;
  return kHandle;
}

bool Say(Program& program, const SERVICE_STATUS& status) {
  const std::lock_guard lock(program.saying);
  DWORD done;
  ssize_t count = send(winapi::kStatusEnd, &status, sizeof status, MSG_NOSIGNAL);
  if (count < 0) return false;
  do {
    count = recv(winapi::kStatusEnd, &done, sizeof done, 0);
  } while (count < 0 && errno == EINTR);
  return count == sizeof done;
}

}  // namespace

BOOL WINAPI StartServiceCtrlDispatcherW(const SERVICE_TABLE_ENTRYW* table) {
  if (table == nullptr || table->lpServiceProc == nullptr) return Fail(ERROR_INVALID_DATA);
  Program& program = TheProgram();
  {
    const std::lock_guard lock(program.mutex);
    if (program.isConnected) return Fail(ERROR_SERVICE_ALREADY_RUNNING);
    if (!IsService() || !Connect(program)) {
      return Fail(ERROR_FAILED_SERVICE_CONTROLLER_CONNECT);
    }
    program.isConnected = true;
    program.main = table->lpServiceProc;
  }
  const HANDLE thread = CreateThread(nullptr, 0, RunMain, nullptr, 0, nullptr);
  if (thread == nullptr) return FALSE;
  CloseHandle(thread);
  TakeControls(program);
  AwaitStop(program);
  return TRUE;
}

SERVICE_STATUS_HANDLE WINAPI RegisterServiceCtrlHandlerW(LPCWSTR, LPHANDLER_FUNCTION handler) {
  return Register({handler, nullptr, nullptr});
}

SERVICE_STATUS_HANDLE WINAPI RegisterServiceCtrlHandlerExW(LPCWSTR, LPHANDLER_FUNCTION_EX handler,
                                                           LPVOID context) {
  return Register({nullptr, handler, context});
}

BOOL WINAPI SetServiceStatus(SERVICE_STATUS_HANDLE handle, LPSERVICE_STATUS status) {
  Program& program = TheProgram();
  if (handle != kHandle) return Fail(ERROR_INVALID_HANDLE);
  const DWORD state = status->dwCurrentState;
  if (state < SERVICE_STOPPED || state > SERVICE_PAUSED) return Fail(ERROR_INVALID_DATA);
  const bool isStop = state == SERVICE_STOPPED;
  {
    const std::lock_guard lock(program.mutex);
    if (!program.isConnected) return Fail(ERROR_INVALID_HANDLE);
    program.isStopped |= isStop;
  }
  const bool said = Say(program, *status);
  program.changed.notify_all();
  return said ? TRUE : Fail(ERROR_FAILED_SERVICE_CONTROLLER_CONNECT);
}
