#include "kelp0lang/StringLoader.h"

#include <tchar.h>
#include <windows.h>
#ifndef _WIN32
#include <dlfcn.h>
#include <link.h>
#endif

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include "tests/TempFolder.h"
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
  constexpr unsigned int kOtherBlock = 0x100000;  // the block's number has 16 bits
  const std::pair<unsigned int, const WChar*> cases[] = {
      {0, KTEXT("")},           {101, KTEXT("")}, {102, kHelper},
      {103, kNoAccountControl}, {104, KTEXT("")}, {kOtherBlock + 102, kHelper}};
  for (const auto& [id, text] : cases) {
    EXPECT_EQ(loader.GetStringLength(id), wcslen(text)) << id;
    EXPECT_EQ(Load(loader, id), WString(text)) << id;
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
  char text[16] = "???????????????";
  loader.LoadStr(102, text, 7);
  EXPECT_EQ(std::string(text, 9), "Ostrand??");
  loader.LoadStr(102, text, 16);
  EXPECT_EQ(std::string(text, 15), std::string("OstrandAdmin\0??", 15)) << "nothing behind it";
}

// The program has a text with a euro, which the "C" locale doesn't know.
TEST(StringLoader, NarrowTextEndsBeforeWhatTheLocaleLacks) {
  const CStringLoader program;
  char text[16] = "???????????????";
  program.LoadStr(1001, text, 16);
  EXPECT_EQ(std::string(text, 4), std::string("5 \0?", 4));
  program.LoadStr(1001, text, 0);
  EXPECT_STREQ(text, "5 ");
  const LocaleScope german(LC_CTYPE, kGermanLocale);
  if (!german.Ok()) GTEST_SKIP() << "no German locale";
  std::fill_n(text, 16, 0);
  program.LoadStr(1001, text, 6);
  const WString shown = kelp::ConvertString(text, static_cast<int>(std::string(text).size()));
  EXPECT_TRUE(shown.StartsWith(KTEXT("5 \u20AC"))) << text;
}

#ifdef _WIN32
// Here the library is told of threads.
TEST(StringLoader, EachThreadNamesTheModuleAnew) {
  CStringLoader& loader = kelp::GetGlobalStringLoader();
  loader.Init(nullptr);
  ASSERT_EQ(loader.GetStringLength(102), 0u);
  std::thread([] {}).join();
  EXPECT_EQ(loader.GetStringLength(102), 12u);
}

#else
struct LinkMap {
  explicit LinkMap(const char* path) : handle(dlopen(path, RTLD_NOW)) {
    EXPECT_NE(handle, nullptr) << dlerror();
    EXPECT_EQ(dlinfo(handle, RTLD_DI_LINKMAP, &map), 0);
  }
  ~LinkMap() { dlclose(handle); }
  LinkMap(const LinkMap&) = delete;
  LinkMap& operator=(const LinkMap&) = delete;

  void* const handle;
  const link_map* map = nullptr;
};

// Here the system loads a library from a path of any length.
TEST(StringLoader, ALongModulePathIsWhole) {
  const LinkMap original("libm.so.6");
  const TempFolder folder;
  for (const std::size_t length : {259u, 260u, 261u, 519u, 520u, 521u, 1500u}) {
    std::string path = folder.Path().native();
    const std::size_t posixLength = length - 2;  // "C:" stands before it
    while (path.size() + 201 < posixLength) path += '/' + std::string(99, 'd');
    std::filesystem::create_directories(path);
    path += '/' + std::string(posixLength - path.size() - 1, 'm');
    std::filesystem::copy_file(original.map->l_name, path);
    const LinkMap copy(path.c_str());
    CStringLoader loader;
    loader.Init(reinterpret_cast<void*>(copy.map->l_addr));
    const WString name = loader.GetModuleName();
    ASSERT_EQ(name.Length(), static_cast<int>(length));
    std::replace(path.begin(), path.end(), '/', '\\');
    EXPECT_EQ(name, WString::ConvertFromUtf8(("C:" + path).c_str()));
  }
}
#endif

}  // namespace
