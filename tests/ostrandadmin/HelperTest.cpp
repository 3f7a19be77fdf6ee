// The family's helper as programs start it, from beside this program.
#include <gtest/gtest.h>
#include <windows.h>
// It needs the one before.
#include <shellapi.h>
#include <winsvc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kelp0lang/IniFile.h"
#include "kelp0lang/PipeManager.h"
#include "kelp0lang/Singleton.h"
#include "kelp0lang/SpecialFolder.h"
#include "kelp0lang/String.h"
#include "kelp0lang/StubCaller.h"
#include "kelp0lang/SystemQuery.h"
#include "tests/TempFolder.h"

using kelp::CPolyValue;

namespace {

namespace fs = std::filesystem;
using Wide = std::basic_string<WChar>;

// As Windows writes it.
Wide ProgramFolder() {
  WChar path[4096];
  const Wide program(path, GetModuleFileNameW(nullptr, path, 4096));
  return program.substr(0, program.rfind('\\'));
}

// Gives the exit status.
DWORD StatusOf(const Wide& program, const Wide& parameters = {}) {
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  info.lpFile = program.c_str();
  info.lpParameters = parameters.c_str();
  DWORD status = 97;
  if (!ShellExecuteExW(&info)) return 96;
  WaitForSingleObject(info.hProcess, INFINITE);
  GetExitCodeProcess(info.hProcess, &status);
  CloseHandle(info.hProcess);
  return status;
}

Wide HelperPath() {
  return kelp::GetProgramFolderPath(KTEXT("OstrandAdmin.exe")).c_str();
}

// The result of a command.
class Recorder final : public IStubAdminListener {
 public:
  int Execute(int command, std::vector<CPolyValue> values) {
    m_result = -1;
    CStubAdminCaller* const caller = CStubAdminCaller::GetInstance();
    EXPECT_TRUE(caller->ExecuteCommand(this, {enumStubCommand{command}, std::move(values)}));
    return m_result;
  }
  void OnMessage(const TStubMessage& message) override {
    if (message.command == stubResult && message.values.size() == 1) {
      m_result = message.values[0].GetInt32Value();
    }
    CStubAdminCaller::GetInstance()->StopRead();
  }
  void SendResponse(const TStubMessage&) override {}

 private:
  std::atomic<int> m_result = -1;
};

std::set<int> Helpers() {
  std::vector<int> ids;
  GetRunningInstances(ids, true, false);
  return {ids.begin(), ids.end()};
}

// How many of these are there yet; others may have helpers of their own.
std::ptrdiff_t StillThere(const std::set<int>& helpers) {
  const std::set<int> now = Helpers();
  return std::count_if(helpers.begin(), helpers.end(), [&](int id) { return now.contains(id); });
}

// False where there is none.
bool Uninstall(const WChar* name) {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  const SC_HANDLE service = OpenServiceW(manager, name, DELETE);
  const bool deleted = DeleteService(service);
  CloseServiceHandle(service);
  CloseServiceHandle(manager);
  return deleted;
}

TEST(OstrandAdmin, ItServesNobodyButItsParent) {
  EXPECT_EQ(StatusOf(HelperPath()), 1u) << "there are no pipes";
  CPipeManager_Talv pipes;
  const Wide between = fs::path(TEST_HELPER).string<WChar>();
  EXPECT_EQ(StatusOf(between, KTEXT("launch; \"") + HelperPath() + KTEXT("\"")), 2u);
}

// In one test, for the caller is one of the process.
TEST(OstrandAdmin, EveryCommandHasOneResult) {
  CIniFile().WriteShort(KTEXT("CATASTO"), KTEXT("TimeOutPdf"), 20);
  const std::set<int> before = Helpers();
  Recorder recorder;
  const struct {
    int command;
    std::vector<CPolyValue> values;
    int result;
  } cases[] = {
      {0, {}, ERROR_INVALID_FUNCTION},
      {7, {KTEXT("text"), 3, 1.5}, ERROR_INVALID_FUNCTION},
      {-2147483647, {true}, ERROR_INVALID_FUNCTION},
      {stubResult, {0}, ERROR_INVALID_FUNCTION},
      {stubInstallService, {}, ERROR_INVALID_DATA},
      {stubInstallService, {KTEXT("a"), KTEXT("b"), KTEXT("c")}, ERROR_INVALID_DATA},
      {stubInstallService, {KTEXT("a"), KTEXT("b"), KTEXT("c"), 1}, ERROR_INVALID_DATA},
      {stubInstallService, {KTEXT(""), KTEXT("b"), KTEXT("c"), true}, ERROR_INVALID_DATA},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(recorder.Execute(c.command, c.values), c.result) << c.command;
  }
  // No run before has left one of this name.
  std::random_device random;
  const auto name = KTEXT("kelp-test-") + kelp::WString::ValueOf(random());
  const std::vector<CPolyValue> values = {name, name, HelperPath().c_str(), true};
  for (const DWORD result : {ERROR_SUCCESS, ERROR_SERVICE_EXISTS}) {
    EXPECT_EQ(recorder.Execute(stubInstallService, values), static_cast<int>(result));
  }
  EXPECT_TRUE(Uninstall(name.c_str()));
  std::set<int> begun = Helpers();
  std::erase_if(begun, [&](int id) { return before.contains(id); });
  const auto count = static_cast<std::ptrdiff_t>(begun.size());
  EXPECT_GE(count, 1);
  kelp::CSingletonManager::DeleteSingletons();
  for (int i = 0; i < 1000 && StillThere(begun) == count; ++i) Sleep(10);
  EXPECT_LT(StillThere(begun), count) << "it ends with the pipes";
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const TempFolder folder;
  fs::create_directories(folder.Path() / "data" / "Support");
  kelp::FInitializeSpecialFolder(ProgramFolder().c_str(), -1, folder.Wide(KTEXT("data")).c_str(),
                                 folder.Wide().c_str());
  return RUN_ALL_TESTS();
}
