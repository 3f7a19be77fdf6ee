// The string table of the test program, which is that of Strings.inc.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr WORD kItalian = 1040;

TEST(Resource, StringsAreFoundByNumber) {
  const std::pair<UINT, Wide> cases[] = {{15, WTEXT("last of block 1")},
                                         {16, WTEXT("first of block 2")},
                                         {18, WTEXT("two\r\nlines \"quoted\"")},
                                         {1000, WTEXT("far")},
                                         {0x10000 + 1000, WTEXT("far")},  // the low 16 bits count
                                         {17, WTEXT("")},                 // a gap in its block
                                         {500, WTEXT("")}};               // no block
  for (const HINSTANCE module : {GetModuleHandleW(nullptr), HINSTANCE{}}) {
    for (const auto& [id, text] : cases) {
      WCHAR buffer[64] = {};
      const WCHAR* resource = nullptr;  // the string itself, which has no end of its own
      const int length = static_cast<int>(text.size());
      EXPECT_EQ(LoadStringW(module, id, buffer, 64), length) << id;
      EXPECT_EQ(buffer, text);
      EXPECT_EQ(LoadStringW(module, id, reinterpret_cast<LPWSTR>(&resource), 0), length) << id;
      EXPECT_TRUE(length == 0 || Wide(resource, text.size()) == text) << id;
    }
  }
}

TEST(Resource, AStringIsCutToTheBuffer) {
  for (int size = 1; size <= 5; ++size) {
    WCHAR buffer[] = WTEXT("??????");
    const int length = std::min(size - 1, 3);
    EXPECT_EQ(LoadStringW(nullptr, 1000, buffer, size), length);
    if (size == 1 && UnderWine()) buffer[0] = 0;  // Wine writes nothing
    EXPECT_EQ(Wide(buffer), Wide(WTEXT("far")).substr(0, static_cast<std::size_t>(length)));
    EXPECT_EQ(buffer[length + 1], WTEXT('?'));
  }
}

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
