// Files, folders, paths and drives.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
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
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
  EXPECT_TRUE(FindClose(search));
  return names;
}

long FindError(const Wide& path) {
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW(path.c_str(), &data);
  const long error = ErrorOf(search, INVALID_HANDLE_VALUE);
  if (error == ERROR_SUCCESS) FindClose(search);
  return error;
}

bool IsFolder(const WCHAR* path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

TEST(Find, ListsWhatMatches) {
  const TempFolder folder;
  for (const char* name : {"alpha.txt", "Beta.TXT", "delta.tx", "gamma", "x.b.c"}) {
    folder.Write(name, "");
  }
  struct Case {
    const WCHAR* mask;
    std::string found;         // their first letters
    bool wineDiffers = false;  // it takes "*." for any name, and "?" for just one unit
  };
  const Case kCases[] = {{WTEXT("*"), "Badgx"},
                         {WTEXT("*.*"), "Badgx"},
                         {WTEXT("*.txt"), "Ba"},
                         {WTEXT("*."), "g", true},
                         {WTEXT("?????.txt"), "Ba", true},
                         {WTEXT("????.txt"), "B"},
                         {WTEXT("?????"), "g", true},
                         {WTEXT("delta.t?"), "d"},
                         {WTEXT("delta.t??"), "d", true},
                         {WTEXT("gamma.*"), "g"},
                         {WTEXT("*.b.*"), "x"},
                         {WTEXT("X*C"), "x"},
                         {WTEXT("*a*a*"), "ag"},
                         {WTEXT("ALPHA.txt"), "a"},
                         {WTEXT("z*"), ""}};
  for (const Case& c : kCases) {
    if (c.wineDiffers && UnderWine()) continue;
    std::string found;
    for (const Wide& name : Find(folder.Wide(c.mask))) found += static_cast<char>(name[0]);
    std::erase(found, '.');
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, c.found) << std::filesystem::path(c.mask);
  }
  const std::vector<Wide> all = Find(folder.Wide(WTEXT("*")));
  ASSERT_EQ(all.size(), 7u);
  EXPECT_EQ(all[0], WTEXT("."));
  EXPECT_EQ(all[1], WTEXT(".."));
  EXPECT_EQ(Find(folder.Wide() + WTEXT("\\.\\*.tx")), std::vector<Wide>{WTEXT("delta.tx")});
}

TEST(Find, TellsWhatIsMissing) {
  const TempFolder folder;
  folder.Write("file", "");
  const std::pair<Wide, long> kCases[] = {{folder.Wide(), ERROR_SUCCESS},
                                          {folder.Wide(WTEXT("file")), ERROR_SUCCESS},
                                          {folder.Wide(WTEXT("none")), ERROR_FILE_NOT_FOUND},
                                          {folder.Wide(WTEXT("n*")), ERROR_FILE_NOT_FOUND},
                                          {folder.Wide(WTEXT("none/x")), ERROR_PATH_NOT_FOUND},
                                          {folder.Wide(WTEXT("none/*")), ERROR_PATH_NOT_FOUND},
                                          {folder.Wide() + WTEXT("\\"), ERROR_FILE_NOT_FOUND},
                                          {WTEXT("C:\\"), ERROR_FILE_NOT_FOUND},
                                          {WTEXT(""), ERROR_PATH_NOT_FOUND}};
  for (const auto& [path, error] : kCases) {
    EXPECT_EQ(FindError(path), error) << std::filesystem::path(path);
  }
  EXPECT_EQ(ErrorOf(FindClose(INVALID_HANDLE_VALUE)), ERROR_INVALID_HANDLE);
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
  EXPECT_EQ(Wide(data.cFileName), WTEXT("Data.bin"));
  EXPECT_EQ(std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow, 5u);
  EXPECT_EQ(data.dwFileAttributes, DWORD{FILE_ATTRIBUTE_ARCHIVE});
  EXPECT_EQ(
      std::uint64_t{data.ftLastWriteTime.dwHighDateTime} << 32 | data.ftLastWriteTime.dwLowDateTime,
      (11'644'473'600ull + 1'000'000'000) * 10'000'000);
  EXPECT_FALSE(FindNextFileW(search, &data));
  FindClose(search);

  search = FindFirstFileW(folder.Wide(WTEXT("sub")).c_str(), &data);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  FindClose(search);
  EXPECT_EQ(Wide(data.cFileName), WTEXT("Sub"));
  EXPECT_EQ(data.dwFileAttributes, DWORD{FILE_ATTRIBUTE_DIRECTORY});
}

TEST(File, MakesAndRemoves) {
  const TempFolder folder;
  const Wide sub = folder.Wide(WTEXT("Sub"));
  EXPECT_EQ(ErrorOf(GetFileAttributesW(sub.c_str()), INVALID_FILE_ATTRIBUTES),
            ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(CreateDirectoryW(sub.c_str(), nullptr));
  EXPECT_EQ(GetFileAttributesW(folder.Wide(WTEXT("SUB")).c_str()), DWORD{FILE_ATTRIBUTE_DIRECTORY});

  struct Case {
    BOOL (*call)(LPCWSTR);
    const WCHAR* name;
    long error;
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
  constexpr auto writing = std::filesystem::perms(0222);
  std::filesystem::permissions(folder.Path() / "kept", writing,
                               std::filesystem::perm_options::remove);
  const Wide path = folder.Wide(WTEXT("kept"));
  EXPECT_EQ(GetFileAttributesW(path.c_str()),
            static_cast<DWORD>(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE));
  EXPECT_EQ(ErrorOf(DeleteFileW(path.c_str())), ERROR_ACCESS_DENIED);
  std::filesystem::permissions(folder.Path() / "kept", writing, std::filesystem::perm_options::add);
  EXPECT_TRUE(DeleteFileW(path.c_str()));
}

Wide FullPathOf(const WCHAR* path) {
  WCHAR buffer[MAX_PATH];
  const DWORD size = GetFullPathNameW(path, MAX_PATH, buffer, nullptr);
  return size < MAX_PATH ? Wide(buffer, size) : Wide();
}

Wide CurrentFolder() {
  WCHAR folder[MAX_PATH] = {};
  EXPECT_GT(GetCurrentDirectoryW(MAX_PATH, folder), 0u);
  return folder;
}

TEST(Path, FullPathsAreTakenFromTheText) {
  const std::pair<const WCHAR*, const WCHAR*> kCases[] = {
      {WTEXT("C:\\a\\b.txt"), WTEXT("C:\\a\\b.txt")},
      {WTEXT("c:/a//b/"), WTEXT("c:\\a\\b\\")},
      {WTEXT("C:\\a\\.\\b\\..\\..\\..\\c"), WTEXT("C:\\c")},
      {WTEXT("C:\\a\\.."), WTEXT("C:\\")},
      {WTEXT("C:\\a. . "), WTEXT("C:\\a")},
      {WTEXT("C:\\a\\b..c"), WTEXT("C:\\a\\b..c")},
      {WTEXT("C:\\a.\\b \\c.. ."), WTEXT("C:\\a\\b \\c")},
      {WTEXT("C:\\a..\\b.\\"), WTEXT("C:\\a.\\b\\")},
      {WTEXT("\\\\server\\share\\x\\..\\y"), WTEXT("\\\\server\\share\\y")},
  };
  for (const auto& [path, full] : kCases) EXPECT_EQ(FullPathOf(path), full);

  const Wide current = CurrentFolder();
  ASSERT_GT(current.size(), 2u);
  EXPECT_EQ(FullPathOf(WTEXT("x\\y")), current + WTEXT("\\x\\y"));
  EXPECT_EQ(FullPathOf(WTEXT(".")), current);
  EXPECT_EQ(FullPathOf(WTEXT("\\x")), current.substr(0, 2) + WTEXT("\\x"));
  EXPECT_TRUE(IsFolder(current.c_str()));

  WCHAR buffer[MAX_PATH];
  WCHAR* name = nullptr;
  GetFullPathNameW(WTEXT("C:\\a\\bc"), MAX_PATH, buffer, &name);
  EXPECT_EQ(name, buffer + 5);
  GetFullPathNameW(WTEXT("C:\\a\\bc\\"), MAX_PATH, buffer, &name);
  EXPECT_EQ(name, nullptr);
  EXPECT_EQ(GetFullPathNameW(WTEXT(""), MAX_PATH, buffer, nullptr), 0u);

  const Wide longPath = WTEXT("C:\\") + Wide(20'000, 'x') + WTEXT("\\y");
  std::vector<WCHAR> whole(GetFullPathNameW(longPath.c_str(), MAX_PATH, buffer, nullptr));
  ASSERT_EQ(whole.size(), longPath.size() + 1);
  EXPECT_EQ(GetFullPathNameW((longPath + WTEXT("\\.")).c_str(), 20'006, whole.data(), &name),
            longPath.size());
  EXPECT_EQ(Wide(whole.data()), longPath);
}

// Each tells the size that a buffer must have, terminator included, and doesn't write into less.
TEST(Path, SmallBuffersLearnTheSizeNeeded) {
  DWORD(*const calls[])
  (DWORD, LPWSTR) = {[](DWORD size, LPWSTR buffer) {
                       return GetFullPathNameW(WTEXT("C:\\a"), size, buffer, nullptr);
                     },
                     [](DWORD size, LPWSTR buffer) { return GetCurrentDirectoryW(size, buffer); },
                     [](DWORD size, LPWSTR buffer) { return GetTempPathW(size, buffer); }};
  WCHAR buffer[MAX_PATH];
  for (const auto call : calls) {
    const DWORD length = call(MAX_PATH, buffer);
    ASSERT_EQ(length, Wide(buffer).size());
    ASSERT_GT(length, 3u);
    EXPECT_EQ(call(0, nullptr), length + 1);
    EXPECT_EQ(call(length, buffer), length + 1);
    EXPECT_EQ(call(length + 1, buffer), length);
  }
  EXPECT_EQ(buffer[1], ':');
  EXPECT_EQ(Wide(buffer).back(), '\\') << "as the temporary folder ends";
  EXPECT_TRUE(IsFolder(buffer));
}

TEST(Path, TheCurrentFolderChanges) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.Path() / "Inner");
  folder.Write("file.txt", "");
  const Wide before = CurrentFolder();
  const Wide inner = folder.Wide(WTEXT("Inner"));
  EXPECT_EQ(ErrorOf(SetCurrentDirectoryW(folder.Wide(WTEXT("none")).c_str())),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ErrorOf(SetCurrentDirectoryW(folder.Wide(WTEXT("file.txt")).c_str())), ERROR_DIRECTORY);
  EXPECT_EQ(CurrentFolder(), before);
  ASSERT_TRUE(SetCurrentDirectoryW(inner.c_str()));
  EXPECT_EQ(CurrentFolder(), FullPathOf(inner.c_str()));
  EXPECT_EQ(ErrorOf(RemoveDirectoryW(inner.c_str())), ERROR_SHARING_VIOLATION);
  EXPECT_TRUE(SetCurrentDirectoryW(WTEXT("..")));
  EXPECT_TRUE(IsFolder(WTEXT("inner")));

  // Wine keeps the definition of a drive, but doesn't look files up by it.
  if (!UnderWine()) {
    ASSERT_TRUE(DefineDosDeviceW(0, WTEXT("Q:"), folder.Wide().c_str()));
    EXPECT_TRUE(SetCurrentDirectoryW(WTEXT("Q:\\Inner")));
    EXPECT_EQ(CurrentFolder(), WTEXT("Q:\\Inner"));
    EXPECT_EQ(FullPathOf(WTEXT("x")), WTEXT("Q:\\Inner\\x"));
    EXPECT_EQ(FullPathOf(WTEXT("/x")), WTEXT("Q:\\x"));
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
  EXPECT_EQ(FindError(WTEXT("Q:\\file.txt")), ERROR_PATH_NOT_FOUND);
  constexpr DWORD kQ = 1 << ('Q' - 'A');
  const DWORD drives = GetLogicalDrives();
  EXPECT_EQ(drives & (kQ | 4), 4u) << "C: and no Q:";
  ASSERT_TRUE(DefineDosDeviceW(0, WTEXT("Q:"), target.c_str()));
  // Wine keeps the definition, but doesn't look files up by it.
  if (!UnderWine()) {
    EXPECT_EQ(GetLogicalDrives(), drives | kQ);
    EXPECT_EQ(Find(WTEXT("q:/FILE.*")), std::vector<Wide>{WTEXT("file.txt")});
    EXPECT_EQ(FullPathOf(WTEXT("Q:\\x\\..\\y")), WTEXT("Q:\\y"));
    EXPECT_EQ(GetFileAttributesW(WTEXT("Q:\\")), DWORD{FILE_ATTRIBUTE_DIRECTORY});
    EXPECT_TRUE(CreateDirectoryW(WTEXT("Q:\\made"), nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "Inner" / "made"));
  }
  EXPECT_TRUE(DefineDosDeviceW(DDD_REMOVE_DEFINITION, WTEXT("Q:"), nullptr));
  EXPECT_EQ(FindError(WTEXT("Q:\\file.txt")), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(ErrorOf(DefineDosDeviceW(DDD_REMOVE_DEFINITION, WTEXT("Q:"), nullptr)),
            ERROR_FILE_NOT_FOUND);
}

}  // namespace
