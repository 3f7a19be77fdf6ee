// What only the layer has: the XDG folders behind the shell's, and the host's chooser of folders.
#include <gtest/gtest.h>
#include <shlobj.h>
#include <winapi_host.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/Variable.h"

namespace {

std::u16string Folder(int id, BOOL create = FALSE) {
  WCHAR path[MAX_PATH] = u"as it was";
  if (SHGetSpecialFolderPathW(nullptr, path, id, create)) return path;
  EXPECT_EQ(std::u16string(path), u"as it was");
  return u"(none)";
}

// A path below a folder, as the layer shows it.
std::u16string Shown(const TempFolder& folder, const char* below = "") {
  std::u16string path = u"C:" + (folder.Path() / below).u16string();
  if (path.ends_with(u'/')) path.pop_back();
  std::replace(path.begin(), path.end(), u'/', u'\\');
  return path;
}

TEST(ShellHost, FoldersFollowTheXdgVariables) {
  const TempFolder me, other;
  const Variable home("HOME", me.Path().c_str());
  {
    const Variable config("XDG_CONFIG_HOME", other.Path().c_str()), data("XDG_DATA_HOME", "/tmp");
    EXPECT_EQ(Folder(CSIDL_APPDATA), Shown(other));
    EXPECT_EQ(Folder(CSIDL_LOCAL_APPDATA), u"C:\\tmp");
  }
  const Variable config("XDG_CONFIG_HOME", nullptr), data("XDG_DATA_HOME", "not/absolute");
  EXPECT_EQ(Folder(CSIDL_APPDATA, TRUE), Shown(me, ".config"));
  EXPECT_EQ(Folder(CSIDL_LOCAL_APPDATA, TRUE), Shown(me, ".local/share"));
  EXPECT_EQ(Folder(CSIDL_PROFILE), Shown(me));
  EXPECT_EQ(Folder(CSIDL_COMMON_APPDATA), u"C:\\var\\lib");
}

TEST(ShellHost, FoldersOfTheDesktopAreThoseOfUserDirs) {
  const TempFolder folder;
  const Variable home("HOME", folder.Path().c_str());
  const Variable config("XDG_CONFIG_HOME", folder.Path().c_str());
  EXPECT_EQ(Folder(CSIDL_DESKTOP), u"(none)");
  EXPECT_EQ(Folder(CSIDL_DESKTOP, TRUE), Shown(folder, "Desktop")) << "there is no file";
  EXPECT_EQ(Folder(CSIDL_PERSONAL), Shown(folder));
  folder.Write("user-dirs.dirs",
               "# comment\n"
               "XDG_DESKTOP_DIR=\"$HOME/Scrivania\"\n"
               "  XDG_DOCUMENTS_DIR=\"" +
                   folder.Path().string() +
                   "/docs \\\"x\\\"\"\n"
                   "XDG_MUSIC_DIR=\"relative\"\n"
                   "#XDG_PICTURES_DIR=\"/no\"\n");
  EXPECT_EQ(Folder(CSIDL_DESKTOPDIRECTORY, TRUE), Shown(folder, "Scrivania"));
  EXPECT_EQ(Folder(CSIDL_PERSONAL, TRUE), Shown(folder, "docs \"x\""));
  EXPECT_EQ(Folder(CSIDL_MYMUSIC), Shown(folder));
  EXPECT_EQ(Folder(CSIDL_MYPICTURES), Shown(folder));
}

TEST(ShellHost, AFolderIsMadeOnlyWhenAsked) {
  const TempFolder folder;
  const std::filesystem::path wanted = folder.Path() / "a" / "b";
  const Variable data("XDG_DATA_HOME", wanted.c_str());
  EXPECT_EQ(Folder(CSIDL_LOCAL_APPDATA), u"(none)");
  EXPECT_FALSE(std::filesystem::exists(wanted));
  EXPECT_EQ(Folder(CSIDL_LOCAL_APPDATA, TRUE), Shown(folder, "a/b"));
  EXPECT_EQ(Folder(CSIDL_LOCAL_APPDATA), Shown(folder, "a/b"));
  EXPECT_TRUE(std::filesystem::is_directory(wanted));

  folder.Write("file", "");
  const std::string nested = std::string(200, 'x') + '/' + std::string(200, 'x');
  for (const std::string& bad : {std::string("file"), std::string("file/x"), nested}) {
    const Variable none("XDG_DATA_HOME", (folder.Path() / bad).c_str());
    EXPECT_EQ(Folder(CSIDL_LOCAL_APPDATA, TRUE), u"(none)");
    EXPECT_EQ(Folder(CSIDL_LOCAL_APPDATA), u"(none)");
  }
}

// What a chooser was asked, and what it answers.
std::u16string askedTitle, askedSelected;
const WCHAR* answer = nullptr;

BOOL Choose(HWND, LPCWSTR title, LPCWSTR selected, LPWSTR path) {
  askedTitle = title;
  askedSelected = selected;
  if (answer == nullptr) return FALSE;
  std::u16string(answer).copy(path, MAX_PATH);
  return TRUE;
}

int CALLBACK Select(HWND dialog, UINT message, LPARAM, LPARAM data) {
  if (message == BFFM_INITIALIZED) SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE, data);
  return 0;
}

TEST(ShellHost, TheHostChoosesAFolder) {
  WCHAR name[MAX_PATH] = u"old";
  BROWSEINFOW info = {};
  info.pszDisplayName = name;
  info.lpszTitle = u"Title";
  EXPECT_EQ(SHBrowseForFolderW(&info), nullptr) << "there is nobody to ask";

  WinapiSetFolderChooser(Choose);
  answer = nullptr;
  EXPECT_EQ(SHBrowseForFolderW(&info), nullptr);
  EXPECT_EQ(askedTitle, u"Title");
  EXPECT_EQ(askedSelected, u"");
  EXPECT_EQ(std::u16string(name), u"old");

  answer = u"C:\\jobs\\site 1";
  info.lpfn = Select;
  info.lParam = reinterpret_cast<LPARAM>(u"C:\\jobs");
  for (int i = 0; i < 2; ++i) {
    const LPITEMIDLIST list = SHBrowseForFolderW(&info);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(askedSelected, u"C:\\jobs");
    EXPECT_EQ(std::u16string(name), u"site 1");
    WCHAR path[MAX_PATH] = {};
    EXPECT_TRUE(SHGetPathFromIDListW(list, path));
    EXPECT_EQ(std::u16string(path), answer);
    LPMALLOC allocator = nullptr;
    ASSERT_EQ(SHGetMalloc(&allocator), S_OK);
    allocator->Free(list);
  }
  WinapiSetFolderChooser(nullptr);
}

}  // namespace
