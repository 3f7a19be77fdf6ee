#include <gtest/gtest.h>
#include <windows.h>
// They need the one before.
#include <aclapi.h>
#include <shellapi.h>
#include <winsvc.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/TestService.h"
#include "tests/winapi/UnderWine.h"

namespace {

SC_HANDLE Open(const Wide& name, DWORD access = SERVICE_ALL_ACCESS) {
  return OpenServiceW(Manager(), name.c_str(), access);
}

TEST(Service, RunsFromItsStartToItsStop) {
  const TestService service(WTEXT("plain"));
  ASSERT_NE(service.handle, nullptr);
  EXPECT_EQ(service.Status().dwWin32ExitCode, DWORD{ERROR_SERVICE_NEVER_STARTED});
  EXPECT_EQ(service.Control(SERVICE_CONTROL_STOP), ERROR_SERVICE_NOT_ACTIVE);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(service.Start(), ERROR_SUCCESS);
    const SERVICE_STATUS_PROCESS running = service.Await(SERVICE_RUNNING);
    EXPECT_EQ(running.dwCurrentState, DWORD{SERVICE_RUNNING});
    EXPECT_EQ(running.dwServiceType, DWORD{SERVICE_WIN32_OWN_PROCESS});
    EXPECT_EQ(running.dwControlsAccepted, DWORD{SERVICE_ACCEPT_STOP});
    EXPECT_NE(running.dwProcessId, 0u);
    EXPECT_EQ(service.Start(), ERROR_SERVICE_ALREADY_RUNNING);
    SERVICE_STATUS status = {};
    EXPECT_TRUE(ControlService(service.handle, SERVICE_CONTROL_STOP, &status));
    EXPECT_NE(status.dwCurrentState, DWORD{SERVICE_RUNNING});
    const SERVICE_STATUS_PROCESS stopped = service.Await(SERVICE_STOPPED);
    EXPECT_EQ(stopped.dwCurrentState, DWORD{SERVICE_STOPPED});
    EXPECT_EQ(stopped.dwWin32ExitCode, 0u);
    EXPECT_EQ(stopped.dwProcessId, 0u);
  }
}

TEST(Service, GivesBackWhatItWasInstalledWith) {
  const Wide name = NewServiceName();
  const Wide display = name + WTEXT(" \"Wächter\"\n\\ ");
  const Wide command = TestServiceCommand(WTEXT("plain \"a b\\\""));
  const WCHAR needs[] = WTEXT("kelp-first\0kelp-second\0");
  const ScHandle service(CreateServiceW(Manager(), name.c_str(), display.c_str(),
                                        SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                                        SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE, command.c_str(),
                                        nullptr, nullptr, needs, nullptr, nullptr));
  ASSERT_NE(service, nullptr);
  DWORD needed = 0;
  EXPECT_EQ(ErrorOf(QueryServiceConfigW(service, nullptr, 0, &needed)), ERROR_INSUFFICIENT_BUFFER);
  std::vector<BYTE> buffer(needed);
  auto* const config = reinterpret_cast<LPQUERY_SERVICE_CONFIGW>(buffer.data());
  ASSERT_TRUE(QueryServiceConfigW(service, config, needed, &needed));
  EXPECT_EQ(Wide(config->lpBinaryPathName), command);
  EXPECT_EQ(Wide(config->lpDisplayName), display);
  EXPECT_EQ(Wide(config->lpServiceStartName), WTEXT("LocalSystem"));
  EXPECT_EQ(config->dwStartType, DWORD{SERVICE_DEMAND_START});
  EXPECT_EQ(config->dwErrorControl, DWORD{SERVICE_ERROR_IGNORE});
  if (!UnderWine()) {
    EXPECT_EQ(Wide(config->lpDependencies, std::size(needs)), Wide(needs, std::size(needs)));
  }
  EXPECT_TRUE(DeleteService(service));
}

TEST(Service, RefusesWhatIsNone) {
  const TestService other(WTEXT("plain"));
  const Wide command = TestServiceCommand(WTEXT("plain"));
  const Wide fresh = NewServiceName();
  const struct {
    Wide name;
    DWORD start;
    long error;
    bool isOnWine;
  } cases[] = {
      {WTEXT(""), SERVICE_DEMAND_START, ERROR_INVALID_NAME, true},
      {WTEXT("a/b"), SERVICE_DEMAND_START, ERROR_INVALID_NAME, false},
      {WTEXT("a\\b"), SERVICE_DEMAND_START, ERROR_INVALID_NAME, false},
      {Wide(257, 'a'), SERVICE_DEMAND_START, ERROR_INVALID_NAME, false},
      {fresh, 9, ERROR_INVALID_PARAMETER, true},
      {other.name, SERVICE_DEMAND_START, ERROR_SERVICE_EXISTS, true},
  };
  for (const auto& test : cases) {
    if (UnderWine() && !test.isOnWine) continue;
    const ScHandle service(Install(test.name, command, nullptr, test.start));
    EXPECT_EQ(ErrorOf(SC_HANDLE{service}), test.error);
  }
  EXPECT_EQ(ErrorOf(Open(fresh)), ERROR_SERVICE_DOES_NOT_EXIST);
  EXPECT_EQ(ErrorOf(OpenServiceW(other.handle, fresh.c_str(), 1)), ERROR_INVALID_HANDLE);
  const ScHandle display(CreateServiceW(Manager(), fresh.c_str(), other.name.c_str(),
                                        SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                                        SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, command.c_str(),
                                        nullptr, nullptr, nullptr, nullptr, nullptr));
  // Wine compares display names with display names alone.
  if (UnderWine()) {
    DeleteService(display);
  } else {
    EXPECT_EQ(ErrorOf(SC_HANDLE{display}), ERROR_DUPLICATE_SERVICE_NAME);
  }
}

TEST(Service, AHandleHasTheRightsThatItWasOpenedWith) {
  const TestService service(WTEXT("plain"));
  ASSERT_EQ(service.Start(), ERROR_SUCCESS);
  Wide name = service.name;
  for (WCHAR& unit : name) {
    if (unit >= 'a' && unit <= 'z') unit -= 'a' - 'A';
  }
  const ScHandle asks(Open(name, SERVICE_QUERY_STATUS));
  ASSERT_NE(asks, nullptr);
  SERVICE_STATUS status;
  EXPECT_TRUE(QueryServiceStatus(asks, &status));
  EXPECT_EQ(ErrorOf(ControlService(asks, SERVICE_CONTROL_STOP, &status)), ERROR_ACCESS_DENIED);
  EXPECT_EQ(ErrorOf(StartServiceW(asks, 0, nullptr)), ERROR_ACCESS_DENIED);
  EXPECT_EQ(ErrorOf(DeleteService(asks)), ERROR_ACCESS_DENIED);
  DWORD needed = 0;
  BYTE buffer[sizeof(SERVICE_STATUS_PROCESS)];
  EXPECT_EQ(ErrorOf(QueryServiceStatusEx(asks, SC_STATUS_PROCESS_INFO, buffer, 35, &needed)),
            ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(needed, 36u);
  EXPECT_EQ(
      ErrorOf(QueryServiceStatusEx(asks, static_cast<SC_STATUS_TYPE>(1), buffer, 36, &needed)),
      ERROR_INVALID_LEVEL);
}

TEST(Service, AStartThatFailsSaysWhy) {
  const TempFolder folder;
  const Wide missing = folder.Wide(WTEXT("missing"));
  const ScHandle none(Install(NewServiceName(), missing));
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(ErrorOf(StartServiceW(none, 0, nullptr)), ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(DeleteService(none));

  const TestService dies(WTEXT("die"));
  EXPECT_EQ(dies.Start(), ERROR_SERVICE_REQUEST_TIMEOUT);
  EXPECT_EQ(dies.Status().dwCurrentState, DWORD{SERVICE_STOPPED});

  // Wine waits for the service to run itself, and then has an error of a start.
  const TestService fails(WTEXT("fail"));
  EXPECT_EQ(fails.Start(), UnderWine() ? ERROR_SERVICE_REQUEST_TIMEOUT : ERROR_SUCCESS);
  const SERVICE_STATUS_PROCESS failed = fails.Await(SERVICE_STOPPED);
  EXPECT_EQ(failed.dwCurrentState, DWORD{SERVICE_STOPPED});
  EXPECT_EQ(failed.dwWin32ExitCode, DWORD{ERROR_SERVICE_SPECIFIC_ERROR});
  EXPECT_EQ(failed.dwServiceSpecificExitCode, 7u);

  const ScHandle disabled(
      Install(NewServiceName(), TestServiceCommand(WTEXT("plain")), nullptr, SERVICE_DISABLED));
  EXPECT_EQ(ErrorOf(StartServiceW(disabled, 0, nullptr)), ERROR_SERVICE_DISABLED);
  EXPECT_TRUE(DeleteService(disabled));
}

TEST(Service, APendingOneTellsHowFarItIsAndTakesNoControls) {
  const TestService slow(WTEXT("slow"));
  ASSERT_EQ(slow.Start(), ERROR_SUCCESS);
  DWORD last = 0;
  for (SERVICE_STATUS_PROCESS status = slow.Status();
       status.dwCurrentState == SERVICE_START_PENDING; status = slow.Status()) {
    EXPECT_GE(status.dwCheckPoint, last);
    last = status.dwCheckPoint;
    if (last > 0) {
      EXPECT_EQ(status.dwWaitHint, 1'000u);
    }
    Sleep(20);
  }
  EXPECT_EQ(last, 3u);
  EXPECT_EQ(slow.Status().dwCurrentState, DWORD{SERVICE_RUNNING});

  // It doesn't notice either that a program has ended.
  if (UnderWine()) return;
  const TempFolder folder;
  const TestService hangs(WTEXT("pending \"") + folder.Wide(WTEXT("end")) + WTEXT('"'));
  ASSERT_EQ(hangs.Start(), ERROR_SUCCESS);
  EXPECT_EQ(hangs.Control(SERVICE_CONTROL_STOP), ERROR_SERVICE_CANNOT_ACCEPT_CTRL);
  EXPECT_EQ(hangs.Start(), ERROR_SERVICE_ALREADY_RUNNING);
  folder.Write("end", "");
  const SERVICE_STATUS_PROCESS ended = hangs.Await(SERVICE_STOPPED);
  EXPECT_EQ(ended.dwCurrentState, DWORD{SERVICE_STOPPED});
  EXPECT_EQ(ended.dwWin32ExitCode, DWORD{ERROR_PROCESS_ABORTED});
}

TEST(Service, OneThatIgnoresItsStopRunsOn) {
  const TestService deaf(WTEXT("deaf"));
  ASSERT_EQ(deaf.Start(), ERROR_SUCCESS);
  deaf.Await(SERVICE_RUNNING);
  EXPECT_EQ(deaf.Control(SERVICE_CONTROL_STOP), ERROR_SUCCESS);
  EXPECT_EQ(deaf.Status().dwCurrentState, DWORD{SERVICE_RUNNING});
  // It ends without a word, which Wine doesn't notice.
  if (UnderWine()) return;
  EXPECT_NE(deaf.Control(kEndAtOnce), ERROR_SUCCESS);
  const SERVICE_STATUS_PROCESS ended = deaf.Await(SERVICE_STOPPED);
  EXPECT_EQ(ended.dwCurrentState, DWORD{SERVICE_STOPPED});
  EXPECT_EQ(ended.dwWin32ExitCode, DWORD{ERROR_PROCESS_ABORTED});
  EXPECT_EQ(deaf.Start(), ERROR_SUCCESS);
}

TEST(Service, TakesTheControlsThatItSaysItDoes) {
  const TestService service(WTEXT("plain"));
  ASSERT_EQ(service.Start(), ERROR_SUCCESS);
  service.Await(SERVICE_RUNNING);
  EXPECT_EQ(service.Control(SERVICE_CONTROL_PAUSE), ERROR_INVALID_SERVICE_CONTROL);
  EXPECT_EQ(service.Control(SERVICE_CONTROL_INTERROGATE), ERROR_SUCCESS);
  EXPECT_EQ(service.Control(150), ERROR_SUCCESS);
  // Wine forgets what the handler gives.
  EXPECT_EQ(service.Control(201), UnderWine() ? ERROR_SUCCESS : 1234);

  const TestService pauses(WTEXT("pauses"));
  ASSERT_EQ(pauses.Start(), ERROR_SUCCESS);
  pauses.Await(SERVICE_RUNNING);
  EXPECT_EQ(pauses.Control(SERVICE_CONTROL_PAUSE), ERROR_SUCCESS);
  EXPECT_EQ(pauses.Await(SERVICE_PAUSED).dwCurrentState, DWORD{SERVICE_PAUSED});
}

TEST(Service, IsHandedItsNameAndTheArgumentsOfItsStart) {
  const TempFolder folder;
  const TestService service(WTEXT("arguments \"") + folder.Wide(WTEXT("told")) + WTEXT('"'));
  LPCWSTR arguments[] = {WTEXT("one \"two\""), WTEXT("Größe"), WTEXT("")};
  // Behind an empty one Wine has nothing more.
  ASSERT_TRUE(StartServiceW(service.handle, UnderWine() ? 2 : 3, arguments));
  service.Await(SERVICE_RUNNING);
  const std::string told = folder.Read("told");
  EXPECT_EQ(Wide(reinterpret_cast<const WCHAR*>(told.data()), told.size() / sizeof(WCHAR)),
            service.name + WTEXT("|one \"two\"|Größe|") + (UnderWine() ? WTEXT("") : WTEXT("|")));
}

TEST(Service, APrivateProgramIsNoService) {
  WCHAR name[] = WTEXT("any");
  const SERVICE_TABLE_ENTRYW table[] = {{name, [](DWORD, LPWSTR*) {}}, {nullptr, nullptr}};
  EXPECT_EQ(ErrorOf(StartServiceCtrlDispatcherW(table)), ERROR_FAILED_SERVICE_CONTROLLER_CONNECT);
}

TEST(Service, GoesWithItsLastHandle) {
  Wide name;
  {
    const TestService service(WTEXT("plain"));
    name = service.name;
    ScHandle second(Open(name));
    EXPECT_EQ(service.Start(), ERROR_SUCCESS);
    service.Await(SERVICE_RUNNING);
    EXPECT_TRUE(DeleteService(second));
    EXPECT_EQ(ErrorOf(DeleteService(second)), ERROR_SERVICE_MARKED_FOR_DELETE);
    EXPECT_EQ(service.Control(SERVICE_CONTROL_STOP), ERROR_SUCCESS);
    service.Await(SERVICE_STOPPED);
    if (UnderWine()) return;  // it starts it again
    EXPECT_EQ(service.Start(), ERROR_SERVICE_MARKED_FOR_DELETE);
    EXPECT_EQ(ErrorOf(Install(name, TestServiceCommand(WTEXT("plain")))),
              ERROR_SERVICE_MARKED_FOR_DELETE);
  }
  // A process that is at its end keeps it a moment longer.
  long error = ERROR_SUCCESS;
  for (int i = 0; i < 500 && error != ERROR_SERVICE_DOES_NOT_EXIST; ++i) {
    const ScHandle again(Open(name));
    error = ErrorOf(SC_HANDLE{again});
    Sleep(20);
  }
  EXPECT_EQ(error, ERROR_SERVICE_DOES_NOT_EXIST);
}

TEST(Service, WhatItNeedsIsStartedBeforeIt) {
  if (UnderWine()) GTEST_SKIP() << "knows nothing of what a service needs";
  const TestService first(WTEXT("slow"));
  const TestService second(WTEXT("plain"), (first.name + WTEXT('\0')).c_str());
  const TestService third(WTEXT("plain"), (second.name + WTEXT('\0')).c_str());
  ASSERT_EQ(third.Start(), ERROR_SUCCESS);
  EXPECT_EQ(second.Status().dwCurrentState, DWORD{SERVICE_RUNNING});
  EXPECT_EQ(first.Status().dwCurrentState, DWORD{SERVICE_RUNNING});

  third.Await(SERVICE_RUNNING);
  DWORD needed = 0;
  DWORD count = 9;
  EXPECT_EQ(
      ErrorOf(EnumDependentServicesW(first.handle, SERVICE_ACTIVE, nullptr, 0, &needed, &count)),
      ERROR_MORE_DATA);
  EXPECT_EQ(count, 0u);
  std::vector<BYTE> buffer(needed);
  auto* const services = reinterpret_cast<LPENUM_SERVICE_STATUSW>(buffer.data());
  const DWORD all = needed;
  EXPECT_EQ(ErrorOf(EnumDependentServicesW(first.handle, SERVICE_ACTIVE, services, all - 1, &needed,
                                           &count)),
            ERROR_MORE_DATA);
  EXPECT_EQ(count, 1u);
  EXPECT_LT(needed, all);
  ASSERT_TRUE(EnumDependentServicesW(first.handle, SERVICE_ACTIVE, services, all, &needed, &count));
  ASSERT_EQ(count, 2u);
  // In the order in which they can be stopped.
  EXPECT_EQ(Wide(services[0].lpServiceName), third.name);
  EXPECT_EQ(Wide(services[1].lpServiceName), second.name);
  EXPECT_EQ(services[1].ServiceStatus.dwCurrentState, DWORD{SERVICE_RUNNING});
  EXPECT_EQ(first.Control(SERVICE_CONTROL_STOP), ERROR_DEPENDENT_SERVICES_RUNNING);
  for (const TestService* service : {&third, &second, &first}) {
    EXPECT_EQ(service->Control(SERVICE_CONTROL_STOP), ERROR_SUCCESS);
    service->Await(SERVICE_STOPPED);
  }
  EXPECT_TRUE(EnumDependentServicesW(first.handle, SERVICE_ACTIVE, nullptr, 0, &needed, &count));
  EXPECT_FALSE(EnumDependentServicesW(first.handle, SERVICE_INACTIVE, nullptr, 0, &needed, &count));
}

TEST(Service, WithoutWhatItNeedsItDoesntStart) {
  if (UnderWine()) GTEST_SKIP() << "knows nothing of what a service needs";
  const TestService alone(WTEXT("plain"), WTEXT("kelp-test-missing\0"));
  EXPECT_EQ(alone.Start(), ERROR_SERVICE_DEPENDENCY_DELETED);
  const TestService dies(WTEXT("die"));
  const TestService needsIt(WTEXT("plain"), (dies.name + WTEXT('\0')).c_str());
  EXPECT_EQ(needsIt.Start(), ERROR_SERVICE_DEPENDENCY_FAIL);
  EXPECT_EQ(needsIt.Status().dwCurrentState, DWORD{SERVICE_STOPPED});
}

// The list of a service, and how it is with the rights for a name on it.
std::vector<BYTE> ListOf(SC_HANDLE service) {
  DWORD needed = 0;
  QueryServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, nullptr, 0, &needed);
  std::vector<BYTE> descriptor(needed);
  QueryServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, descriptor.data(), needed,
                             &needed);
  BOOL isPresent = FALSE;
  BOOL isDefaulted = FALSE;
  PACL list = nullptr;
  if (!GetSecurityDescriptorDacl(descriptor.data(), &isPresent, &list, &isDefaulted)) return {};
  if (list == nullptr) return {};
  const auto* const bytes = reinterpret_cast<const BYTE*>(list);
  return {bytes, bytes + list->AclSize};
}

std::vector<BYTE> WithEntry(std::vector<BYTE> old, DWORD rights, ACCESS_MODE mode) {
  EXPLICIT_ACCESS_W entry;
  WCHAR name[] = WTEXT("Everyone");
  BuildExplicitAccessWithNameW(&entry, name, rights, mode, NO_INHERITANCE);
  PACL list = nullptr;
  EXPECT_EQ(SetEntriesInAclW(1, &entry, reinterpret_cast<PACL>(old.data()), &list), 0u);
  const auto* const bytes = reinterpret_cast<const BYTE*>(list);
  const std::vector<BYTE> result(bytes, bytes + list->AclSize);
  LocalFree(list);
  return result;
}

TEST(Service, TheListOfRightsIsGivenBackAsItWasSet) {
  const TestService service(WTEXT("plain"));
  const std::vector<BYTE> first = ListOf(service.handle);
  ASSERT_FALSE(first.empty());
  std::vector<BYTE> set = WithEntry(first, 0x30030, SET_ACCESS);
  EXPECT_GT(set.size(), first.size());
  // Wine adds an entry each time, has no list of a service's own and no names.
  if (!UnderWine()) {
    EXPECT_EQ(WithEntry(set, 0x30030, SET_ACCESS), set);
    EXPECT_EQ(WithEntry(set, 0x30030, GRANT_ACCESS), set);
    EXPECT_EQ(WithEntry(set, 0, REVOKE_ACCESS), first);
  }
  SECURITY_DESCRIPTOR descriptor;
  ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
  ASSERT_TRUE(
      SetSecurityDescriptorDacl(&descriptor, TRUE, reinterpret_cast<PACL>(set.data()), FALSE));
  ASSERT_TRUE(SetServiceObjectSecurity(service.handle, DACL_SECURITY_INFORMATION, &descriptor));
  EXPECT_EQ(ErrorOf(InitializeSecurityDescriptor(&descriptor, 2)), ERROR_UNKNOWN_REVISION);
  if (UnderWine()) return;
  EXPECT_EQ(ListOf(service.handle), set);
  EXPLICIT_ACCESS_W entry;
  WCHAR nobody[] = WTEXT("kelp-nobody-has-this-name");
  BuildExplicitAccessWithNameW(&entry, nobody, 1, SET_ACCESS, NO_INHERITANCE);
  PACL list = nullptr;
  EXPECT_EQ(SetEntriesInAclW(1, &entry, nullptr, &list), DWORD{ERROR_NONE_MAPPED});
}

TEST(Service, OfSeveralProcessesOneInstallsItAndOneStartsIt) {
  const Wide name = NewServiceName();
  const Wide program = std::filesystem::absolute(TEST_SERVICE).string<WCHAR>();
  const Wide parameters = WTEXT("race ") + name;
  std::vector<HANDLE> processes;
  for (int i = 0; i < 6; ++i) {
    SHELLEXECUTEINFOW info = {};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS;
    info.lpFile = program.c_str();
    info.lpParameters = parameters.c_str();
    ASSERT_TRUE(ShellExecuteExW(&info));
    processes.push_back(info.hProcess);
  }
  DWORD installed = 0;
  DWORD started = 0;
  for (const HANDLE process : processes) {
    WaitForSingleObject(process, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    installed += code & 1;
    started += code >> 1 & 1;
  }
  EXPECT_EQ(installed, 1u);
  EXPECT_EQ(started, 1u);
  const ScHandle service(Open(name));
  ASSERT_NE(service, nullptr);
  SERVICE_STATUS status = {};
  for (int i = 0; i < 500 && !ControlService(service, SERVICE_CONTROL_STOP, &status); ++i)
    Sleep(20);
  EXPECT_TRUE(DeleteService(service));
}

}  // namespace
