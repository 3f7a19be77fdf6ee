// Names that only some disks have: what is listed can be opened.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

namespace fs = std::filesystem;

DWORD SizeOf(const Wide& path) {
  const HANDLE file = CreateFileW(path.c_str(), 0, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return INVALID_FILE_SIZE;
  const DWORD size = GetFileSize(file, nullptr);
  CloseHandle(file);
  return size;
}

TEST(PathName, PointsAndBlanksGoFromTheEndsOfNamesThatAreNotThere) {
  const TempFolder folder;
  fs::create_directories(folder.Path() / "amb" / "inner");
  folder.Write("amb/inner/file", "12345");
  const std::pair<const WCHAR*, bool> cases[] = {
      {WTEXT("amb/inner/file. ."), true}, {WTEXT("amb./inner./file"), true},
      {WTEXT("AMB/inner/FILE "), true},   {WTEXT("amb /inner/file"), false},
      {WTEXT("amb../inner/file"), false}, {WTEXT("amb/inner/file./"), false},
  };
  for (const auto& [name, there] : cases) {
    if (UnderWine() && !there) continue;  // it takes more for the same
    EXPECT_EQ(SizeOf(folder.Wide() + WTEXT("/") + name) == 5, there) << fs::path(name);
  }
  EXPECT_TRUE(CreateDirectoryW((folder.Wide() + WTEXT("\\new. .")).c_str(), nullptr));
  EXPECT_TRUE(fs::is_directory(folder.Path() / "new"));
}

TEST(PathName, WhatIsListedCanBeOpened) {
  if (UnderWine()) GTEST_SKIP() << "it gives such names in short";
  const TempFolder folder;
  fs::create_directory(folder.Path() / "amb");
  folder.Write("amb/file", "1");
  fs::create_directory(folder.Path() / "amb ");
  folder.Write("amb /file", "12");
  fs::create_directory(folder.Path() / "Rossi S.r.l.");
  folder.Write("Rossi S.r.l./file", "123");
  for (const char* name :
       {"a:b.txt", "what?", "back\\slash", "\\first", "not\xFFutf8", "tab\t", "dots.."}) {
    folder.Write(name, "1234");
  }
  std::set<DWORD> sizes;
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW(folder.Wide(WTEXT("*")).c_str(), &data);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  int files = 0;
  do {
    const Wide path = folder.Wide() + WTEXT("\\") + data.cFileName;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      sizes.insert(SizeOf(path + WTEXT("\\FILE")));
    } else {
      EXPECT_EQ(SizeOf(path), 4u) << fs::path(data.cFileName);
      ++files;
    }
  } while (FindNextFileW(search, &data));
  FindClose(search);
  EXPECT_EQ(files, 7);
  EXPECT_EQ(sizes, (std::set<DWORD>{1, 2, 3, INVALID_FILE_SIZE})) << "the last of . and ..";

  const Wide rossi = folder.Wide() + WTEXT("\\rossi s.r.l.");
  EXPECT_EQ(SizeOf(rossi + WTEXT("\\file")), 3u);
  EXPECT_EQ(ErrorOf(CreateDirectoryW((folder.Wide() + WTEXT("\\c:d")).c_str(), nullptr)),
            ERROR_INVALID_NAME);
  WCHAR before[MAX_PATH];
  WCHAR current[MAX_PATH];
  GetCurrentDirectoryW(MAX_PATH, before);
  EXPECT_TRUE(SetCurrentDirectoryW(rossi.c_str()));
  GetFullPathNameW(WTEXT("."), MAX_PATH, current, nullptr);
  EXPECT_EQ(Wide(current).substr(Wide(current).rfind('\\')), WTEXT("\\Rossi S.r.l."));
  EXPECT_EQ(SizeOf(WTEXT("file")), 3u);
  SetCurrentDirectoryW(before);
}

}  // namespace
