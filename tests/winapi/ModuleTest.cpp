// The program and the libraries in the process.
#include <gtest/gtest.h>
#include <tchar.h>
#include <windows.h>

#include <cwchar>
#include <string>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

Wide PathOf(HMODULE module) {
  WCHAR path[1024];
  const DWORD length = GetModuleFileNameW(module, path, 1024);
  EXPECT_EQ(wcslen(path), length);
  return path;
}

TEST(Module, TheProgramHasAPath) {
  const Wide path = PathOf(nullptr);
  ASSERT_GT(path.size(), 3u);
  EXPECT_EQ(path.substr(1, 2), WTEXT(":\\"));
  EXPECT_NE(path.find(WTEXT("\\winapi_test")), Wide::npos);
  EXPECT_NE(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(PathOf(GetModuleHandleW(nullptr)), path);
}

TEST(Module, APathThatDoesNotFitIsCutAndTerminated) {
  const Wide path = PathOf(nullptr);
  Wide buffer(path.size() + 2, WTEXT('?'));
  for (DWORD size = 1; size <= path.size(); ++size) {
    SetLastError(0);
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), size), size);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    // Wine fills all of the buffer and writes no terminator.
    if (UnderWine()) buffer[size - 1] = 0;
    EXPECT_EQ(buffer.c_str(), path.substr(0, size - 1));
    EXPECT_EQ(buffer[size], WTEXT('?'));
  }
  const DWORD length = static_cast<DWORD>(path.size());
  EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), length + 1), length);
  EXPECT_EQ(buffer.c_str(), path);
}

TEST(Module, IsFoundByNameWithoutRegardToCase) {
  const HMODULE program = GetModuleHandleW(nullptr);
  ASSERT_NE(program, nullptr);
  const Wide path = PathOf(nullptr);
  Wide name = path.substr(path.rfind(WTEXT('\\')) + 1);
  EXPECT_EQ(GetModuleHandleW(path.c_str()), program);
  EXPECT_EQ(GetModuleHandleW(name.c_str()), program);
  EXPECT_EQ(GetModuleHandleW(_wcsupr(name.data())), program);
}

TEST(Module, WhatIsNotLoadedIsNotFound) {
  EXPECT_EQ(GetModuleHandleW(WTEXT("no_such_module.dll")), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
  SetLastError(0);
  WCHAR path[8];
  EXPECT_EQ(GetModuleFileNameW(reinterpret_cast<HMODULE>(0x10000), path, 8), 0u);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
}

}  // namespace
