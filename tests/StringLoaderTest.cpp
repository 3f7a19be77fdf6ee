#include "kelp0lang/StringLoader.h"

#include <tchar.h>
#include <windows.h>

#include <cstring>
#include <cwchar>
#include <string>
#include <thread>

#include "tests/TestText.h"

using kelp::CStringLoader;
using kelp::WString;

namespace {

constexpr const WChar* kHelper = KTEXT("OstrandAdmin");
constexpr const WChar* kNoAccountControl =
    KTEXT("Can't run OstrandAdmin.\r\n\r\nUAC (User account control) seems to be disabled for the ")
        KTEXT("current user. Please enable UAC from Control Panel and try again.");

WString Load(const CStringLoader& loader, unsigned int id) {
  WString text;
  const int length = static_cast<int>(loader.GetStringLength(id));
  loader.LoadStr(id, text.GetBufferSetLength(length), length + 1);
  return text;
}

WString FileName(const CStringLoader& loader) {
  const WString path = loader.GetModuleName();
  return path.Substring(path.rfind(KTEXT('\\')) + 1);
}

TEST(StringLoader, TheLibraryHasItsStrings) {
  const CStringLoader& loader = kelp::GetGlobalStringLoader();
  EXPECT_NE(FileName(loader).IndexOf(KTEXT("kelp0lang")), -1) << "the library, not the program";
  const struct {
    unsigned int id;
    const WChar* text;
  } cases[] = {{102, kHelper},
               {103, kNoAccountControl},
               {0x100000 + 102, kHelper},  // the block's number has 16 bits
               {96, KTEXT("")},
               {101, KTEXT("")},
               {104, KTEXT("")},
               {112, KTEXT("")},
               {0, KTEXT("")}};
  for (const auto& c : cases) {
    EXPECT_EQ(loader.GetStringLength(c.id), wcslen(c.text)) << c.id;
    EXPECT_EQ(Load(loader, c.id), WString(c.text)) << c.id;
  }
}

TEST(StringLoader, TheStringsAreItalianResources) {
  const HMODULE library = GetModuleHandleW(KTEXT("kelp0lang.dll"));
  ASSERT_NE(library, nullptr);
  const HRSRC block = FindResourceExW(library, RT_STRING, MAKEINTRESOURCEW(7), 1040);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(FindResourceW(library, MAKEINTRESOURCEW(7), RT_STRING), block);
  // 16 lengths and the units of two strings, each of 2 bytes; the linker may fill up.
  EXPECT_GE(SizeofResource(library, block), 2 * (16 + wcslen(kHelper) + wcslen(kNoAccountControl)));
}

TEST(StringLoader, AnotherModuleDoesNotHaveThem) {
  CStringLoader loader;
  EXPECT_NE(FileName(loader).IndexOf(KTEXT("desktop_test")), -1);
  for (const WChar* name : {KTEXT("sarnutils.dll"), static_cast<const WChar*>(nullptr)}) {
    loader.Init(GetModuleHandleW(name));
    EXPECT_EQ(loader.GetStringLength(102), 0u);
    WChar wide[8] = KTEXT("before");
    loader.LoadStr(102, wide, 8);
    EXPECT_EQ(wide[0], 0);
    char narrow[8] = "before";
    loader.LoadStr(102, narrow, 8);
    EXPECT_STREQ(narrow, "");
  }
  const CStringLoader copy = kelp::GetGlobalStringLoader();
  loader = copy;
  EXPECT_EQ(loader.GetStringLength(102), 12u);
}

TEST(StringLoader, NarrowTextIsCutToTheBuffer) {
  const CStringLoader& loader = kelp::GetGlobalStringLoader();
  char text[16];
  std::memset(text, '?', sizeof(text));
  loader.LoadStr(102, text, 7);
  EXPECT_EQ(std::string(text, 9), "Ostrand??");
  loader.LoadStr(102, text, 16);
  EXPECT_STREQ(text, "OstrandAdmin");
}

#ifdef _WIN32
// Only there is a library told of threads.
TEST(StringLoader, EachThreadNamesTheModuleAnew) {
  CStringLoader& loader = kelp::GetGlobalStringLoader();
  loader.Init(nullptr);
  ASSERT_EQ(loader.GetStringLength(102), 0u);
  std::thread([] {}).join();
  EXPECT_EQ(loader.GetStringLength(102), 12u);
}
#endif

}  // namespace
