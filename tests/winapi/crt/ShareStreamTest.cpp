// Streams that keep others off their file.
#include <gtest/gtest.h>
#include <share.h>
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <cstdio>

#include "tests/TempFolder.h"
#include "tests/winapi/WideText.h"

namespace {

TEST(ShareStream, OneAtATimeHasTheFile) {
  const TempFolder folder;
  const Wide path = folder.Wide(WTEXT("held"));
  std::FILE* const first = _wfsopen(path.c_str(), WTEXT("wb"), _SH_DENYRW);
  ASSERT_NE(first, nullptr);
  std::fputs("kept", first);
  std::fflush(first);
  for (const WCHAR* const mode : {WTEXT("wb"), WTEXT("rb")}) {
    errno = 0;
    EXPECT_EQ(_wfsopen(path.c_str(), mode, _SH_DENYRW), nullptr);
    EXPECT_EQ(errno, EACCES);
  }
  EXPECT_EQ(std::fclose(first), 0);
  EXPECT_EQ(folder.Read("held"), "kept");

  std::FILE* const reader = _wfsopen(path.c_str(), WTEXT("rb"), _SH_DENYRW);
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(std::getc(reader), 'k');
  std::fclose(reader);
  std::FILE* const open[] = {_wfsopen(path.c_str(), WTEXT("wb"), _SH_DENYNO),
                             _wfsopen(path.c_str(), WTEXT("rb"), _SH_DENYNO)};
  for (std::FILE* const file : open) {
    ASSERT_NE(file, nullptr);
    std::fclose(file);
  }
  EXPECT_EQ(folder.Read("held"), "") << "a writer empties the file";
  EXPECT_EQ(_wfsopen(folder.Wide(WTEXT("none\\x")).c_str(), WTEXT("wb"), _SH_DENYRW), nullptr);
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
