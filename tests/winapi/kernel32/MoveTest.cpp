// Renaming files and folders.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

namespace fs = std::filesystem;

long Move(const TempFolder& folder, const WCHAR* source, const WCHAR* target, DWORD flags = 0) {
  return ErrorOf(MoveFileExW(folder.Wide(source).c_str(), folder.Wide(target).c_str(), flags));
}

TEST(Move, ReplacesOnlyWhereAllowed) {
  const TempFolder folder;
  folder.Write("new", "new");
  folder.Write("old", "old");
  EXPECT_EQ(Move(folder, WTEXT("new"), WTEXT("old")), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(folder.Read("old"), "old");
  EXPECT_EQ(
      Move(folder, WTEXT("new"), WTEXT("OLD"), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH),
      ERROR_SUCCESS);
  EXPECT_EQ(folder.Read("old"), "new");
  EXPECT_EQ(Move(folder, WTEXT("new"), WTEXT("b")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Move(folder, WTEXT("old"), WTEXT("none\\b")), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(folder.Read("old"), "new");
}

TEST(Move, MovesFoldersAndChangesCase) {
  const TempFolder folder;
  fs::create_directories(folder.Path() / "one" / "inner");
  EXPECT_EQ(Move(folder, WTEXT("one"), WTEXT("two")), ERROR_SUCCESS);
  EXPECT_TRUE(fs::is_directory(folder.Path() / "two" / "inner"));
  EXPECT_EQ(Move(folder, WTEXT("two"), WTEXT("TWO")), ERROR_SUCCESS);
  const auto name = fs::directory_iterator(folder.Path())->path().filename();
  EXPECT_EQ(name, UnderWine() ? "two" : "TWO") << "Wine keeps the old case";

  folder.Write("file", "kept");
  EXPECT_EQ(Move(folder, WTEXT("file"), WTEXT("two"), MOVEFILE_REPLACE_EXISTING),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(folder.Read("file"), "kept");
}

}  // namespace
