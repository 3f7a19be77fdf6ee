// Renaming files and folders.
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <filesystem>
#include <iterator>
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
  EXPECT_EQ(Move(folder, WTEXT("two"), WTEXT("two\\inner\\x")), ERROR_INVALID_PARAMETER);
  if (UnderWine()) return;  // it puts a folder in the place of a file
  fs::create_directory(folder.Path() / "other");
  EXPECT_EQ(Move(folder, WTEXT("other"), WTEXT("file"), MOVEFILE_REPLACE_EXISTING),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(Move(folder, WTEXT("other"), WTEXT("two")), ERROR_ALREADY_EXISTS);
}

// Nobody may write to it, the user who may do everything neither.
TEST(Move, AWriteProtectedFileStays) {
  if (UnderWine()) GTEST_SKIP() << "there, that user may";
  const TempFolder folder;
  folder.Write("new", "new");
  folder.Write("old", "old");
  const Wide target = folder.Wide(WTEXT("old"));
  SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(Move(folder, WTEXT("new"), WTEXT("old"), MOVEFILE_REPLACE_EXISTING),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(ErrorOf(CopyFileW(folder.Wide(WTEXT("new")).c_str(), target.c_str(), FALSE)),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(folder.Read("old"), "old");
  EXPECT_EQ(Move(folder, WTEXT("old"), WTEXT("moved")), ERROR_SUCCESS);
  SetFileAttributesW(folder.Wide(WTEXT("moved")).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(Move, GoesToAnotherDiskAsACopy) {
  const fs::path memory = "/dev/shm";
  if (!fs::is_directory(memory)) GTEST_SKIP() << "there is but one disk";
  const TempFolder folder;
  const Wide source = folder.Wide(WTEXT("source"));
  const fs::path path = memory / folder.Path().filename();
  const Wide target = path.string<WCHAR>();
  folder.Write("source", std::string(3'000'000, 'x'));
  const auto written = fs::last_write_time(folder.Path() / "source");
  EXPECT_EQ(ErrorOf(MoveFileExW(source.c_str(), target.c_str(), 0)), ERROR_NOT_SAME_DEVICE);
  EXPECT_TRUE(MoveFileW(source.c_str(), target.c_str()));
  EXPECT_EQ(fs::file_size(path), 3'000'000u);
  EXPECT_EQ(fs::last_write_time(path), written);
  EXPECT_TRUE(fs::is_empty(folder.Path()));
  EXPECT_EQ(ErrorOf(MoveFileExW(folder.Wide().c_str(), (target + WTEXT("2")).c_str(),
                                MOVEFILE_COPY_ALLOWED)),
            ERROR_ACCESS_DENIED);
  fs::remove(path);
}

TEST(Copy, TakesContentTimeAndReadOnly) {
  const TempFolder folder;
  folder.Write("source", std::string(1 << 20, 'x') + "end");
  folder.Write("old", "old");
  const auto moment = fs::last_write_time(folder.Path() / "source") - std::chrono::hours(99);
  fs::last_write_time(folder.Path() / "source", moment);
  const Wide source = folder.Wide(WTEXT("source"));
  SetFileAttributesW(source.c_str(), FILE_ATTRIBUTE_READONLY);
  const auto copy = [&](const Wide& from, const WCHAR* to, BOOL fail) {
    return ErrorOf(CopyFileW(from.c_str(), folder.Wide(to).c_str(), fail));
  };
  EXPECT_EQ(copy(source, WTEXT("OLD"), TRUE), ERROR_FILE_EXISTS);
  EXPECT_EQ(folder.Read("old"), "old");
  EXPECT_EQ(copy(source, WTEXT("no\\ne"), FALSE), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(copy(folder.Wide(), WTEXT("x"), FALSE), ERROR_ACCESS_DENIED);
  for (const WCHAR* name : {WTEXT("new"), WTEXT("old")}) {
    EXPECT_EQ(copy(source, name, FALSE), ERROR_SUCCESS);
    const fs::path path = folder.Path() / name;
    EXPECT_EQ(folder.Read(path), folder.Read("source"));
    EXPECT_EQ(fs::last_write_time(path), moment);
    const Wide target = folder.Wide(name);
    // Wine leaves those of a file that was there as they are.
    if (!UnderWine() || name[0] == 'n') {
      EXPECT_NE(GetFileAttributesW(target.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
    }
    SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_NORMAL);
  }
  SetFileAttributesW(source.c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 3);
}

}  // namespace
