// Renaming files and folders.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

namespace fs = std::filesystem;
DWORD MoveError(const Wide& source, const Wide& target, DWORD flags) {
  return MoveFileExW(source.c_str(), target.c_str(), flags) ? ERROR_SUCCESS : GetLastError();
}

TEST(Move, ReplacesOnlyWhereAllowed) {
  const TempFolder folder;
  folder.Write("new", "new");
  folder.Write("old", "old");
  EXPECT_EQ(MoveError(folder.Wide(WTEXT("new")), folder.Wide(WTEXT("old")), 0),
            static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  EXPECT_EQ(folder.Read("old"), "old");
  EXPECT_EQ(MoveError(folder.Wide(WTEXT("new")), folder.Wide(WTEXT("OLD")),
                      MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH),
            static_cast<DWORD>(ERROR_SUCCESS));
  EXPECT_EQ(folder.Read("old"), "new");
  EXPECT_FALSE(fs::exists(folder.Path() / "new"));
}

TEST(Move, MovesFoldersAndChangesCase) {
  const TempFolder folder;
  fs::create_directories(folder.Path() / "one" / "inner");
  EXPECT_EQ(MoveError(folder.Wide(WTEXT("one")), folder.Wide(WTEXT("two")), 0),
            static_cast<DWORD>(ERROR_SUCCESS));
  EXPECT_TRUE(fs::is_directory(folder.Path() / "two" / "inner"));
  EXPECT_EQ(MoveError(folder.Wide(WTEXT("two")), folder.Wide(WTEXT("TWO")), 0),
            static_cast<DWORD>(ERROR_SUCCESS));
  // Wine keeps the old case.
  if (!UnderWine()) {
    EXPECT_EQ(fs::directory_iterator(folder.Path())->path().filename().string(), "TWO");
  }

  folder.Write("file", "kept");
  EXPECT_EQ(
      MoveError(folder.Wide(WTEXT("file")), folder.Wide(WTEXT("two")), MOVEFILE_REPLACE_EXISTING),
      static_cast<DWORD>(ERROR_ACCESS_DENIED));
  EXPECT_EQ(folder.Read("file"), "kept");
}

TEST(Move, TellsWhatIsMissing) {
  const TempFolder folder;
  EXPECT_EQ(MoveError(folder.Wide(WTEXT("none")), folder.Wide(WTEXT("b")), 0),
            static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  folder.Write("a", "a");
  EXPECT_EQ(MoveError(folder.Wide(WTEXT("a")), folder.Wide(WTEXT("none\\b")), 0),
            static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
  EXPECT_TRUE(fs::exists(folder.Path() / "a"));
}

}  // namespace
