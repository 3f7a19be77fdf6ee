// The string table of the test program, which is that of Strings.inc.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr WORD kItalian = 1040;

TEST(Resource, StringsAreFoundByNumber) {
  const struct {
    UINT id;
    const WCHAR* text;
  } cases[] = {{15, WTEXT("last of block 1")},
               {16, WTEXT("first of block 2")},
               {18, WTEXT("two\r\nlines \"quoted\"")},
               {1000, WTEXT("far")},
               {0x10000 + 1000, WTEXT("far")},  // the low 16 bits count
               {17, WTEXT("")},                 // a gap in its block
               {500, WTEXT("")}};               // no block
  for (const HINSTANCE module : {GetModuleHandleW(nullptr), HINSTANCE{}}) {
    for (const auto& c : cases) {
      const Wide text = c.text;
      WCHAR buffer[64] = {};
      EXPECT_EQ(LoadStringW(module, c.id, buffer, 64), static_cast<int>(text.size())) << c.id;
      EXPECT_EQ(buffer, text);

      // The string itself, which has no end of its own.
      const WCHAR* resource = nullptr;
      const int length = LoadStringW(module, c.id, reinterpret_cast<LPWSTR>(&resource), 0);
      EXPECT_EQ(length, static_cast<int>(text.size())) << c.id;
      if (length > 0) {
        EXPECT_EQ(Wide(resource, text.size()), text);
      }
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
  EXPECT_EQ(lengths[0], 16);
  EXPECT_EQ(lengths[1], 0);
  EXPECT_EQ(lengths[2], 19);
  EXPECT_EQ(lengths[15], 0);
  EXPECT_EQ(Wide(block + 1, 5), WTEXT("first"));
  const DWORD size = SizeofResource(nullptr, found);
  EXPECT_EQ(size, static_cast<DWORD>((at - block) * sizeof(WCHAR)));

  EXPECT_EQ(FindResourceW(nullptr, WTEXT("#2"), WTEXT("#6")), found);
  EXPECT_EQ(FindResourceExW(nullptr, RT_STRING, MAKEINTRESOURCEW(2), kItalian), found);
}

TEST(Resource, WhatIsNotThereIsNotFound) {
  const HMODULE program = GetModuleHandleW(nullptr);
  EXPECT_EQ(FindResourceW(program, MAKEINTRESOURCEW(3), RT_STRING), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
  EXPECT_EQ(FindResourceW(program, WTEXT("name"), RT_STRING), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
  EXPECT_EQ(FindResourceW(program, MAKEINTRESOURCEW(2), WTEXT("kind")), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_TYPE_NOT_FOUND});
  constexpr WORD kFrench = 0x040C;
  EXPECT_EQ(FindResourceExW(program, RT_STRING, MAKEINTRESOURCEW(2), kFrench), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_LANG_NOT_FOUND});
  EXPECT_EQ(LoadResource(program, nullptr), nullptr);
  EXPECT_EQ(SizeofResource(program, nullptr), 0u);
}

}  // namespace
