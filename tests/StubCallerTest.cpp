#include "kelp0lang/StubCaller.h"

#include <gtest/gtest.h>
#include <windows.h>
// It needs the one before.
#include <shellapi.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "kelp0lang/IniFile.h"
#include "kelp0lang/LegacyFlags.h"
#include "kelp0lang/SystemQuery.h"
#include "tests/MeasureTestFolders.h"

namespace {

namespace fs = std::filesystem;

// Puts the test helper into the program's folder under a name.
void PutHelper(const char* name) {
  const fs::path folder = Folders().Path() / "program";
  fs::create_directories(folder);
  fs::copy_file(TEST_HELPER, folder / name, fs::copy_options::overwrite_existing);
}

// A listener that wants another command before its own is done: on its thread, and on another.
struct ImpatientCaller : CServiceStubCaller {
  void OnMessage(const TStubMessage& message) override {
    const auto insist = [this] {
      CServiceStubCaller other;
      if (!other.InstallService(KTEXT("0"), KTEXT(""), KTEXT(""), false)) ++refused;
    };
    insist();
    std::thread(insist).join();
    CServiceStubCaller::OnMessage(message);
  }
  int refused = 0;
};

// In one test, for the caller is one of the process, and once connected stays so.
TEST(StubCaller, TheHelperIsStartedConnectedAndHeard) {
  CIniFile().WriteShort(KTEXT("CATASTO"), KTEXT("TimeOutPdf"), 20);
  CStubAdminCaller* const stub = CStubAdminCaller::GetInstance();
  EXPECT_EQ(stub, CStubAdminCaller::GetInstance());
  CServiceStubCaller early;
#ifndef _WIN32  // which shows the user what is missing, and waits
  EXPECT_FALSE(early.InstallService(KTEXT("0"), KTEXT(""), KTEXT(""), false)) << "without a helper";
#endif
  PutHelper(IsModIta() ? "TalveraAdmin.exe" : "OstrandAdmin.exe");
  for (const WChar* const way : {KTEXT("end"), KTEXT("end"), KTEXT("sleep")}) {
    stub->SetParams(way, KTEXT(""));
    EXPECT_FALSE(early.InstallService(KTEXT("0"), KTEXT(""), KTEXT(""), false))
        << "that ends, and never connects";
  }

  stub->SetParams(KTEXT("talk"), KTEXT("pipes"));
  const struct {
    const WChar* name;
    bool installed;
  } cases[] = {{KTEXT("5"), false},      {KTEXT("0"), true},    {KTEXT("two"), true},
               {KTEXT("garbage"), true}, {KTEXT("end"), false}, {KTEXT("0"), false}};
  for (const auto& test : cases) {
    CServiceStubCaller caller;
    EXPECT_EQ(caller.InstallService(test.name, KTEXT("name"), KTEXT("path"), true), test.installed);
    if (!test.installed) continue;
    ImpatientCaller impatient;
    EXPECT_TRUE(impatient.InstallService(KTEXT("0"), KTEXT(""), KTEXT(""), true));
    EXPECT_EQ(impatient.refused, 2);
  }
}

TEST(StubCaller, OnlyAResultOfOneValueCounts) {
  CServiceStubCaller caller;
  caller.OnMessage({stubResult, {0, 0}});
  caller.OnMessage({stubInstallService, {0}});
  caller.OnMessage({stubResult, {}});
  EXPECT_FALSE(CServiceStubCaller(caller).InstallService(KTEXT("7"), KTEXT(""), KTEXT(""), false));
}

TEST(SystemQuery, ProgramsOfTheFamilyAreSeenWhileTheyRun) {
  PutHelper("talveraX.exe");
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  const auto path = Folders().Wide(KTEXT("program/talveraX.exe"));
  info.lpFile = path.c_str();
  const auto end = Folders().Wide(KTEXT("program/end"));
  fs::remove(fs::path(end));
  const auto parameters = KTEXT("until; \"") + end + KTEXT("\"");
  info.lpParameters = parameters.c_str();
  info.nShow = SW_SHOW;
  ASSERT_TRUE(ShellExecuteExW(&info));
  const int id = static_cast<int>(GetProcessId(info.hProcess));
  const auto isSeen = [id](bool office, bool field) {
    std::vector<int> ids;
    GetRunningInstances(ids, office, field);
    return std::count(ids.begin(), ids.end(), id) == 1;
  };
  // It may have been started but not begun.
  while (!isSeen(true, false) && WaitForSingleObject(info.hProcess, 10) == WAIT_TIMEOUT) continue;
  EXPECT_TRUE(isSeen(true, false));
  EXPECT_TRUE(isSeen(true, true));
  EXPECT_FALSE(isSeen(false, true));
  Folders().Write("program/end", "");
  WaitForSingleObject(info.hProcess, INFINITE);
  EXPECT_FALSE(isSeen(true, false));
  CloseHandle(info.hProcess);
}

}  // namespace
