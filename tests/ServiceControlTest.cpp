#include "kelp0lang/ServiceControl.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/TestService.h"
#include "tests/winapi/UnderWine.h"

namespace {

using kelp::WString;

// What a function gave, and what it printed.
struct Outcome {
  bool result;
  std::string text;
  friend bool operator==(const Outcome&, const Outcome&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << outcome.result << " \"" << outcome.text << '"';
  }
};

template <class Work>
Outcome Heard(Work work) {
  testing::internal::CaptureStdout();
  const bool result = work();
  std::fflush(stdout);
  std::string text = testing::internal::GetCapturedStdout();
  std::erase(text, '\r');
  return {result, text};
}
Outcome Start(const Wide& name) {
  return Heard([&] { return StartTalvService(WString(name.c_str())); });
}
Outcome Stop(const Wide& name) {
  return Heard([&] { return StopTalvService(WString(name.c_str())); });
}

constexpr const char* kStarted = "Service start pending...\nService started successfully.\n";
constexpr const char* kStopped = "Service stopped successfully\n";

TEST(ServiceControl, OneThatIsntThereIsTold) {
  const Wide name = NewServiceName();
  EXPECT_FALSE(IsTalvServiceInstalled(name.c_str()));
  EXPECT_EQ(Start(name), (Outcome{false, "OpenService failed (1060)\n"}));
  EXPECT_EQ(Stop(name), (Outcome{false, "OpenService failed (1060)\n"}));
}

TEST(ServiceControl, AnInstalledOneIsStartedAndStopped) {
  const Wide name = NewServiceName();
  const WString command(TestServiceCommand(WTEXT("plain")).c_str());
  const auto install = [&] {
    return InstallTalvService(name.c_str(), (name + WTEXT(" shown")).c_str(), command, true);
  };
  EXPECT_EQ(Heard(install), (Outcome{true, "Service DACL updated successfully\n"}));
  EXPECT_EQ(Heard(install), (Outcome{false, ""}));
  EXPECT_TRUE(IsTalvServiceInstalled(name.c_str()));
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(Stop(name), (Outcome{true, "Service is already stopped.\n"}));
    EXPECT_EQ(Start(name), (Outcome{true, kStarted}));
    EXPECT_EQ(Start(name),
              (Outcome{true, "Cannot start the service because it is already running\n"}));
    EXPECT_EQ(Stop(name), (Outcome{true, kStopped}));
  }
  const ScHandle service(OpenServiceW(Manager(), name.c_str(), DELETE));
  EXPECT_TRUE(DeleteService(service));
}

TEST(ServiceControl, AStartThatFailsIsTold) {
  const TestService dies(WTEXT("die"));
  EXPECT_EQ(Start(dies.name), (Outcome{false, "StartService failed (1053)\n"}));
  // Wine waits for the outcome itself, and tells no more of it.
  if (UnderWine()) return;
  const TestService fails(WTEXT("fail"));
  EXPECT_EQ(Start(fails.name),
            (Outcome{true,
                     "Service start pending...\nService not started. \n  Current State: 1\n"
                     "  Exit Code: 1066\n  Check Point: 0\n  Wait Hint: 0\n"}));
  const TempFolder folder;
  const TestService hangs(WTEXT("pending \"") + folder.Wide(WTEXT("end")) + WTEXT('"'));
  EXPECT_EQ(Start(hangs.name),
            (Outcome{true,
                     "Service start pending...\nService not started. \n  Current State: 2\n"
                     "  Exit Code: 0\n  Check Point: 0\n  Wait Hint: 1000\n"}));
  EXPECT_EQ(Stop(hangs.name), (Outcome{true, "ControlService failed (1061)\n"}));
  folder.Write("end", "");
}

TEST(ServiceControl, ASlowStartIsWaitedForFromCheckPointToCheckPoint) {
  const TestService slow(WTEXT("slow"));
  EXPECT_EQ(Start(slow.name), (Outcome{true, kStarted}));
}

TEST(ServiceControl, OneThatIsStoppingIsWaitedFor) {
  const TestService lingers(WTEXT("lingers"));
  EXPECT_EQ(Start(lingers.name), (Outcome{true, kStarted}));
  EXPECT_EQ(lingers.Control(SERVICE_CONTROL_STOP), ERROR_SUCCESS);
  EXPECT_EQ(Start(lingers.name), (Outcome{true, kStarted}));
  EXPECT_EQ(lingers.Control(SERVICE_CONTROL_STOP), ERROR_SUCCESS);
  const Outcome stopped = Stop(lingers.name);
  EXPECT_TRUE(stopped.result);
  EXPECT_TRUE(stopped.text.starts_with("Service stop pending...\n")) << stopped;
  EXPECT_TRUE(stopped.text.ends_with("...\nService stopped successfully.\n")) << stopped;
}

TEST(ServiceControl, OneThatIgnoresItsStopIsGivenUpOn) {
  const TestService deaf(WTEXT("deaf"));
  EXPECT_EQ(Start(deaf.name), (Outcome{true, kStarted}));
  EXPECT_EQ(Stop(deaf.name), (Outcome{true, "Wait timed out\n"}));
  EXPECT_EQ(deaf.Status().dwCurrentState, DWORD{SERVICE_RUNNING});
}

// Wine doesn't know who depends on a service.
TEST(ServiceControl, ThoseThatDependOnItAreStoppedBefore) {
  if (UnderWine()) GTEST_SKIP();
  const TestService first(WTEXT("plain"));
  const TestService second(WTEXT("plain"), (first.name + WTEXT('\0')).c_str());
  const TestService third(WTEXT("plain"), (second.name + WTEXT('\0')).c_str());
  EXPECT_EQ(Start(third.name), (Outcome{true, kStarted}));
  EXPECT_EQ(Stop(first.name), (Outcome{true, kStopped}));
  for (const TestService* service : {&first, &second, &third}) {
    EXPECT_EQ(service->Status().dwCurrentState, DWORD{SERVICE_STOPPED});
  }
  const TestService deaf(WTEXT("deaf"), (first.name + WTEXT('\0')).c_str());
  EXPECT_EQ(Start(deaf.name), (Outcome{true, kStarted}));
  EXPECT_EQ(Stop(first.name), (Outcome{true, "ControlService failed (1051)\n"}));
}

}  // namespace
