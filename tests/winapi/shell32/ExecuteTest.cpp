// Programs that are started: this very one, with other arguments.
#include <gtest/gtest.h>
#include <windows.h>
// It needs the one before.
#include <shellapi.h>

#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/WideText.h"

namespace {

// Starts a program, with the last error of a failure.
struct Started {
  Started(const Wide& file, const Wide& parameters, ULONG mask = SEE_MASK_NOCLOSEPROCESS) {
    info.cbSize = sizeof info;
    info.fMask = mask | SEE_MASK_FLAG_NO_UI;
    info.lpFile = file.c_str();
    info.lpParameters = parameters.c_str();
    info.nShow = SW_SHOW;
    error = ErrorOf(ShellExecuteExW(&info), FALSE);
  }
  ~Started() {
    if (info.hProcess != nullptr) CloseHandle(info.hProcess);
  }
  SHELLEXECUTEINFOW info = {};
  long error;
};

Wide OwnProgram() {
  WCHAR path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  return path;
}

// Its exit code is 1 where a test has failed.
TEST(Execute, AStartedProgramIsWaitedForAndTellsItsExitCode) {
  const struct {
    Wide parameters;
    DWORD exitCode;
  } cases[] = {
      {WTEXT("--gtest_list_tests"), 0},
      {WTEXT("--gtest_filter=Execute.DISABLED_Fails --gtest_also_run_disabled_tests"), 1},
      // One argument, which names no test.
      {WTEXT("\"--gtest_filter=Execute.DISABLED_Fails --gtest_also_run_disabled_tests\""), 0},
      {WTEXT("--gtest_\"filter=Execute.DISABLED\"_Fails\t --gtest_also_run_disabled_tests"), 1},
  };
  for (const auto& test : cases) {
    const Started started(OwnProgram(), test.parameters);
    ASSERT_EQ(started.error, ERROR_SUCCESS);
    ASSERT_NE(started.info.hProcess, nullptr);
    EXPECT_GT(reinterpret_cast<std::uintptr_t>(started.info.hInstApp), 32u);
    EXPECT_NE(GetProcessId(started.info.hProcess), 0u);
    EXPECT_EQ(WaitForSingleObject(started.info.hProcess, 60'000), WAIT_OBJECT_0);
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeProcess(started.info.hProcess, &code));
    EXPECT_EQ(code, test.exitCode) << std::string(test.parameters.begin(), test.parameters.end());
  }
}

TEST(Execute, DISABLED_Fails) {
  FAIL() << "as it is asked to";
}

TEST(Execute, WhatIsNoProgramFails) {
  const TempFolder folder;
  const Started missing(folder.Wide(WTEXT("missing.exe")), WTEXT(""));
  EXPECT_EQ(missing.error, ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(missing.info.hProcess, nullptr);
  EXPECT_LE(reinterpret_cast<std::uintptr_t>(missing.info.hInstApp), 32u);
}

TEST(Execute, WithoutTheMaskThereIsNoHandle) {
  const Started started(OwnProgram(), WTEXT("--gtest_list_tests"), 0);
  EXPECT_EQ(started.error, ERROR_SUCCESS);
  EXPECT_EQ(started.info.hProcess, nullptr);
}

}  // namespace
