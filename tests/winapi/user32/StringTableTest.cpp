// The strings of a module's table.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <utility>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

TEST(StringTable, StringsAreFoundByNumber) {
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

TEST(StringTable, AStringIsCutToTheBuffer) {
  for (int size = 1; size <= 5; ++size) {
    WCHAR buffer[] = WTEXT("??????");
    const int length = std::min(size - 1, 3);
    EXPECT_EQ(LoadStringW(nullptr, 1000, buffer, size), length);
    if (size == 1 && UnderWine()) buffer[0] = 0;  // Wine writes nothing
    EXPECT_EQ(Wide(buffer), Wide(WTEXT("far")).substr(0, static_cast<std::size_t>(length)));
    EXPECT_EQ(buffer[length + 1], WTEXT('?'));
  }
}

}  // namespace
