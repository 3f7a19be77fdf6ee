// Files, folders, paths and drives.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

// The names that a search gives.
std::vector<Wide> Find(const Wide& path) {
  std::vector<Wide> names;
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW(path.c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    names.emplace_back(data.cFileName);
  } while (FindNextFileW(search, &data));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
  EXPECT_TRUE(FindClose(search));
  return names;
}

DWORD FindError(const Wide& path) {
  WIN32_FIND_DATAW data;
  SetLastError(ERROR_SUCCESS);
  const HANDLE search = FindFirstFileW(path.c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) return GetLastError();
  FindClose(search);
  return ERROR_SUCCESS;
}

bool IsFolder(const WCHAR* path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// The last error of a call that failed; one that worked gives ERROR_SUCCESS.
DWORD ErrorOf(BOOL result) {
  return result ? ERROR_SUCCESS : GetLastError();
}

TEST(Find, ListsWhatMatches) {
  const TempFolder folder;
  const std::vector<Wide> names = {WTEXT("a.b.c"), WTEXT("alpha.txt"), WTEXT("Beta.TXT"),
                                   WTEXT("delta.tx"), WTEXT("gamma")};
  for (const Wide& name : names) folder.Write(name, "");
  struct Case {
    const WCHAR* mask;
    std::vector<int> found;
    bool wineDiffers = false;  // it takes "*." for any name, and "?" for just one unit
  };
  const Case kCases[] = {
      {WTEXT("*"), {0, 1, 2, 3, 4}},
      {WTEXT("*.*"), {0, 1, 2, 3, 4}},
      {WTEXT("*.txt"), {1, 2}},
      {WTEXT("*."), {4}, true},
      {WTEXT("?????.txt"), {1, 2}, true},
      {WTEXT("????.txt"), {2}},
      {WTEXT("?????"), {4}, true},
      {WTEXT("delta.t?"), {3}},
      {WTEXT("delta.t??"), {3}, true},
      {WTEXT("gamma.*"), {4}},
      {WTEXT("a.*"), {0}},
      {WTEXT("*.b.*"), {0}},
      {WTEXT("A*C"), {0}},
      {WTEXT("*a*a*"), {1, 4}},
      {WTEXT("ALPHA.txt"), {1}},
      {WTEXT("x*"), {}},
  };
  for (const Case& c : kCases) {
    if (c.wineDiffers && UnderWine()) continue;
    std::vector<Wide> found = Find(folder.Wide(c.mask));
    std::erase(found, WTEXT("."));
    std::erase(found, WTEXT(".."));
    std::vector<Wide> expected;
    for (int index : c.found) expected.push_back(names[index]);
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected) << std::filesystem::path(c.mask);
  }
  const std::vector<Wide> all = Find(folder.Wide(WTEXT("*")));
  ASSERT_EQ(all.size(), names.size() + 2);
  EXPECT_EQ(all[0], WTEXT("."));
  EXPECT_EQ(all[1], WTEXT(".."));
  EXPECT_EQ(Find(folder.Wide() + WTEXT("\\.\\*.tx")), std::vector<Wide>{names[3]});
}

TEST(Find, TellsWhatIsMissing) {
  const TempFolder folder;
  folder.Write("file", "");
  EXPECT_EQ(FindError(folder.Wide()), static_cast<DWORD>(ERROR_SUCCESS)) << "a folder is found";
  EXPECT_EQ(FindError(folder.Wide(WTEXT("file"))), static_cast<DWORD>(ERROR_SUCCESS));
  EXPECT_EQ(FindError(folder.Wide(WTEXT("none"))), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(FindError(folder.Wide(WTEXT("n*"))), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(FindError(folder.Wide(WTEXT("none/x"))), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(FindError(folder.Wide(WTEXT("none/*"))), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(FindError(folder.Wide() + WTEXT("\\")), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(FindError(WTEXT("C:\\")), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(FindError(WTEXT("")), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(ErrorOf(FindClose(INVALID_HANDLE_VALUE)), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST(Find, FillsTheRecord) {
  const TempFolder folder;
  folder.Write("Data.bin", "12345");
  std::filesystem::create_directory(folder.Path() / "Sub");
  // 1000000000 seconds after the epoch of POSIX.
  const auto moment = std::filesystem::file_time_type::clock::from_sys(
      std::chrono::sys_seconds(std::chrono::seconds(1'000'000'000)));
  std::filesystem::last_write_time(folder.Path() / "Data.bin", moment);

  WIN32_FIND_DATAW data;
  HANDLE search = FindFirstFileW(folder.Wide(WTEXT("DATA.BIN")).c_str(), &data);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(FindNextFileW(search, &data));
  FindClose(search);
  EXPECT_EQ(Wide(data.cFileName), WTEXT("Data.bin"));
  EXPECT_EQ(data.nFileSizeLow, 5u);
  EXPECT_EQ(data.nFileSizeHigh, 0u);
  EXPECT_EQ(data.dwFileAttributes, static_cast<DWORD>(FILE_ATTRIBUTE_ARCHIVE));
  const std::uint64_t written =
      std::uint64_t{data.ftLastWriteTime.dwHighDateTime} << 32 | data.ftLastWriteTime.dwLowDateTime;
  EXPECT_EQ(written, (11'644'473'600ull + 1'000'000'000) * 10'000'000);

  search = FindFirstFileW(folder.Wide(WTEXT("sub")).c_str(), &data);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  FindClose(search);
  EXPECT_EQ(Wide(data.cFileName), WTEXT("Sub"));
  EXPECT_EQ(data.dwFileAttributes, static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
}

TEST(File, MakesAndRemoves) {
  const TempFolder folder;
  const Wide sub = folder.Wide(WTEXT("Sub"));
  EXPECT_EQ(GetFileAttributesW(sub.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(CreateDirectoryW(sub.c_str(), nullptr));
  EXPECT_EQ(GetFileAttributesW(folder.Wide(WTEXT("SUB")).c_str()),
            static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));

  struct Case {
    BOOL (*call)(LPCWSTR);
    const WCHAR* name;
    DWORD error;
  };
  const auto create = [](LPCWSTR path) { return CreateDirectoryW(path, nullptr); };
  const auto remove = [](LPCWSTR path) { return RemoveDirectoryW(path); };
  const auto erase = [](LPCWSTR path) { return DeleteFileW(path); };
  folder.Write("Sub/file", "x");
  const Case kCases[] = {
      {create, WTEXT("sub"), ERROR_ALREADY_EXISTS},
      {create, WTEXT("Sub/FILE"), ERROR_ALREADY_EXISTS},
      {create, WTEXT("none/new"), ERROR_PATH_NOT_FOUND},
      {create, WTEXT("Sub/file/new"), ERROR_PATH_NOT_FOUND},
      {create, WTEXT("a|b"), ERROR_INVALID_NAME},
      {remove, WTEXT("Sub"), ERROR_DIR_NOT_EMPTY},
      {remove, WTEXT("Sub/file"), ERROR_DIRECTORY},
      {remove, WTEXT("none"), ERROR_FILE_NOT_FOUND},
      {erase, WTEXT("Sub"), ERROR_ACCESS_DENIED},
      {erase, WTEXT("none"), ERROR_FILE_NOT_FOUND},
      {erase, WTEXT("none/x"), ERROR_PATH_NOT_FOUND},
      {erase, WTEXT("sub/File"), ERROR_SUCCESS},
      {create, WTEXT("Sub/New/"), ERROR_SUCCESS},
      {remove, WTEXT("sub/new"), ERROR_SUCCESS},
      {remove, WTEXT("Sub/"), ERROR_SUCCESS},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(ErrorOf(c.call(folder.Wide(c.name).c_str())), c.error)
        << std::filesystem::path(c.name);
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(File, AReadOnlyFileStays) {
  const TempFolder folder;
  folder.Write("kept", "x");
  const auto writing = std::filesystem::perms::owner_write | std::filesystem::perms::group_write |
                       std::filesystem::perms::others_write;
  std::filesystem::permissions(folder.Path() / "kept", writing,
                               std::filesystem::perm_options::remove);
  const Wide path = folder.Wide(WTEXT("kept"));
  EXPECT_EQ(GetFileAttributesW(path.c_str()),
            static_cast<DWORD>(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE));
  EXPECT_EQ(ErrorOf(DeleteFileW(path.c_str())), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  std::filesystem::permissions(folder.Path() / "kept", writing, std::filesystem::perm_options::add);
  EXPECT_TRUE(DeleteFileW(path.c_str()));
}

Wide FullPathOf(const WCHAR* path) {
  WCHAR buffer[MAX_PATH];
  const DWORD size = GetFullPathNameW(path, MAX_PATH, buffer, nullptr);
  return size < MAX_PATH ? Wide(buffer, size) : Wide();
}

TEST(Path, FullPathsAreTakenFromTheText) {
  struct Case {
    const WCHAR* path;
    const WCHAR* full;
  };
  const Case kCases[] = {
      {WTEXT("C:\\a\\b.txt"), WTEXT("C:\\a\\b.txt")},
      {WTEXT("c:/a//b/"), WTEXT("c:\\a\\b\\")},
      {WTEXT("C:\\a\\.\\b\\..\\..\\..\\c"), WTEXT("C:\\c")},
      {WTEXT("C:\\a\\.."), WTEXT("C:\\")},
      {WTEXT("C:\\a. . "), WTEXT("C:\\a")},
      {WTEXT("C:\\a\\b..c"), WTEXT("C:\\a\\b..c")},
      {WTEXT("\\\\server\\share\\x\\..\\y"), WTEXT("\\\\server\\share\\y")},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(FullPathOf(c.path), c.full) << std::filesystem::path(c.path);
  }

  WCHAR current[MAX_PATH];
  const DWORD length = GetCurrentDirectoryW(MAX_PATH, current);
  ASSERT_GT(length, 2u);
  EXPECT_EQ(FullPathOf(WTEXT("x\\y")), Wide(current) + WTEXT("\\x\\y"));
  EXPECT_EQ(FullPathOf(WTEXT(".")), current);
  EXPECT_EQ(FullPathOf(WTEXT("\\x")), Wide(current, 2) + WTEXT("\\x"));
  EXPECT_TRUE(IsFolder(current));

  WCHAR buffer[MAX_PATH];
  WCHAR* name = nullptr;
  GetFullPathNameW(WTEXT("C:\\a\\bc"), MAX_PATH, buffer, &name);
  EXPECT_EQ(name, buffer + 5);
  GetFullPathNameW(WTEXT("C:\\a\\bc\\"), MAX_PATH, buffer, &name);
  EXPECT_EQ(name, nullptr);
  EXPECT_EQ(GetFullPathNameW(WTEXT(""), MAX_PATH, buffer, nullptr), 0u);
}

// Each tells the size that a buffer must have, terminator included, and doesn't write into less.
TEST(Path, SmallBuffersLearnTheSizeNeeded) {
  const auto fullPath = [](DWORD size, LPWSTR buffer) {
    return GetFullPathNameW(WTEXT("C:\\a"), size, buffer, nullptr);
  };
  const auto current = [](DWORD size, LPWSTR buffer) { return GetCurrentDirectoryW(size, buffer); };
  const auto temp = [](DWORD size, LPWSTR buffer) { return GetTempPathW(size, buffer); };
  for (DWORD (*call)(DWORD, LPWSTR) : {+fullPath, +current, +temp}) {
    WCHAR buffer[MAX_PATH];
    const DWORD length = call(MAX_PATH, buffer);
    ASSERT_EQ(length, Wide(buffer).size());
    EXPECT_EQ(call(0, nullptr), length + 1);
    EXPECT_EQ(call(length, buffer), length + 1);
    EXPECT_EQ(call(length + 1, buffer), length);
  }
}

TEST(Path, TheTemporaryFolderEndsInASeparator) {
  WCHAR folder[MAX_PATH];
  const DWORD length = GetTempPathW(MAX_PATH, folder);
  ASSERT_GT(length, 3u);
  EXPECT_EQ(folder[1], ':');
  EXPECT_EQ(folder[length - 1], '\\');
  EXPECT_TRUE(IsFolder(folder));
}

Wide CurrentFolder() {
  WCHAR folder[MAX_PATH] = {};
  EXPECT_GT(GetCurrentDirectoryW(MAX_PATH, folder), 0u);
  return folder;
}

TEST(Path, TheCurrentFolderChanges) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.Path() / "Inner");
  folder.Write("file.txt", "");
  const Wide before = CurrentFolder();
  const Wide inner = folder.Wide(WTEXT("Inner"));
  EXPECT_EQ(ErrorOf(SetCurrentDirectoryW(folder.Wide(WTEXT("none")).c_str())),
            static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(ErrorOf(SetCurrentDirectoryW(folder.Wide(WTEXT("file.txt")).c_str())),
            static_cast<DWORD>(ERROR_DIRECTORY));
  EXPECT_EQ(CurrentFolder(), before);
  ASSERT_TRUE(SetCurrentDirectoryW(inner.c_str()));
  EXPECT_EQ(CurrentFolder(), FullPathOf(inner.c_str()));
  EXPECT_TRUE(SetCurrentDirectoryW(WTEXT("..")));
  EXPECT_TRUE(IsFolder(WTEXT("inner")));

  // Wine keeps the definition of a drive, but doesn't look files up by it.
  if (!UnderWine()) {
    ASSERT_TRUE(DefineDosDeviceW(0, WTEXT("Q:"), folder.Wide().c_str()));
    EXPECT_TRUE(SetCurrentDirectoryW(WTEXT("Q:\\Inner")));
    EXPECT_EQ(CurrentFolder(), WTEXT("Q:\\Inner"));
    EXPECT_EQ(FullPathOf(WTEXT("x")), WTEXT("Q:\\Inner\\x"));
    EXPECT_EQ(FullPathOf(WTEXT("/x")), WTEXT("Q:\\x"));
    EXPECT_EQ(FullPathOf(WTEXT("C:/x")), WTEXT("C:\\x"));
    EXPECT_TRUE(SetCurrentDirectoryW(WTEXT("\\")));
    EXPECT_EQ(CurrentFolder(), WTEXT("Q:\\"));
    EXPECT_EQ(FullPathOf(WTEXT("x")), WTEXT("Q:\\x"));
    EXPECT_TRUE(SetCurrentDirectoryW(before.c_str()));
    EXPECT_TRUE(DefineDosDeviceW(DDD_REMOVE_DEFINITION, WTEXT("Q:"), nullptr));
  }
  EXPECT_TRUE(SetCurrentDirectoryW(before.c_str()));
}

TEST(Drive, AFolderStandsAsADriveWhileDefined) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.Path() / "Inner");
  folder.Write("Inner/file.txt", "123");
  const Wide target = folder.Wide(WTEXT("Inner"));
  EXPECT_EQ(FindError(WTEXT("Q:\\file.txt")), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
  ASSERT_TRUE(DefineDosDeviceW(0, WTEXT("Q:"), target.c_str()));
  // Wine keeps the definition, but doesn't look files up by it.
  if (!UnderWine()) {
    EXPECT_EQ(Find(WTEXT("q:/FILE.*")), std::vector<Wide>{WTEXT("file.txt")});
    EXPECT_EQ(FullPathOf(WTEXT("Q:\\x\\..\\y")), WTEXT("Q:\\y"));
    EXPECT_EQ(GetFileAttributesW(WTEXT("Q:\\")), static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
    EXPECT_TRUE(CreateDirectoryW(WTEXT("Q:\\made"), nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "Inner" / "made"));
  }
  EXPECT_TRUE(DefineDosDeviceW(DDD_REMOVE_DEFINITION, WTEXT("Q:"), nullptr));
  EXPECT_EQ(FindError(WTEXT("Q:\\file.txt")), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(ErrorOf(DefineDosDeviceW(DDD_REMOVE_DEFINITION, WTEXT("Q:"), nullptr)),
            static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

}  // namespace
