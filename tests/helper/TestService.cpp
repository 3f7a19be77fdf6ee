// A service as the tests want it, by the first argument of its command line; the second is a file
// that it looks for. As no service:
//   "race" NAME  installs and starts this program as a service of that name, "plain"; its exit code
//                is 1 where it has installed it, and 2 more where it has started it
#include <windows.h>
// It needs the one before.
#include <winsvc.h>

#include <cstdlib>
#include <string>

#include "tests/winapi/WideText.h"

namespace {

constexpr DWORD kEndAtOnce = 200;  // controls of its own
constexpr DWORD kRefused = 201;
constexpr DWORD kStopAnyhow = 202;
constexpr DWORD kReason = 1234;

std::string mode;
Wide file;
SERVICE_STATUS_HANDLE handle;
HANDLE stopped;
SERVICE_STATUS status = {SERVICE_WIN32_OWN_PROCESS, SERVICE_START_PENDING, 0, 0, 0, 0, 0};

Wide Widened(const char* text) {
  return Wide(text, text + std::string(text).size());
}

void Tell(DWORD state, DWORD accepted = 0, DWORD checkPoint = 0, DWORD hint = 0) {
  status.dwCurrentState = state;
  status.dwControlsAccepted = accepted;
  status.dwCheckPoint = checkPoint;
  status.dwWaitHint = hint;
  SetServiceStatus(handle, &status);
}

DWORD WINAPI OnControl(DWORD control, DWORD, LPVOID, LPVOID) {
  if (control == kEndAtOnce) std::_Exit(5);
  if (control == kRefused) return kReason;
  if (control == SERVICE_CONTROL_PAUSE) Tell(SERVICE_PAUSED, SERVICE_ACCEPT_STOP);
  if ((control == SERVICE_CONTROL_STOP && mode != "deaf") || control == kStopAnyhow) {
    Tell(SERVICE_STOP_PENDING, 0, 1, 2'000);
    SetEvent(stopped);
  }
  return NO_ERROR;
}

bool Exists() {
  return GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void WriteArguments(DWORD count, LPWSTR* arguments) {
  Wide all;
  for (DWORD i = 0; i < count; ++i) all += Wide(arguments[i]) + WTEXT("|");
  const HANDLE out =
      CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  WriteFile(out, all.data(), static_cast<DWORD>(all.size() * sizeof(WCHAR)), &written, nullptr);
  CloseHandle(out);
}

void WINAPI Run(DWORD count, LPWSTR* arguments) {
  stopped = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  handle = RegisterServiceCtrlHandlerExW(arguments[0], &OnControl, nullptr);
  if (mode == "fail") {
    Sleep(300);
    status.dwWin32ExitCode = ERROR_SERVICE_SPECIFIC_ERROR;
    status.dwServiceSpecificExitCode = 7;
    return Tell(SERVICE_STOPPED);
  }
  if (mode == "pending") {
    Tell(SERVICE_START_PENDING, 0, 0, 1'000);
    while (!Exists()) Sleep(50);
    std::_Exit(6);
  }
  if (mode == "slow") {
    for (DWORD point = 1; point <= 3; ++point) {
      Tell(SERVICE_START_PENDING, 0, point, 1'000);
      Sleep(400);
    }
  }
  if (mode == "arguments") WriteArguments(count, arguments);
  Tell(SERVICE_RUNNING,
       SERVICE_ACCEPT_STOP | (mode == "pauses" ? SERVICE_ACCEPT_PAUSE_CONTINUE : 0u));
  WaitForSingleObject(stopped, INFINITE);
  if (mode == "lingers") Sleep(1'500);
  Tell(SERVICE_STOPPED);
}

int Race(const char* program, const Wide& name) {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
  const Wide path = WTEXT('"') + Widened(program) + WTEXT("\" plain");
  SC_HANDLE service =
      CreateServiceW(manager, name.c_str(), nullptr, SERVICE_START, SERVICE_WIN32_OWN_PROCESS,
                     SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, path.c_str(), nullptr, nullptr,
                     nullptr, nullptr, nullptr);
  int outcome = service != nullptr ? 1 : 0;
  if (service == nullptr) service = OpenServiceW(manager, name.c_str(), SERVICE_START);
  if (StartServiceW(service, 0, nullptr)) outcome |= 2;
  CloseServiceHandle(service);
  CloseServiceHandle(manager);
  return outcome;
}

}  // namespace

int main(int count, char** arguments) {
  mode = count > 1 ? arguments[1] : "";
  if (count > 2) file = Widened(arguments[2]);
  if (mode == "die") return 3;
  if (mode == "race") return Race(arguments[0], file);
  WCHAR name[] = WTEXT("any");
  const SERVICE_TABLE_ENTRYW table[] = {{name, &Run}, {nullptr, nullptr}};
  if (StartServiceCtrlDispatcherW(table)) return 0;
  return static_cast<int>(GetLastError() % 256);
}
