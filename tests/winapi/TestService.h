// Services of the test program test_service, each with a name of its own.
#pragma once

#include <windows.h>
// It needs the one before.
#include <winsvc.h>

#include <filesystem>
#include <random>
#include <string>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/WideText.h"

// Closes a handle at the end of a scope.
class ScHandle {
 public:
  explicit ScHandle(SC_HANDLE handle) : m_handle(handle) {}
  ~ScHandle() { Close(); }
  ScHandle(const ScHandle&) = delete;
  ScHandle& operator=(const ScHandle&) = delete;
  operator SC_HANDLE() const { return m_handle; }
  void Close() {
    if (m_handle != nullptr) CloseServiceHandle(m_handle);
    m_handle = nullptr;
  }

 private:
  SC_HANDLE m_handle;
};

inline SC_HANDLE Manager() {
  static const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
  return manager;
}

inline Wide Widen(const std::string& text) {
  return Wide(text.begin(), text.end());
}

// One that no run before has left, either.
inline Wide NewServiceName() {
  std::random_device random;
  return Widen("kelp-test-" + std::to_string(random()) + '-' + std::to_string(random()));
}

inline Wide TestServiceCommand(const Wide& arguments) {
  const auto program = std::filesystem::absolute(TEST_SERVICE).string<WCHAR>();
  return WTEXT('"') + program + WTEXT("\" ") + arguments;
}

inline SC_HANDLE Install(const Wide& name, const Wide& command, const WCHAR* needs = nullptr,
                         DWORD start = SERVICE_DEMAND_START) {
  return CreateServiceW(Manager(), name.c_str(), nullptr, SERVICE_ALL_ACCESS,
                        SERVICE_WIN32_OWN_PROCESS, start, SERVICE_ERROR_NORMAL, command.c_str(),
                        nullptr, nullptr, needs, nullptr, nullptr);
}

// Controls of test_service's own: it ends without a word, or stops in every mode.
constexpr DWORD kEndAtOnce = 200;
constexpr DWORD kStopAnyhow = 202;

// An installed service of a mode of test_service, stopped and deleted at the end of a scope.
class TestService {
 public:
  explicit TestService(const Wide& arguments, const WCHAR* needs = nullptr)
      : name(NewServiceName()), handle(Install(name, TestServiceCommand(arguments), needs)) {}
  ~TestService() {
    if (handle == nullptr) return;
    // One that is starting still takes no controls.
    for (int i = 0; i < 500 && Status().dwCurrentState != SERVICE_STOPPED; ++i) {
      Control(kStopAnyhow);
      Sleep(20);
    }
    DeleteService(handle);
  }

  long Start() const {
    for (;;) {
      const long error = ErrorOf(StartServiceW(handle, 0, nullptr));
      // Somebody else's service is being started.
      if (error != ERROR_SERVICE_DATABASE_LOCKED) return error;
      Sleep(100);
    }
  }
  long Control(DWORD control) const {
    SERVICE_STATUS status;
    return ErrorOf(ControlService(handle, control, &status));
  }
  SERVICE_STATUS_PROCESS Status() const {
    SERVICE_STATUS_PROCESS status = {};
    DWORD needed = 0;
    QueryServiceStatusEx(handle, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                         sizeof status, &needed);
    return status;
  }
  // The status when it has come to a state, or the last one.
  SERVICE_STATUS_PROCESS Await(DWORD state) const {
    SERVICE_STATUS_PROCESS status = Status();
    for (int i = 0; status.dwCurrentState != state && i < 3'000; ++i) {
      Sleep(20);
      status = Status();
    }
    return status;
  }

  const Wide name;
  const ScHandle handle;
};
