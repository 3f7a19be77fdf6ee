// The string table of the test program, which is that of Strings.inc.
#include <gtest/gtest.h>
#include <windows.h>

#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr WORD kItalian = 1040;

TEST(Resource, ABlockHolds16CountedStrings) {
  const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(2), RT_STRING);
  ASSERT_NE(found, nullptr);
  const auto* block = static_cast<const WCHAR*>(LockResource(LoadResource(nullptr, found)));
  ASSERT_NE(block, nullptr);
  const WCHAR* at = block;
  int lengths[16];
  for (int& length : lengths) {
    length = *at;
    at += 1 + *at;
  }
  EXPECT_EQ((std::vector<int>(lengths, lengths + 4)), (std::vector<int>{16, 0, 19, 0}));
  EXPECT_EQ(Wide(block + 1, 5), WTEXT("first"));
  EXPECT_EQ(SizeofResource(nullptr, found), static_cast<DWORD>((at - block) * sizeof(WCHAR)));
  EXPECT_EQ(FindResourceW(nullptr, WTEXT("#2"), WTEXT("#6")), found);
  EXPECT_EQ(FindResourceExW(nullptr, RT_STRING, MAKEINTRESOURCEW(2), kItalian), found);
}

TEST(Resource, WhatIsNotThereIsNotFound) {
  const HMODULE program = GetModuleHandleW(nullptr);
  constexpr WORD kFrench = 0x040C;
  EXPECT_EQ(ErrorOf(FindResourceW(program, MAKEINTRESOURCEW(3), RT_STRING)),
            ERROR_RESOURCE_NAME_NOT_FOUND);
  EXPECT_EQ(ErrorOf(FindResourceW(program, WTEXT("name"), RT_STRING)),
            ERROR_RESOURCE_NAME_NOT_FOUND);
  EXPECT_EQ(ErrorOf(FindResourceW(program, MAKEINTRESOURCEW(2), WTEXT("kind"))),
            ERROR_RESOURCE_TYPE_NOT_FOUND);
  EXPECT_EQ(ErrorOf(FindResourceExW(program, RT_STRING, MAKEINTRESOURCEW(2), kFrench)),
            ERROR_RESOURCE_LANG_NOT_FOUND);
  EXPECT_EQ(LoadResource(program, nullptr), nullptr);
  EXPECT_EQ(SizeofResource(program, nullptr), 0u);
}

}  // namespace
