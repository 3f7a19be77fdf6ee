#include "kelp0lang/ServiceControl.h"

#include <windows.h>
// They need the one before.
#include <aclapi.h>
#include <winsvc.h>

#include <algorithm>

#include "kelp0lang/LocaleFree.h"

namespace {

constexpr DWORD kStopLimit = 30'000;  // milliseconds for a stop as a whole

// Closes what the service manager has opened.
class ServiceHandle {
 public:
  explicit ServiceHandle(SC_HANDLE handle) : m_handle(handle) {}
  ~ServiceHandle() {
    if (m_handle != nullptr) CloseServiceHandle(m_handle);
  }
  ServiceHandle(const ServiceHandle&) = delete;
  ServiceHandle& operator=(const ServiceHandle&) = delete;
  operator SC_HANDLE() const { return m_handle; }

 private:
  const SC_HANDLE m_handle;
};

// Memory of the process heap, zero-filled.
class HeapBlock {
 public:
  explicit HeapBlock(DWORD size) : m_block(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size)) {}
  ~HeapBlock() {
    if (m_block != nullptr) HeapFree(GetProcessHeap(), 0, m_block);
  }
  HeapBlock(const HeapBlock&) = delete;
  HeapBlock& operator=(const HeapBlock&) = delete;
  void* Get() const { return m_block; }

 private:
  void* const m_block;
};

void Print(const WChar* text) {
  kelp_wprintf(KTEXT("%ls"), text);
}
void Print(const WChar* format, DWORD number) {
  kelp_wprintf(format, number);
}
bool PrintError(const WChar* format) {
  Print(format, GetLastError());
  return false;
}

SC_HANDLE OpenManager(DWORD access) {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, access);
  if (manager == nullptr) PrintError(KTEXT("OpenSCManager failed (%d)\n"));
  return manager;
}

SC_HANDLE Open(SC_HANDLE manager, const kelp::WString& name, DWORD access) {
  const SC_HANDLE service = OpenServiceW(manager, name.c_str(), access);
  if (service == nullptr) PrintError(KTEXT("OpenService failed (%d)\n"));
  return service;
}

bool Query(SC_HANDLE service, SERVICE_STATUS_PROCESS& status) {
  DWORD needed = 0;
  return QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                              sizeof status, &needed) != FALSE;
}

bool QueryOrTell(SC_HANDLE service, SERVICE_STATUS_PROCESS& status) {
  return Query(service, status) || PrintError(KTEXT("QueryServiceStatusEx failed (%d)\n"));
}

// A tenth of the time that the service asks for, within bounds.
void WaitStep(const SERVICE_STATUS_PROCESS& status) {
  Sleep(std::clamp<DWORD>(status.dwWaitHint / 10, 1'000, 10'000));
}

// The whole of it, which may be nothing; a moment is left to others even then.
void WaitHint(const SERVICE_STATUS_PROCESS& status) {
  Sleep(std::max<DWORD>(status.dwWaitHint, 1));
}

// The time since a service has shown that it goes on.
class ProgressClock {
 public:
  explicit ProgressClock(const SERVICE_STATUS_PROCESS& status)
      : m_checkPoint(status.dwCheckPoint), m_start(GetTickCount()) {}
  // Whether more than the wait hint has passed since the check point last rose.
  bool HasRunOut(const SERVICE_STATUS_PROCESS& status) {
    if (status.dwCheckPoint > m_checkPoint) {
      m_checkPoint = status.dwCheckPoint;
      m_start = GetTickCount();
      return false;
    }
    return GetTickCount() - m_start > status.dwWaitHint;
  }

 private:
  DWORD m_checkPoint;
  DWORD m_start;
};

class StopClock {
 public:
  bool HasRunOut() const { return GetTickCount() - m_start > kStopLimit; }

 private:
  const DWORD m_start = GetTickCount();
};

bool AwaitEndOfStop(SC_HANDLE service, SERVICE_STATUS_PROCESS& status) {
  ProgressClock clock(status);
  while (status.dwCurrentState == SERVICE_STOP_PENDING) {
    WaitStep(status);
    if (!QueryOrTell(service, status)) return false;
    if (status.dwCurrentState == SERVICE_STOP_PENDING && clock.HasRunOut(status)) {
      Print(KTEXT("Timeout waiting for service to stop\n"));
      return false;
    }
  }
  return true;
}

void AwaitStart(SC_HANDLE service, SERVICE_STATUS_PROCESS& status) {
  ProgressClock clock(status);
  while (status.dwCurrentState == SERVICE_START_PENDING) {
    WaitStep(status);
    if (!QueryOrTell(service, status) || clock.HasRunOut(status)) return;
  }
}

void TellStart(const SERVICE_STATUS_PROCESS& status) {
  if (status.dwCurrentState == SERVICE_RUNNING) {
    Print(KTEXT("Service started successfully.\n"));
    return;
  }
  Print(KTEXT("Service not started. \n"));
  Print(KTEXT("  Current State: %d\n"), status.dwCurrentState);
  Print(KTEXT("  Exit Code: %d\n"), status.dwWin32ExitCode);
  Print(KTEXT("  Check Point: %d\n"), status.dwCheckPoint);
  Print(KTEXT("  Wait Hint: %d\n"), status.dwWaitHint);
}

// How the service is behind the control, as far as a stop has to know.
bool SendStop(SC_HANDLE service, SERVICE_STATUS_PROCESS& status) {
  SERVICE_STATUS answer;
  if (!ControlService(service, SERVICE_CONTROL_STOP, &answer)) return false;
  status.dwCurrentState = answer.dwCurrentState;
  status.dwWaitHint = answer.dwWaitHint;
  return true;
}

bool StopDependent(SC_HANDLE manager, const WCHAR* name, const StopClock& clock) {
  const ServiceHandle service(OpenServiceW(manager, name, SERVICE_STOP | SERVICE_QUERY_STATUS));
  if (service == nullptr) return false;
  SERVICE_STATUS_PROCESS status = {};
  if (!SendStop(service, status)) return false;
  while (status.dwCurrentState != SERVICE_STOPPED) {
    WaitHint(status);
    if (!Query(service, status)) return false;
    if (status.dwCurrentState != SERVICE_STOPPED && clock.HasRunOut()) return false;
  }
  return true;
}

bool StopDependents(SC_HANDLE manager, SC_HANDLE service) {
  const StopClock clock;
  DWORD size = 0;
  DWORD count = 0;
  if (EnumDependentServicesW(service, SERVICE_ACTIVE, nullptr, 0, &size, &count)) return true;
  if (GetLastError() != ERROR_MORE_DATA) return false;
  const HeapBlock block(size);
  auto* const dependents = static_cast<LPENUM_SERVICE_STATUSW>(block.Get());
  if (dependents == nullptr ||
      !EnumDependentServicesW(service, SERVICE_ACTIVE, dependents, size, &size, &count)) {
    return false;
  }
  return std::all_of(dependents, dependents + count, [&](const ENUM_SERVICE_STATUSW& dependent) {
    return StopDependent(manager, dependent.lpServiceName, clock);
  });
}

// One that is stopping already. True where that is all there is to do.
bool AwaitPendingStop(SC_HANDLE service, SERVICE_STATUS_PROCESS& status, const StopClock& clock) {
  while (status.dwCurrentState == SERVICE_STOP_PENDING) {
    Print(KTEXT("Service stop pending...\n"));
    WaitStep(status);
    if (!QueryOrTell(service, status)) return true;
    if (status.dwCurrentState == SERVICE_STOPPED) {
      Print(KTEXT("Service stopped successfully.\n"));
      return true;
    }
    if (clock.HasRunOut()) {
      Print(KTEXT("Service stop timed out.\n"));
      return true;
    }
  }
  return false;
}

void Stop(SC_HANDLE service, const StopClock& clock) {
  SERVICE_STATUS_PROCESS status = {};
  if (!SendStop(service, status)) {
    PrintError(KTEXT("ControlService failed (%d)\n"));
    return;
  }
  while (status.dwCurrentState != SERVICE_STOPPED) {
    WaitHint(status);
    if (!QueryOrTell(service, status)) return;
    if (status.dwCurrentState != SERVICE_STOPPED && clock.HasRunOut()) {
      Print(KTEXT("Wait timed out\n"));
      return;
    }
  }
  Print(KTEXT("Service stopped successfully\n"));
}

void SetAccess(SC_HANDLE service, PACL list) {
  SECURITY_DESCRIPTOR descriptor;
  if (!InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION)) {
    PrintError(KTEXT("InitializeSecurityDescriptor failed(%d)\n"));
  } else if (!SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE)) {
    PrintError(KTEXT("SetSecurityDescriptorDacl failed(%d)\n"));
  } else if (!SetServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, &descriptor)) {
    PrintError(KTEXT("SetServiceObjectSecurity failed(%d)\n"));
  } else {
    Print(KTEXT("Service DACL updated successfully\n"));
  }
}

void AddEveryone(SC_HANDLE service, PSECURITY_DESCRIPTOR descriptor) {
  BOOL isPresent = FALSE;
  BOOL isDefaulted = FALSE;
  PACL old = nullptr;
  if (!GetSecurityDescriptorDacl(descriptor, &isPresent, &old, &isDefaulted)) {
    PrintError(KTEXT("GetSecurityDescriptorDacl failed(%d)\n"));
    return;
  }
  EXPLICIT_ACCESS_W everyone;
  WCHAR name[] = KTEXT("Everyone");
  BuildExplicitAccessWithNameW(&everyone, name,
                               DELETE | READ_CONTROL | SERVICE_START | SERVICE_STOP, SET_ACCESS,
                               NO_INHERITANCE);
  PACL list = nullptr;
  const DWORD error = SetEntriesInAclW(1, &everyone, old, &list);
  if (error != ERROR_SUCCESS) {
    Print(KTEXT("SetEntriesInAcl failed(%d)\n"), error);
    return;
  }
  SetAccess(service, list);
  LocalFree(list);
}

// Opens the access list of a service to everyone. False only where the service can't be opened.
bool GrantEveryone(const kelp::WString& name) {
  const ServiceHandle manager(OpenManager(SC_MANAGER_ALL_ACCESS));
  if (manager == nullptr) return false;
  const ServiceHandle service(Open(manager, name, READ_CONTROL | WRITE_DAC));
  if (service == nullptr) return false;
  BYTE none[1];
  DWORD size = 0;
  if (QueryServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, none, 0, &size)) return true;
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    PrintError(KTEXT("QueryServiceObjectSecurity failed (%d)\n"));
    return true;
  }
  const HeapBlock block(size);
  if (block.Get() == nullptr) {
    Print(KTEXT("HeapAlloc failed\n"));
  } else if (!QueryServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, block.Get(), size,
                                         &size)) {
    PrintError(KTEXT("QueryServiceObjectSecurity failed (%d)\n"));
  } else {
    AddEveryone(service, block.Get());
  }
  return true;
}

}  // namespace

bool InstallTalvService(const kelp::WString& name, const kelp::WString& displayName,
                        const kelp::WString& binaryPath, bool grantEveryone) {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (manager == nullptr) return false;
  constexpr DWORD kAccess =
      SERVICE_START | SERVICE_STOP | SERVICE_QUERY_STATUS | SERVICE_ENUMERATE_DEPENDENTS;
  const ServiceHandle service(CreateServiceW(manager, name.c_str(), displayName.c_str(), kAccess,
                                             SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START,
                                             SERVICE_ERROR_NORMAL, binaryPath.c_str(), nullptr,
                                             nullptr, nullptr, nullptr, nullptr));
  if (service == nullptr) return false;
  return !grantEveryone || GrantEveryone(name);
}

bool IsTalvServiceInstalled(const kelp::WString& name) {
  const ServiceHandle manager(OpenManager(SC_MANAGER_CONNECT));
  if (manager == nullptr) return false;
  return ServiceHandle(OpenServiceW(manager, name.c_str(), SERVICE_QUERY_CONFIG)) != nullptr;
}

bool StartTalvService(const kelp::WString& name) {
  const ServiceHandle manager(OpenManager(SC_MANAGER_CONNECT));
  if (manager == nullptr) return false;
  const ServiceHandle service(Open(manager, name, SERVICE_START | SERVICE_QUERY_STATUS));
  if (service == nullptr) return false;
  SERVICE_STATUS_PROCESS status = {};
  if (!QueryOrTell(service, status)) return false;
  if (status.dwCurrentState != SERVICE_STOPPED && status.dwCurrentState != SERVICE_STOP_PENDING) {
    Print(KTEXT("Cannot start the service because it is already running\n"));
    return true;
  }
  if (!AwaitEndOfStop(service, status)) return false;
  if (!StartServiceW(service, 0, nullptr)) {
    return PrintError(KTEXT("StartService failed (%d)\n"));
  }
  Print(KTEXT("Service start pending...\n"));
  if (!QueryOrTell(service, status)) return false;
  AwaitStart(service, status);
  TellStart(status);
  return true;
}

bool StopTalvService(const kelp::WString& name) {
  const StopClock clock;
  const ServiceHandle manager(OpenManager(SC_MANAGER_CONNECT));
  if (manager == nullptr) return false;
  const ServiceHandle service(
      Open(manager, name, SERVICE_STOP | SERVICE_QUERY_STATUS | SERVICE_ENUMERATE_DEPENDENTS));
  if (service == nullptr) return false;
  SERVICE_STATUS_PROCESS status = {};
  if (!QueryOrTell(service, status)) return true;
  if (status.dwCurrentState == SERVICE_STOPPED) {
    Print(KTEXT("Service is already stopped.\n"));
    return true;
  }
  if (AwaitPendingStop(service, status, clock)) return true;
  StopDependents(manager, service);
  Stop(service, clock);
  return true;
}
