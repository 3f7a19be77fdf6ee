#include "kelp0lang/SpecialFolder.h"

#include <windows.h>

#include <shlobj.h>

#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include "kelp0lang/RunOnce.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

#ifndef _WIN32
#include <winapi_host.h>

#include "tests/winapi/Variable.h"
#endif

using kelp::String;
using kelp::WString;

namespace {

const WString kNone;

// Before every test the roots are those of the first one, whatever ran before.
class SpecialFolder : public testing::Test {
 protected:
  SpecialFolder() {
    kelp::FInitializeSpecialFolder(KTEXT("C:\\P"), -1, KTEXT("C:\\D\\X"), KTEXT("C:\\T"));
    kelp::SetFolderFileNames(WString());
    kelp::SetCurrentLocale(1033);
  }
};

WString SystemFolder(int id) {
  WChar path[MAX_PATH] = {};
  EXPECT_TRUE(SHGetSpecialFolderPathW(nullptr, path, id, FALSE));
  return path;
}

TEST_F(SpecialFolder, EveryFolderStandsInItsPlace) {
  const WString global = SystemFolder(CSIDL_COMMON_APPDATA) + KTEXT("\\Halden");
  const std::pair<WString (*)(const WString&), WString> folders[] = {
      {kelp::GetProgramFolderPath, KTEXT("C:\\P")},
      {kelp::GetProgramFilesFolderPath, KTEXT("C:\\P")},
      {kelp::GetProgramDataFolderPath, KTEXT("C:\\D\\X")},
      {kelp::GetProgramDataGlobalFolderPath, global},
      {kelp::GetTempFolderPath, KTEXT("C:\\T")},
      {kelp::GetProgramSupportFolderPath, KTEXT("C:\\P/Support")},
      {kelp::GetProgramDataSupportFolderPath, KTEXT("C:\\D\\X/Support")},
      {kelp::GetProgramGuiFolderPath, KTEXT("C:\\P/Support/GUI")},
      {kelp::GetProgramDataGuiFolderPath, KTEXT("C:\\D\\X/Support/GUI")},
      {kelp::GetProgramDataWorkspacesFolderPath, KTEXT("C:\\D\\X/Support/GUI/Workspaces")},
      {kelp::GetProgramReportsFolderPath, KTEXT("C:\\P/Reports")},
      {kelp::GetProgramDataReportsFolderPath, KTEXT("C:\\D\\X/Reports")},
      {kelp::GetProgramCsvTemplatesFolderPath, KTEXT("C:\\P/CsvTemplates")},
      {kelp::GetProgramDataCsvTemplatesFolderPath, KTEXT("C:\\D\\X/CsvTemplates")},
      {kelp::GetLanguagesFolderPath, KTEXT("C:\\P/Languages")},
      {kelp::GetEgm96FolderPath, KTEXT("C:\\P/Egm96")},
      {kelp::GetItalyFolderPath, KTEXT("C:\\P/res/Italy")},
      {kelp::GetResourceFolderPath, KTEXT("C:\\P/Res")},
      {kelp::GetFontsFolderPath, KTEXT("C:\\P")},
      {kelp::GetVertoFolderPath, KTEXT("C:\\D\\X/Verto")},
      {kelp::GetComuniFolderPath, KTEXT("C:\\D\\X/Support/Comuni")},
      {kelp::GetRoadTemplatesFolderPath, KTEXT("C:\\D\\X/Support/RoadTemplates")},
      {kelp::GetMapsFolderPath, global + KTEXT("/Maps")},
      {kelp::GetSarnGeoidsFolderPath, global + KTEXT("/Geoids")},
      {kelp::GetSarnProjectionsFolderPath, global + KTEXT("/Geo/4.2")},
      {kelp::GetCloudFolderPath, KTEXT("C:\\D\\X/Support")},
      {kelp::GetPregeoResFolderPath, KTEXT("C:\\P/Support")},
  };
  for (const auto& [path, expected] : folders) {
    EXPECT_EQ(path(kNone), expected);
    EXPECT_EQ(path(KTEXT("a")), expected + KTEXT("/a"));
  }
}

TEST_F(SpecialFolder, OnlyTheFontsFolderHasANameToSet) {
  kelp::SetFolderFileNames(KTEXT("Fonts"));
  EXPECT_EQ(kelp::GetFontsFolderName(), WString(KTEXT("Fonts")));
  EXPECT_EQ(kelp::GetFontsFolderPath(KTEXT("x")), WString(KTEXT("C:\\P/Fonts/x")));
  for (const auto name :
       {kelp::GetComboFolderName, kelp::GetPreferencesFolderName, kelp::GetDocumentsFolderName,
        kelp::GetOldNtripServerFileName, kelp::GetUserFolderName, kelp::GetPredefFolderName,
        kelp::GetProfilesFolderName, kelp::GetTsDescFileName, kelp::GetCommentsFileName,
        kelp::GetPntDescFileName, kelp::GetLocationFileName, kelp::GetOperatorFileName,
        kelp::GetStrumFileName}) {
    EXPECT_TRUE(name().empty());
  }
  EXPECT_EQ(kelp::GetNtripServerFileName(), WString(KTEXT("NtripServerList.xml")));
  EXPECT_EQ(kelp::GetCustomNtripServerFileName(), WString(KTEXT("CustomNtripServerList.xml")));
  EXPECT_EQ(kelp::GetWmsServerFileName(), WString(KTEXT("WmsServerList.xml")));
  EXPECT_EQ(kelp::GetCustomWmsServerFileName(), WString(KTEXT("CustomWmsServerList.xml")));
}

TEST_F(SpecialFolder, RootsOfTheSystem) {
  kelp::FInitializeSpecialFolder(nullptr, CSIDL_PROFILE, KTEXT("Product"), nullptr);
  const WString data = SystemFolder(CSIDL_PROFILE);
  EXPECT_EQ(kelp::GetProgramDataFolderPath(kNone), data + KTEXT("\\Product"));
  EXPECT_EQ(kelp::GetProgramDataGlobalFolderPath(kNone), data + KTEXT("\\Halden"));

  WChar text[MAX_PATH + 1];
  ASSERT_NE(GetTempPathW(MAX_PATH + 1, text), 0u);
  EXPECT_EQ(kelp::GetTempFolderPath(kNone) + KTEXT('\\'), WString(text));
  ASSERT_NE(GetModuleFileNameW(nullptr, text, MAX_PATH), 0u);
  const WString program = kelp::GetProgramFolderPath(kNone) + KTEXT('\\');
  EXPECT_TRUE(WString(text).StartsWith(program));
  EXPECT_EQ(WString(text).IndexOf(KTEXT('\\'), program.Length()), -1);
}

TEST_F(SpecialFolder, AnUnknownFolderLeavesTheDataFolders) {
  const WString global = kelp::GetProgramDataGlobalFolderPath(kNone);
  kelp::FInitializeSpecialFolder(KTEXT("C:\\Q"), 0x7777, KTEXT("Other"), KTEXT(""));
  EXPECT_EQ(kelp::GetProgramDataFolderPath(kNone), WString(KTEXT("C:\\D\\X")));
  EXPECT_EQ(kelp::GetProgramDataGlobalFolderPath(kNone), global);
  EXPECT_TRUE(kelp::GetTempFolderPath(kNone).empty());
}

#ifndef _WIN32
TEST_F(SpecialFolder, AFolderThatIsNotThereIsUnknownUntilItIsMade) {
  const TempFolder folder;
  const Variable config("XDG_CONFIG_HOME", (folder.Path() / "none").c_str());
  kelp::FInitializeSpecialFolder(nullptr, CSIDL_APPDATA, KTEXT("Y"), nullptr);
  EXPECT_EQ(kelp::GetProgramDataFolderPath(kNone), WString(KTEXT("C:\\D\\X")));
  WChar path[MAX_PATH];
  ASSERT_TRUE(SHGetSpecialFolderPathW(nullptr, path, CSIDL_APPDATA, TRUE));
  kelp::FInitializeSpecialFolder(nullptr, CSIDL_APPDATA, KTEXT("Y"), nullptr);
  EXPECT_EQ(kelp::GetProgramDataFolderPath(kNone), WString(path) + KTEXT("\\Y"));
}
#endif

TEST_F(SpecialFolder, LongTextsAreStoredWhole) {
  WString text;
  text.resize(1000, KTEXT('x'));
  kelp::FInitializeSpecialFolder(text.c_str(), -1, text.c_str(), text.c_str());
  EXPECT_EQ(kelp::GetProgramFolderPath(kNone), text);
  EXPECT_EQ(kelp::GetTempFolderPath(kNone), text);
  kelp::FInitializeSpecialFolder(nullptr, CSIDL_PROFILE, text.c_str(), nullptr);
  EXPECT_EQ(kelp::GetProgramDataFolderPath(kNone),
            (SystemFolder(CSIDL_PROFILE) + KTEXT('\\')).Concat(text));
}

TEST_F(SpecialFolder, CommandsRunOnceTheFoldersAreKnown) {
  static WString seen;
  struct SeeFolders : kelp::IRunOnceCommand {
    void Run() override {
      seen += kelp::GetProgramFolderPath(kNone).Concat(kelp::GetTempFolderPath(kNone));
    }
  };
  seen = WString();
  kelp::RegisterForRunOnce(new SeeFolders);
  for (int i = 0; i < 2; ++i) {
    kelp::FInitializeSpecialFolder(KTEXT("p"), -1, KTEXT("d"), KTEXT("t"));
  }
  EXPECT_EQ(seen, WString(KTEXT("pt")));
}

TEST_F(SpecialFolder, TranslatedFilesFallBackToEnglish) {
  const TempFolder folder;
  std::filesystem::create_directories(folder.Path() / "Languages" / "it-IT");
  folder.Write("Languages/it-IT/ui.txt", "");
  const WString root(folder.Wide().c_str()), languages = root + KTEXT("/Languages/");
  kelp::FInitializeSpecialFolder(root.c_str(), -1, KTEXT(""), KTEXT(""));
  kelp::SetCurrentLocale(0x410);
  EXPECT_EQ(kelp::GetTranslatedFilePath(KTEXT("ui.txt")), languages + KTEXT("it-IT/ui.txt"));
  EXPECT_EQ(kelp::GetTranslatedFilePath(KTEXT("no.txt")), languages + KTEXT("en-US/no.txt"));
  kelp::SetCurrentLocale(0);
  EXPECT_EQ(kelp::GetTranslatedFilePath(KTEXT("ui.txt")), languages + KTEXT("en-US/ui.txt"));
  EXPECT_EQ(kelp::GetCurrentLocale(), 1033);
}

TEST_F(SpecialFolder, NarrowPathsAreTheShortForm) {
  const TempFolder folder;
  constexpr const WChar* kLong = KTEXT("a name that is longer than eight.text");
  folder.Write(kLong, "x");
  const WString old(folder.Wide(kLong).c_str());
  const String narrow = kelp::ConvertPathToLegacyAnsi(old);
  WChar expected[MAX_PATH];
  ASSERT_GT(GetShortPathNameW(old.c_str(), expected, MAX_PATH), 0u);
  EXPECT_EQ(WString::ConvertFromUtf8(narrow.c_str()), WString(expected)) << "all of it is ASCII";

  const WString fresh(folder.Wide(KTEXT("new file.txt")).c_str());
  EXPECT_FALSE(kelp::ConvertPathToLegacyAnsi(fresh).empty());
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "new file.txt"));
  EXPECT_EQ(folder.Read(kLong), "x");

  const WString nowhere(folder.Wide(KTEXT("no/such/file.txt")).c_str());
  EXPECT_EQ(kelp::ConvertPathToLegacyAnsi(nowhere), String::AcceptString(nowhere.c_str()));
  EXPECT_TRUE(kelp::ConvertPathToLegacyAnsi(kNone).empty());
}

// The user at the dialog of FBrowserDirectory: who presses OK at once, where the dialog opened, or
// cancels. False from Ask, and nothing asked, where no dialog can be shown.
#ifdef _WIN32

bool Ask(WString& directory, bool accept, bool& shown) {
  std::jthread user([accept, &shown, thread = GetCurrentThreadId()](std::stop_token stop) {
    const auto press = [](HWND window, LPARAM data) -> BOOL {
      WCHAR name[16];
      const bool dialog = GetClassNameW(window, name, 16) != 0 && wcscmp(name, L"#32770") == 0;
      if (!dialog || !IsWindowVisible(window)) return TRUE;
      PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(data), 0);
      return FALSE;
    };
    while (!stop.stop_requested()) {
      Sleep(500);
      if (!EnumThreadWindows(thread, press, accept ? IDOK : IDCANCEL)) shown = true;
    }
  });
  return kelp::FBrowserDirectory(directory);
}

#else

bool cancels;

BOOL ChooseSelected(HWND, LPCWSTR title, LPCWSTR selected, LPWSTR path) {
  EXPECT_EQ(WString(title), WString(KTEXT("Specify the directory")));
  std::u16string(selected).copy(path, MAX_PATH);
  return cancels ? FALSE : TRUE;
}

bool Ask(WString& directory, bool accept, bool& shown) {
  cancels = !accept;
  shown = true;
  WinapiSetFolderChooser(ChooseSelected);
  const bool chosen = kelp::FBrowserDirectory(directory);
  WinapiSetFolderChooser(nullptr);
  return chosen;
}

#endif

// Not from a temporary folder: Wine's dialog loses its way there, where programs beside this one
// make and delete others while it lists them.
TEST_F(SpecialFolder, TheUserChoosesOrCancels) {
  const WString begin = SystemFolder(CSIDL_PROFILE);
  WString directory = begin;
  bool shown = false;
  EXPECT_FALSE(Ask(directory, false, shown));
  EXPECT_EQ(directory, begin);
  if (!shown) GTEST_SKIP() << "no dialog can be shown here";
  EXPECT_TRUE(Ask(directory, true, shown));
  EXPECT_EQ(directory, begin);
}

}  // namespace
