// Handles of files, and who may do what with one.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

namespace fs = std::filesystem;

constexpr DWORD kWrite = static_cast<DWORD>(GENERIC_WRITE);

HANDLE Open(const TempFolder& folder, const WCHAR* name, DWORD access, DWORD disposition,
            DWORD flags = FILE_ATTRIBUTE_NORMAL) {
  return CreateFileW(folder.Wide(name).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                     disposition, flags, nullptr);
}

TEST(FileHandle, DispositionsMakeEmptyAndRefuse) {
  struct Case {
    const WCHAR* name;
    DWORD disposition;
    long error;
    std::uintmax_t sizeBehind;
  };
  constexpr std::uintmax_t kNone = 99;
  const Case cases[] = {
      {WTEXT("there"), CREATE_NEW, ERROR_FILE_EXISTS, 3},
      {WTEXT("none"), CREATE_NEW, ERROR_SUCCESS, 0},
      {WTEXT("there"), CREATE_ALWAYS, ERROR_SUCCESS, 0},
      {WTEXT("there"), OPEN_EXISTING, ERROR_SUCCESS, 3},
      {WTEXT("none"), OPEN_EXISTING, ERROR_FILE_NOT_FOUND, kNone},
      {WTEXT("no/ne"), OPEN_ALWAYS, ERROR_PATH_NOT_FOUND, kNone},
      {WTEXT("none"), OPEN_ALWAYS, ERROR_SUCCESS, 0},
      {WTEXT("there"), OPEN_ALWAYS, ERROR_SUCCESS, 3},
      {WTEXT("none"), CREATE_ALWAYS, ERROR_SUCCESS, 0},
      {WTEXT("there"), TRUNCATE_EXISTING, ERROR_SUCCESS, 0},
      {WTEXT("none"), TRUNCATE_EXISTING, ERROR_FILE_NOT_FOUND, kNone},
      {WTEXT("there"), 9, ERROR_INVALID_PARAMETER, 3},
      {WTEXT("folder"), OPEN_EXISTING, ERROR_ACCESS_DENIED, kNone},
      {WTEXT("locked"), OPEN_EXISTING, ERROR_ACCESS_DENIED, 3},
      {WTEXT("locked"), CREATE_ALWAYS, ERROR_ACCESS_DENIED, 3},
  };
  for (const Case& each : cases) {
    // Wine run by the user who may do everything writes to it all the same.
    if (UnderWine() && each.name[0] == 'l') continue;
    const TempFolder folder;
    folder.Write("there", "old");
    folder.Write("locked", "old");
    fs::create_directory(folder.Path() / "folder");
    fs::permissions(folder.Path() / "locked", fs::perms::owner_read);
    SetLastError(ERROR_INVALID_HANDLE);
    const HANDLE file = Open(folder, each.name, kWrite, each.disposition);
    const DWORD left = GetLastError();
    EXPECT_EQ(ErrorOf(file, INVALID_HANDLE_VALUE), each.error)
        << each.disposition << Wide(each.name).size();
    const bool tells = each.disposition == CREATE_ALWAYS || each.disposition == OPEN_ALWAYS;
    if (file != INVALID_HANDLE_VALUE && tells) {
      EXPECT_EQ(left, each.name[0] == 't' ? DWORD{ERROR_ALREADY_EXISTS} : DWORD{ERROR_SUCCESS});
    }
    if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
    const fs::path path = folder.Path() / Wide(each.name);
    if (each.sizeBehind != kNone) {
      EXPECT_EQ(fs::file_size(path), each.sizeBehind);
    }
    fs::permissions(folder.Path() / "locked", fs::perms::owner_all);
  }
}

TEST(FileHandle, OnlyAWritingHandleFlushes) {
  const TempFolder folder;
  folder.Write("file", "text");
  const HANDLE writer = Open(folder, WTEXT("file"), kWrite, OPEN_EXISTING);
  EXPECT_TRUE(FlushFileBuffers(writer));
  CloseHandle(writer);
  EXPECT_EQ(ErrorOf(FlushFileBuffers(writer)), ERROR_INVALID_HANDLE);
  const HANDLE reader =
      Open(folder, WTEXT("file"), static_cast<DWORD>(GENERIC_READ), OPEN_EXISTING);
  EXPECT_EQ(ErrorOf(FlushFileBuffers(reader)), ERROR_ACCESS_DENIED);
  CloseHandle(reader);
}

TEST(FileHandle, KnowsItsFinalPath) {
  const TempFolder folder;
  folder.Write("Real", "text");
  std::error_code noLinks;
  fs::create_symlink("Real", folder.Path() / "link", noLinks);
  for (const WCHAR* name : {WTEXT("real"), WTEXT("link")}) {
    if (noLinks && name[0] == 'l') continue;
    const HANDLE file = Open(folder, name, 0, OPEN_EXISTING);
    const DWORD size = GetFinalPathNameByHandleW(file, nullptr, 0, 0);
    ASSERT_GT(size, 8u);
    std::vector<WCHAR> text(size, 1);
    EXPECT_EQ(GetFinalPathNameByHandleW(file, text.data(), size - 1, 0), size);
    EXPECT_EQ(GetFinalPathNameByHandleW(file, text.data(), size, 0), size - 1);
    CloseHandle(file);
    const Wide path = text.data();
    EXPECT_EQ(path.substr(0, 4), WTEXT("\\\\?\\"));
    EXPECT_EQ(path.substr(path.size() - 5), WTEXT("\\Real"));
  }
  EXPECT_EQ(ErrorOf(GetFinalPathNameByHandleW(nullptr, nullptr, 0, 0)), ERROR_INVALID_HANDLE);
}

TEST(FileHandle, RightsPassFromFileToFile) {
  const TempFolder folder;
  folder.Write("from", "");
  folder.Write("to", "");
  fs::permissions(folder.Path() / "from", fs::perms::owner_read | fs::perms::owner_write);
  const Wide from = folder.Wide(WTEXT("from"));
  DWORD size = 0;
  EXPECT_EQ(ErrorOf(GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size)),
            ERROR_INSUFFICIENT_BUFFER);
  std::vector<char> rights(size);
  ASSERT_TRUE(
      GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, rights.data(), size, &size));
  ASSERT_TRUE(
      SetFileSecurityW(folder.Wide(WTEXT("to")).c_str(), DACL_SECURITY_INFORMATION, rights.data()));
  EXPECT_EQ(fs::status(folder.Path() / "to").permissions(),
            fs::status(folder.Path() / "from").permissions());
}

}  // namespace
