// The string tables that winapi_host.h gives to modules.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "tests/winapi/WideText.h"
#include "winapi_host.h"

namespace {

constexpr WORD kEnglish = 0x0409, kItalian = 0x0410;

Wide Load(HMODULE module, UINT id) {
  WCHAR text[16];
  LoadStringW(module, id, text, 16);
  return text;
}

TEST(ResourceHost, TablesAreReplacedLanguageByLanguage) {
  const HMODULE module = GetModuleHandleW(WTEXT("winapi.dll"));
  ASSERT_NE(module, nullptr);
  const auto block = [module](WORD language) {
    return FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(1), language);
  };
  std::u16string vanishing = u"punto";
  const WINAPI_STRING italian[] = {{1, vanishing.c_str()}, {20, u"angolo"}};
  const WINAPI_STRING english[] = {{1, u"point"}};
  WinapiSetStrings(module, kItalian, italian, 2);
  vanishing.assign(5, u'x');
  EXPECT_EQ(Load(module, 1), u"punto") << "a copy";
  WinapiSetStrings(module, kEnglish, english, 1);
  EXPECT_EQ(Load(module, 1), u"point") << "the lower language";
  EXPECT_EQ(Load(module, 20), u"angolo");
  EXPECT_NE(block(kItalian), block(kEnglish));

  WinapiSetStrings(module, kItalian, english, 1);
  EXPECT_EQ(Load(module, 20), u"") << "not in the new table";
  WinapiSetStrings(module, kEnglish, nullptr, 0);
  EXPECT_EQ(block(kEnglish), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_LANG_NOT_FOUND});
  EXPECT_EQ(Load(module, 1), u"point");
  WinapiSetStrings(module, kItalian, nullptr, 0);
  EXPECT_EQ(block(0), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_DATA_NOT_FOUND});
}

}  // namespace
