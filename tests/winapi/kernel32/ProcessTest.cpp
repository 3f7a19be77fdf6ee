#include <gtest/gtest.h>
#include <windows.h>
// It needs the one before.
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr DWORD kAsks = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;

Wide BaseName(HANDLE process, HMODULE module, DWORD size = MAX_PATH) {
  std::vector<WCHAR> name(size);
  const DWORD length = GetModuleBaseNameW(process, module, name.data(), size);
  return Wide(name.data(), length);
}

TEST(Process, TheListHasThisOne) {
  std::vector<DWORD> ids(65536);
  DWORD used = 0;
  ASSERT_TRUE(EnumProcesses(ids.data(), static_cast<DWORD>(ids.size() * sizeof(DWORD)), &used));
  ids.resize(used / sizeof(DWORD));
  EXPECT_EQ(std::count(ids.begin(), ids.end(), GetCurrentProcessId()), 1);
  EXPECT_GE(ids.size(), 2u);
  ASSERT_TRUE(EnumProcesses(ids.data(), sizeof(DWORD), &used));
  EXPECT_EQ(used, sizeof(DWORD));
}

TEST(Process, AnOpenOneTellsItsProgramAndItsModules) {
  const HANDLE process = OpenProcess(kAsks, FALSE, GetCurrentProcessId());
  ASSERT_NE(process, nullptr);
  EXPECT_EQ(GetProcessId(process), GetCurrentProcessId());
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeProcess(process, &code));
  EXPECT_EQ(code, STILL_ACTIVE);

  std::vector<HMODULE> modules(1000);
  DWORD used = 0;
  const auto size = static_cast<DWORD>(modules.size() * sizeof(HMODULE));
  ASSERT_TRUE(EnumProcessModules(process, modules.data(), size, &used));
  modules.resize(used / sizeof(HMODULE));
  EXPECT_EQ(modules.front(), GetModuleHandleW(nullptr));
  EXPECT_GE(modules.size(), 2u);
  HMODULE first = nullptr;
  ASSERT_TRUE(EnumProcessModules(process, &first, sizeof first, &used));
  EXPECT_EQ(first, modules.front());

  WCHAR path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const Wide whole = path;
  const Wide name = whole.substr(whole.find_last_of(WTEXT("\\/")) + 1);
  EXPECT_EQ(BaseName(process, first), name);
  EXPECT_EQ(BaseName(process, nullptr), name);
  EXPECT_EQ(BaseName(process, nullptr, 5).substr(0, 4), name.substr(0, 4));
  EXPECT_NE(BaseName(process, modules.back()), name);
  EXPECT_TRUE(CloseHandle(process));
  EXPECT_EQ(ErrorOf(GetExitCodeProcess(process, &code), FALSE), ERROR_INVALID_HANDLE);
}

TEST(Process, ASnapshotTellsProgramsAndParents) {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  ASSERT_NE(snapshot, INVALID_HANDLE_VALUE);
  PROCESSENTRY32W entry = {};
  EXPECT_FALSE(Process32FirstW(snapshot, &entry)) << "of no size";
  entry.dwSize = sizeof entry;
  std::vector<DWORD> ids;
  DWORD parent = 0;
  Wide name;
  for (BOOL there = Process32FirstW(snapshot, &entry); there;
       there = Process32NextW(snapshot, &entry)) {
    ids.push_back(entry.th32ProcessID);
    if (entry.th32ProcessID != GetCurrentProcessId()) continue;
    parent = entry.th32ParentProcessID;
    name = entry.szExeFile;
    EXPECT_GE(entry.cntThreads, 1u);
  }
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
  EXPECT_EQ(std::count(ids.begin(), ids.end(), GetCurrentProcessId()), 1);
  // It may have ended under Wine, whose starter isn't one of its processes.
  if (!UnderWine()) {
    EXPECT_EQ(std::count(ids.begin(), ids.end(), parent), 1);
  }
  EXPECT_EQ(name.rfind(WTEXT("winapi_test"), 0), 0u);
  const DWORD first = ids.front();
  EXPECT_TRUE(Process32FirstW(snapshot, &entry));
  EXPECT_EQ(entry.th32ProcessID, first);
  EXPECT_TRUE(CloseHandle(snapshot));
  EXPECT_EQ(ErrorOf(Process32NextW(snapshot, &entry), FALSE), ERROR_INVALID_HANDLE);
}

TEST(Process, WhatIsNoneCannotBeOpened) {
  EXPECT_EQ(ErrorOf(OpenProcess(kAsks, FALSE, 0)), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(ErrorOf(OpenProcess(kAsks, FALSE, 0x7FFFFFF0)), ERROR_INVALID_PARAMETER);
}

}  // namespace
