// The system's own folder, and short names of files.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

TEST(SystemPath, WindowsDirectoryFollowsTheBufferRules) {
  WCHAR path[MAX_PATH];
  const UINT length = GetWindowsDirectoryW(path, MAX_PATH);
  ASSERT_GT(length, 3u);
  EXPECT_EQ(Wide(path).size(), length);
  EXPECT_EQ(path[1], ':');
  EXPECT_NE(path[length - 1], '\\');
  EXPECT_EQ(GetWindowsDirectoryW(nullptr, 0), length + 1);
  EXPECT_EQ(GetWindowsDirectoryW(path, length), length + 1);
  EXPECT_EQ(GetWindowsDirectoryW(path, length + 1), length);
}

TEST(SystemPath, ShortNamesAreOfWhatIsThere) {
  const TempFolder folder;
  folder.Write("a name that is longer than eight.text", "x");
  const Wide path = folder.Wide(WTEXT("a name that is longer than eight.text"));
  const DWORD room = GetShortPathNameW(path.c_str(), nullptr, 0);
  ASSERT_GT(room, 1u);
  std::vector<WCHAR> text(room);
  EXPECT_EQ(GetShortPathNameW(path.c_str(), text.data(), room), room - 1);
  EXPECT_EQ(Wide(text.data()).size(), room - 1);
  EXPECT_NE(GetFileAttributesW(text.data()), INVALID_FILE_ATTRIBUTES) << "it leads to the file";
  EXPECT_EQ(GetShortPathNameW(path.c_str(), text.data(), room - 1), room);

  const auto missing = [&](const WCHAR* name) {
    return ErrorOf(GetShortPathNameW(folder.Wide(name).c_str(), text.data(), room));
  };
  EXPECT_EQ(missing(WTEXT("no")), ERROR_FILE_NOT_FOUND);
  // Wine doesn't tell a missing folder from a missing file.
  const long error = missing(WTEXT("no/no"));
  EXPECT_TRUE(error == ERROR_PATH_NOT_FOUND || (UnderWine() && error != ERROR_SUCCESS)) << error;
}

}  // namespace
