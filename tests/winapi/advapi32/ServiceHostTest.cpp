// Services between users, files that aren't whole, and services that lose their supervisor.
#include <aclapi.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>
#include <winsvc.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/TestService.h"
#include "winapi_host.h"

namespace {

constexpr uid_t kNobody = 65534;

struct ProcessInfo {
  char state = 'X';  // that of one that is gone; 'Z' has ended
  pid_t parent = 0;
};

ProcessInfo InfoOf(DWORD process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text{std::istreambuf_iterator<char>(file), {}};
  ProcessInfo info;
  // "number (name) state parent ..."; the name may hold anything.
  if (!text.empty())
    std::istringstream(text.substr(text.rfind(')') + 1)) >> info.state >> info.parent;
  return info;
}
pid_t SupervisorOf(DWORD process) {
  return InfoOf(process).parent;
}

// It has little more to do than to see its service's end.
bool ComesToEnd(pid_t process) {
  for (int i = 0; i < 3'000; ++i) {
    const char state = InfoOf(static_cast<DWORD>(process)).state;
    if (state == 'X' || state == 'Z') return true;
    usleep(10'000);
  }
  return false;
}

std::size_t CountOf(const char* folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

class ServiceHost : public testing::Test {
 protected:
  ServiceHost() { WinapiSetServiceFolder(m_folder.Wide().c_str()); }
  ~ServiceHost() override {
    const std::string shared = getenv("KELP_TEST_SERVICES");
    WinapiSetServiceFolder(Widen(shared).c_str());
  }
  // What a child process of another user gives back.
  template <class Work>
  static int AsNobody(Work work) {
    const pid_t child = fork();
    if (child == 0) {
      const bool changed = setgid(kNobody) == 0 && setuid(kNobody) == 0;
      _exit(changed ? static_cast<int>(work() % 251) : 255);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
  }
  static long OpenFor(const Wide& name, DWORD access) {
    const ScHandle handle(OpenServiceW(Manager(), name.c_str(), access));
    return ErrorOf(SC_HANDLE{handle});
  }

  TempFolder m_folder;
};

TEST_F(ServiceHost, WithoutItsSupervisorItStops) {
  const TestService service(WTEXT("lingers"));
  ASSERT_EQ(service.Start(), ERROR_SUCCESS);
  const DWORD process = service.Await(SERVICE_RUNNING).dwProcessId;
  ASSERT_EQ(kill(SupervisorOf(process), SIGKILL), 0);
  EXPECT_EQ(service.Await(SERVICE_STOP_PENDING).dwCurrentState, DWORD{SERVICE_STOP_PENDING});
  EXPECT_EQ(service.Control(SERVICE_CONTROL_STOP), ERROR_SERVICE_CANNOT_ACCEPT_CTRL);
  EXPECT_EQ(service.Start(), ERROR_SERVICE_ALREADY_RUNNING);
  EXPECT_EQ(service.Await(SERVICE_STOPPED).dwWin32ExitCode, DWORD{ERROR_PROCESS_ABORTED});
  EXPECT_TRUE(ComesToEnd(static_cast<pid_t>(process)));
  EXPECT_EQ(service.Start(), ERROR_SUCCESS);
}

TEST_F(ServiceHost, NothingIsLeftOfServicesThatWere) {
  std::size_t before = 0;
  for (int round = 0; round < 12; ++round) {
    if (round == 1) before = CountOf("/proc/self/fd");
    const TestService service(WTEXT("plain"));
    EXPECT_EQ(service.Start(), ERROR_SUCCESS);
    const pid_t supervisor = SupervisorOf(service.Await(SERVICE_RUNNING).dwProcessId);
    EXPECT_NE(InfoOf(static_cast<DWORD>(supervisor)).state, 'X');
    EXPECT_EQ(service.Control(SERVICE_CONTROL_STOP), ERROR_SUCCESS);
    service.Await(SERVICE_STOPPED);
    EXPECT_TRUE(ComesToEnd(supervisor));
  }
  EXPECT_EQ(CountOf("/proc/self/fd"), before);
  EXPECT_EQ(CountOf(m_folder.Path().c_str()), 0u);
}

TEST_F(ServiceHost, TheListDecidesAboutOtherUsers) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be another user";
  const TestService service(WTEXT("plain"));
  const Wide name = service.name;
  constexpr DWORD kUse = SERVICE_START | SERVICE_STOP;
  EXPECT_EQ(AsNobody([&] { return OpenFor(name, SERVICE_QUERY_STATUS); }), 0);
  EXPECT_EQ(AsNobody([&] { return OpenFor(name, kUse); }), ERROR_ACCESS_DENIED);
  const auto setEveryone = [&](DWORD rights) {
    EXPLICIT_ACCESS_W entry;
    WCHAR everyone[] = u"Everyone";
    BuildExplicitAccessWithNameW(&entry, everyone, rights, SET_ACCESS, NO_INHERITANCE);
    PACL list = nullptr;
    ASSERT_EQ(SetEntriesInAclW(1, &entry, nullptr, &list), DWORD{ERROR_SUCCESS});
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE);
    EXPECT_TRUE(SetServiceObjectSecurity(service.handle, DACL_SECURITY_INFORMATION, &descriptor));
    LocalFree(list);
  };
  setEveryone(kUse | SERVICE_QUERY_STATUS | DELETE);
  EXPECT_EQ(AsNobody([&] { return OpenFor(name, kUse | WRITE_DAC); }), ERROR_ACCESS_DENIED);
  EXPECT_EQ(AsNobody([&] {
              const ScHandle handle(OpenServiceW(Manager(), name.c_str(), kUse | DELETE));
              if (DeleteService(handle)) return 200L;
              return ErrorOf(StartServiceW(handle, 0, nullptr));
            }),
            0);
  // It runs as who has started it.
  const DWORD process = service.Await(SERVICE_RUNNING).dwProcessId;
  struct stat status;
  ASSERT_EQ(stat(("/proc/" + std::to_string(process)).c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, kNobody);
  // The supervisor looks at the list of the moment, not at that of the handle.
  const ScHandle kept(OpenServiceW(Manager(), name.c_str(), SERVICE_STOP));
  setEveryone(SERVICE_QUERY_STATUS);
  EXPECT_EQ(AsNobody([&] {
              SERVICE_STATUS answer;
              return ErrorOf(ControlService(kept, SERVICE_CONTROL_STOP, &answer));
            }),
            ERROR_ACCESS_DENIED);
  setEveryone(SERVICE_STOP);
  EXPECT_EQ(AsNobody([&] {
              const ScHandle handle(OpenServiceW(Manager(), name.c_str(), SERVICE_STOP));
              SERVICE_STATUS answer;
              return ErrorOf(ControlService(handle, SERVICE_CONTROL_STOP, &answer));
            }),
            0);
}

TEST_F(ServiceHost, FilesThatArentWholeAreTold) {
  const std::string whole =
      "winapi service 1\nname=x\ndisplay=x\nprogram=/bin/true\nstart=3\nerror=1\naccess=\n";
  const struct {
    std::string terms;
    long error;
  } cases[] = {{"", ERROR_BADDB},
               {"winapi service 2\nname=x\n", ERROR_BADDB},
               {whole.substr(0, whole.size() - 1), ERROR_BADDB},
               {whole + "other=1\n", ERROR_BADDB},
               {whole + "start=x\n", ERROR_BADDB},
               {whole + "access=0200ffff00000000\n", ERROR_BADDB},
               {whole, ERROR_SUCCESS}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.terms);
    m_folder.Write("X.service", test.terms);
    EXPECT_EQ(OpenFor(u"x", SERVICE_QUERY_STATUS), test.error);
  }
  for (const std::string& state : {std::string(), std::string(61, 'x'), std::string("wstate01")}) {
    m_folder.Write("X.state", state);
    const ScHandle service(OpenServiceW(Manager(), u"X", SERVICE_ALL_ACCESS));
    SERVICE_STATUS status = {};
    EXPECT_TRUE(QueryServiceStatus(service, &status));
    EXPECT_EQ(status.dwCurrentState, DWORD{SERVICE_STOPPED});
    EXPECT_EQ(status.dwWin32ExitCode, DWORD{ERROR_SERVICE_NEVER_STARTED});
  }
}

}  // namespace
