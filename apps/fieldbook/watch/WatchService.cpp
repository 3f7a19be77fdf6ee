#include "fieldbook/watch/WatchService.h"

#include <windows.h>
// Needs windows.h before it.
#include <winsvc.h>

#include <fstream>
#include <string>

#include "console/LocalTime.h"
#include "fieldbook/watch/FolderWatch.h"
#include "kelp0lang/UtcTime.h"

namespace fieldbook {

const WChar* const kWatchName = KTEXT("fieldwatch");
const WChar* const kWatchDisplayName = KTEXT("Field watch");

namespace {

constexpr DWORD kPause = 1'000;     // milliseconds between two looks
constexpr DWORD kStopHint = 3'000;  // milliseconds

// What the functions of the service share; there is one service in a process.
struct Service {
  std::filesystem::path from;
  std::filesystem::path to;
  SERVICE_STATUS_HANDLE handle = nullptr;
  HANDLE stop = nullptr;
};
Service service;

void Tell(DWORD state, DWORD exitCode = NO_ERROR) {
  SERVICE_STATUS status = {};
  status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  status.dwCurrentState = state;
  status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
  status.dwWin32ExitCode = exitCode;
  status.dwWaitHint = state == SERVICE_STOP_PENDING ? kStopHint : 0;
  SetServiceStatus(service.handle, &status);
}

void WINAPI OnControl(DWORD control) {
  if (control != SERVICE_CONTROL_STOP) return;
  Tell(SERVICE_STOP_PENDING);
  SetEvent(service.stop);
}

bool IsToStop() {
  return WaitForSingleObject(service.stop, 0) == WAIT_OBJECT_0;
}

// A log that can't be written keeps no file from being copied, and there is nowhere else to tell.
void Log(const WString& text) {
  std::string line;
  AppendUtf8(line, LocalTimeText(kelp::FGetUtcCurTime()) + KTEXT("  ") + text.c_str());
  std::ofstream(service.to / "fieldwatch.log", std::ios::binary | std::ios::app) << line << '\n';
}

void WatchFolder() {
  FolderWatch watch(service.from, service.to);
  do {
    for (const WString& line : watch.Look(IsToStop)) Log(line);
  } while (WaitForSingleObject(service.stop, kPause) == WAIT_TIMEOUT);
}

void WINAPI Run(DWORD, LPWSTR*) {
  service.stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  service.handle = RegisterServiceCtrlHandlerW(kWatchName, &OnControl);
  std::error_code error;
  if (!std::filesystem::is_directory(service.from, error) ||
      !std::filesystem::is_directory(service.to, error)) {
    Tell(SERVICE_STOPPED, ERROR_PATH_NOT_FOUND);
    return;
  }
  Tell(SERVICE_RUNNING);
  try {
    WatchFolder();
    Tell(SERVICE_STOPPED);
  } catch (const std::exception&) {
    Tell(SERVICE_STOPPED, ERROR_NOT_ENOUGH_MEMORY);
  }
}

// As the C runtime takes it apart again: quotes and the backslashes before them are escaped.
WString QuotedArgument(const WString& text) {
  WString quoted = KTEXT("\"");
  int backslashes = 0;
  for (const WChar unit : ViewOf(text)) {
    if (unit == '"') {
      for (int i = 0; i <= backslashes; ++i) quoted += KTEXT('\\');
    }
    backslashes = unit == '\\' ? backslashes + 1 : 0;
    quoted += unit;
  }
  for (int i = 0; i < backslashes; ++i) quoted += KTEXT('\\');
  return quoted + KTEXT('"');
}

WString TextOf(const std::filesystem::path& path) {
  return ToWString(path.string<WChar>());
}

}  // namespace

WString WatchCommand(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::filesystem::path program = Console::ProgramFolder() / "fieldwatch.exe";
  std::error_code error;
  if (!std::filesystem::exists(program, error)) program.replace_extension();
  return QuotedArgument(TextOf(program)) + KTEXT(' ') +
         QuotedArgument(TextOf(std::filesystem::absolute(from))).c_str() + KTEXT(' ') +
         QuotedArgument(TextOf(std::filesystem::absolute(to))).c_str();
}

Status RunWatchService(const std::vector<Argument>& arguments, Console& console) {
  WChar name[] = KTEXT("fieldwatch");
  const SERVICE_TABLE_ENTRYW table[] = {{name, &Run}, {nullptr, nullptr}};
  if (arguments.size() == 2) {
    service.from = arguments[0].path;
    service.to = arguments[1].path;
    if (StartServiceCtrlDispatcherW(table)) return kDone;
  }
  console.Complain(
      Message{KTEXT("this is a service; see {1}"), {KTEXT("fieldbook service --help")}}.Text());
  return kFailed;
}

}  // namespace fieldbook
