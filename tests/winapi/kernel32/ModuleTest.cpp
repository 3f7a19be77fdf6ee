// The program and the libraries in the process.
#include <gtest/gtest.h>
#include <tchar.h>
#include <windows.h>

#include <cwchar>
#include <string>

#include "tests/winapi/ErrorOf.h"
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
    EXPECT_EQ(ErrorOf(GetModuleFileNameW(nullptr, buffer.data(), size), size),
              ERROR_INSUFFICIENT_BUFFER);
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

  WCHAR text[8];
  EXPECT_EQ(ErrorOf(GetModuleHandleW(WTEXT("no_such_module.dll"))), ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(ErrorOf(GetModuleFileNameW(reinterpret_cast<HMODULE>(0x10000), text, 8)),
            ERROR_MOD_NOT_FOUND);
}

TEST(Module, IsFoundByAnAddressWithinItAndCounted) {
  static int here;
  const HMODULE program = GetModuleHandleW(nullptr);
  const auto address = reinterpret_cast<LPCWSTR>(&here);
  constexpr DWORD kPin = GET_MODULE_HANDLE_EX_FLAG_PIN, kFromAddress = 4, kUnchanged = 2;
  const struct {
    DWORD flags;
    LPCWSTR name;
    long error;
  } cases[] = {
      {kUnchanged, nullptr, 0},
      {kFromAddress | kUnchanged, address, 0},
      {kFromAddress | kPin, address, 0},
      {kFromAddress, address, 0},
      {kFromAddress, reinterpret_cast<LPCWSTR>(0x10000), ERROR_MOD_NOT_FOUND},
      {kUnchanged, WTEXT("no_such_module.dll"), ERROR_MOD_NOT_FOUND},
      {kPin | kUnchanged, nullptr, ERROR_INVALID_PARAMETER},
      {8, nullptr, ERROR_INVALID_PARAMETER},
  };
  for (const auto& c : cases) {
    HMODULE module = program;
    EXPECT_EQ(ErrorOf(GetModuleHandleExW(c.flags, c.name, &module)), c.error) << c.flags;
    EXPECT_EQ(module, c.error == 0 ? program : nullptr) << c.flags;
  }
  EXPECT_EQ(ErrorOf(GetModuleHandleExW(kUnchanged, nullptr, nullptr)), ERROR_INVALID_PARAMETER);
  EXPECT_TRUE(FreeLibrary(program));
  EXPECT_EQ(ErrorOf(FreeLibrary(reinterpret_cast<HMODULE>(0x10000))), ERROR_MOD_NOT_FOUND);
}

TEST(Module, AFunctionIsFoundInTheModuleThatHasIt) {
  for (const LPCWSTR name : {WTEXT("User32.DLL"), WTEXT("user32")}) {
    const HMODULE user = LoadLibraryW(name);
    ASSERT_NE(user, nullptr);
    EXPECT_EQ(GetModuleHandleW(WTEXT("USER32")), user);
    const auto isMenu = reinterpret_cast<void*>(GetProcAddress(user, "IsMenu"));
    ASSERT_NE(isMenu, nullptr);
    EXPECT_FALSE(reinterpret_cast<decltype(&IsMenu)>(isMenu)(nullptr));
    EXPECT_EQ(ErrorOf(GetProcAddress(user, "malloc")), ERROR_PROC_NOT_FOUND) << "another's";
    EXPECT_EQ(ErrorOf(GetProcAddress(user, "NoSuchCall")), ERROR_PROC_NOT_FOUND);
    EXPECT_TRUE(FreeLibrary(user));
  }
  EXPECT_EQ(ErrorOf(GetProcAddress(reinterpret_cast<HMODULE>(0x10000), "IsMenu")),
            ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(ErrorOf(LoadLibraryW(WTEXT("no_such_module.dll"))), ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(ErrorOf(LoadLibraryW(WTEXT("C:\\no folder\\no module.dll"))), ERROR_MOD_NOT_FOUND);
}

}  // namespace
