// The shell's folders and allocator.
#include <gtest/gtest.h>
#include <windows.h>

#include <shlobj.h>

#include <cstring>
#include <string>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

TEST(Shell, FoldersAreWholePathsWithoutASeparatorAtTheEnd) {
  for (const int id : {CSIDL_WINDOWS, CSIDL_PROFILE, CSIDL_COMMON_APPDATA, CSIDL_APPDATA,
                       CSIDL_LOCAL_APPDATA, CSIDL_PERSONAL, CSIDL_DESKTOPDIRECTORY}) {
    WCHAR path[MAX_PATH] = {};
    const bool isThere = SHGetSpecialFolderPathW(nullptr, path, id, FALSE) != FALSE;
    if (!isThere && id != CSIDL_WINDOWS && id != CSIDL_PROFILE) continue;
    ASSERT_TRUE(isThere) << id;
    const Wide text = path;
    EXPECT_NE(GetFileAttributesW(path) & FILE_ATTRIBUTE_DIRECTORY, 0u) << id;
    ASSERT_GT(text.size(), 3u) << id;
    EXPECT_EQ(text.substr(1, 2), WTEXT(":\\"));
    EXPECT_TRUE(text.back() != '\\' && text.find('/') == Wide::npos) << id;
  }
  WCHAR path[MAX_PATH] = {};
  for (const int id : {3 /* the control panel */, 0x7777, -2}) {
    EXPECT_FALSE(SHGetSpecialFolderPathW(nullptr, path, id, FALSE)) << id;
  }
  EXPECT_FALSE(SHGetPathFromIDListW(nullptr, path));
}

TEST(Shell, AllocatorKeepsWhatItMoves) {
  LPMALLOC allocator = nullptr;
  ASSERT_EQ(SHGetMalloc(&allocator), S_OK);
  ASSERT_NE(allocator, nullptr);
  void* block = allocator->Alloc(10);
  ASSERT_NE(block, nullptr);
  EXPECT_GE(allocator->GetSize(block), 10u);
  std::memcpy(block, "123456789", 10);
  block = allocator->Realloc(block, 100000);
  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(static_cast<char*>(block), "123456789");
  allocator->Free(block);
  allocator->Free(nullptr);

  void* same = nullptr;
  EXPECT_EQ(allocator->QueryInterface(IID_IMalloc, &same), S_OK);
  EXPECT_EQ(same, allocator);
  const IID other = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_EQ(allocator->QueryInterface(other, &same), E_NOINTERFACE);
  EXPECT_TRUE(same == nullptr || UnderWine()) << "Wine leaves the pointer as it was";
  allocator->Release();
}

}  // namespace
