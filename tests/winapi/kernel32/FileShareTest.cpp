// Who may have a file open beside others.
#include <gtest/gtest.h>
#include <share.h>
#include <tchar.h>
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr DWORD kRead = static_cast<DWORD>(GENERIC_READ);
constexpr DWORD kWrite = static_cast<DWORD>(GENERIC_WRITE);
constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE Open(const Wide& path, DWORD access, DWORD share, DWORD disposition = OPEN_EXISTING) {
  return CreateFileW(path.c_str(), access, share, nullptr, disposition, 0, nullptr);
}

TEST(FileShare, WhatOneUsesTheOtherMustShare) {
  struct Case {
    DWORD access, share;    // of the first
    DWORD access2, share2;  // of the second
    bool open;
    DWORD disposition = OPEN_EXISTING;
  };
  const Case cases[] = {
      {kRead, FILE_SHARE_READ, kWrite, kAll, false},
      {kRead, kAll, kRead, FILE_SHARE_WRITE, false},
      {kWrite, FILE_SHARE_READ, kRead, FILE_SHARE_READ, false},
      {kWrite, FILE_SHARE_READ, kRead, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
      {kRead | kWrite, 0, kRead, kAll, false},
      {kRead, 0, 0, 0, true},
      {0, 0, kRead | kWrite, 0, true},
      {kRead, FILE_SHARE_READ, DELETE, kAll, false},
      {kRead, FILE_SHARE_READ, kWrite, kAll, false, TRUNCATE_EXISTING},
  };
  const TempFolder folder;
  const Wide path = folder.Wide(WTEXT("file"));
  folder.Write("file", "kept");
  for (const Case& each : cases) {
    const HANDLE first = Open(path, each.access, each.share);
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    const HANDLE second = Open(path, each.access2, each.share2, each.disposition);
    EXPECT_EQ(ErrorOf(second, INVALID_HANDLE_VALUE),
              each.open ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION)
        << &each - cases;
    if (second != INVALID_HANDLE_VALUE) CloseHandle(second);
    CloseHandle(first);
    EXPECT_EQ(folder.Read("file"), "kept") << &each - cases;
  }
}

TEST(FileShare, AnOpenFileKeepsItsName) {
  const TempFolder folder;
  folder.Write("file", "kept");
  folder.Write("new", "");
  const Wide path = folder.Wide(WTEXT("file"));
  const Wide other = folder.Wide(WTEXT("new"));
  const HANDLE file = Open(path, kRead, FILE_SHARE_READ | FILE_SHARE_WRITE);
  EXPECT_EQ(ErrorOf(DeleteFileW(path.c_str())), ERROR_SHARING_VIOLATION);
  EXPECT_EQ(ErrorOf(MoveFileExW(path.c_str(), folder.Wide(WTEXT("x")).c_str(), 0)),
            ERROR_SHARING_VIOLATION);
  EXPECT_EQ(ErrorOf(MoveFileExW(other.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(ErrorOf(CopyFileW(path.c_str(), path.c_str(), FALSE)), ERROR_SHARING_VIOLATION);
  CloseHandle(file);
  EXPECT_EQ(folder.Read("file"), "kept");
  EXPECT_TRUE(DeleteFileW(path.c_str()));
}

TEST(FileShare, AStreamKeepsHandlesOff) {
  const TempFolder folder;
  const Wide path = folder.Wide(WTEXT("file"));
  std::FILE* const stream = _wfsopen(path.c_str(), WTEXT("wb"), _SH_DENYRW);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(ErrorOf(Open(path, kRead, kAll), INVALID_HANDLE_VALUE), ERROR_SHARING_VIOLATION);
  std::fclose(stream);
  const HANDLE file = Open(path, kRead, kAll);
  EXPECT_EQ(_wfsopen(path.c_str(), WTEXT("wb"), _SH_DENYRW), nullptr);
  CloseHandle(file);
}

// Each makes the file, has it alone and deletes it again.
TEST(FileShare, OneAtATimeHasAFileThatComesAndGoes) {
  const TempFolder folder;
  const Wide path = folder.Wide(WTEXT("file"));
  constexpr int kTimes = 300;
  std::atomic<int> holders{0};
  std::atomic<int> most{0};
  const auto run = [&] {
    for (int done = 0; done < kTimes;) {
      const HANDLE file = Open(path, kRead | kWrite, 0, OPEN_ALWAYS);
      if (file == INVALID_HANDLE_VALUE) continue;
      if (++holders > 1) most = 2;
      --holders;
      CloseHandle(file);
      if (done++ % 3 == 0) DeleteFileW(path.c_str());
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) threads.emplace_back(run);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(most, 0);
}

}  // namespace
