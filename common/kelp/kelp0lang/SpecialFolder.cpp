#include "kelp0lang/SpecialFolder.h"

#include <shlobj.h>
#include <tchar.h>
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <memory>

#include "kelp0lang/CultureTable.h"
#include "kelp0lang/LegacyPath.h"
#include "kelp0lang/RunOnce.h"
#include "kelp0lang/Singleton.h"
#include "kelp0lang/Translate.h"

namespace kelp {

// Names of folders and files that a program configures.
struct TFolderFileNames {
  WString combo;
  WString user;
  WString predef;
  WString profiles;
  WString preferences;
  WString fonts;
  WString documents;
  WString tsDesc;
  WString comments;
  WString pntDesc;
  WString location;
  WString operatorFile;
  WString strum;
  WString oldNtripServer;
};

// The one object behind all functions of this family.
class CSpecialFolderMenager : public ISingleton {
 public:
  static CSpecialFolderMenager& GetInstance() {
    if (s_instance == nullptr) s_instance = new CSpecialFolderMenager;
    return *s_instance;
  }
  // The functions may be called behind the deletion of the singletons, and then begin anew.
  ~CSpecialFolderMenager() override { s_instance = nullptr; }

  WString m_sProgramFolder;
  WString m_sProgramDataFolder;
  WString m_sTempFolder;
  WString m_sProgramDataGlobalFolder;
  TFolderFileNames m_FolderFileNames;

 private:
  CSpecialFolderMenager() = default;
  static CSpecialFolderMenager* s_instance;
};

constinit CSpecialFolderMenager* CSpecialFolderMenager::s_instance = nullptr;

namespace {

constexpr unsigned short kEnglish = 1033;
constexpr int kSubFolderAsItStands = -1;

constinit unsigned short currentLocale = kEnglish;

CSpecialFolderMenager& Menager() {
  return CSpecialFolderMenager::GetInstance();
}

// A text of the system, of up to 259 characters.
struct PathBuffer {
  WChar text[MAX_PATH] = {};
};

// "Common AppData" of the machine's shell folders. The read is limited to 260 bytes, and what they
// hold is terminated by the zeros behind them.
bool ReadCommonAppData(PathBuffer& folder) {
  HKEY key;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE,
                    KTEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\explorer\\Shell Folders"),
                    0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  folder = PathBuffer();
  DWORD size = MAX_PATH;
  const LSTATUS status = RegQueryValueExW(key, KTEXT("Common AppData"), nullptr, nullptr,
                                          reinterpret_cast<BYTE*>(folder.text), &size);
  RegCloseKey(key);
  return status == ERROR_SUCCESS && size != 0;
}

// Where Windows kept the data of all users before it had a special folder for it.
bool ComposeCommonAppData(WString& folder) {
  PathBuffer windows;
  const UINT length = GetWindowsDirectoryW(windows.text, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return false;
  folder = WString(windows.text) + KTEXT("\\all users\\dati applicazioni");
  return true;
}

bool QuerySpecialFolder(int folderId, WString& folder) {
  PathBuffer buffer;
  const bool found = SHGetSpecialFolderPathW(nullptr, buffer.text, folderId, FALSE) != FALSE ||
                     (folderId == CSIDL_COMMON_APPDATA && ReadCommonAppData(buffer));
  if (!found) return folderId == CSIDL_COMMON_APPDATA && ComposeCommonAppData(folder);
  folder = buffer.text;
  return true;
}

// Cut at the last "\".
void SetProgramFolderOfModule(WString& folder) {
  PathBuffer path;
  const DWORD length = GetModuleFileNameW(nullptr, path.text, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return;
  WChar* const name = const_cast<WChar*>(wcsrchr(path.text, KTEXT('\\')));
  if (name != nullptr) *name = 0;
  folder = path.text;
}

void SetDataFolders(CSpecialFolderMenager& menager, int folderId, const WChar* subFolder) {
  const bool asItStands = folderId == kSubFolderAsItStands;
  if (asItStands) menager.m_sProgramDataFolder = WString(subFolder);
  WString root;
  if (!QuerySpecialFolder(asItStands ? CSIDL_COMMON_APPDATA : folderId, root)) return;
  root += KTEXT('\\');
  if (!asItStands) menager.m_sProgramDataFolder = root.Concat(WString(subFolder));
  menager.m_sProgramDataGlobalFolder = root + KTEXT("Halden");
}

// Without the separator at the end.
void SetTempFolderOfSystem(WString& folder) {
  WChar path[MAX_PATH + 1];
  const DWORD length = GetTempPathW(MAX_PATH + 1, path);
  if (length == 0 || length > MAX_PATH) return;
  if (length >= 2) path[length - 1] = 0;
  folder = path;
}

// The folder named tail in a parent that is itself one of the path functions.
WString Below(WString (*parent)(const WString&), const WChar* tail, const WString& subPath) {
  return HandleSubPath(parent(WString(tail)), subPath);
}

WString CultureName(unsigned short code) {
  WString name;
  getCultureNameByCode(code, name);
  return name;
}

WString LanguageFile(const WString& cultureName, const WString& fileName) {
  return (GetLanguagesFolderPath(cultureName) + KTEXT('/')).Concat(fileName);
}

// The short form of a path that is there; false, with the last error, where the system has none.
bool QueryShortPath(const WString& path, WString& shortPath) {
  const DWORD room = GetShortPathNameW(path.c_str(), nullptr, 0);
  if (room == 0) return false;
  WString answer;
  const DWORD length =
      GetShortPathNameW(path.c_str(), answer.GetBufferSetLength(static_cast<int>(room)), room);
  if (length == 0 || length >= room) return false;
  answer.ReleaseBuffer(static_cast<int>(length));
  shortPath = answer;
  return true;
}

using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

FileHandle OpenFile(const WString& path, const WChar* mode) {
  return FileHandle(_wfopen(path.c_str(), mode), &std::fclose);
}

// The same of a file that isn't there: it is, as long as the question takes.
bool QueryShortPathOfNewFile(const WString& path, WString& shortPath) {
  if (OpenFile(path, KTEXT("r")) != nullptr) return false;
  FileHandle file = OpenFile(path, KTEXT("w"));
  if (file == nullptr) return false;
  const bool found = QueryShortPath(path, shortPath);
  file.reset();
  DeleteFileW(path.c_str());
  return found;
}

bool ConvertToOem(const WString& text, String& narrow) {
  const auto convert = [&text](char* target, int size) {
    return WideCharToMultiByte(CP_OEMCP, WC_NO_BEST_FIT_CHARS, text.c_str(), text.Length(), target,
                               size, nullptr, nullptr);
  };
  const int size = convert(nullptr, 0);
  if (size <= 0) return false;
  return convert(narrow.GetBufferSetLength(size), size) == size;
}

// Opens the dialog on the folder that its parameter names.
int CALLBACK SelectFolder(HWND dialog, UINT message, LPARAM, LPARAM folder) {
  if (message == BFFM_INITIALIZED) SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE, folder);
  return 0;
}

void FreeItemList(LPITEMIDLIST list) {
  LPMALLOC allocator = nullptr;
  if (SHGetMalloc(&allocator) != S_OK || allocator == nullptr) return;
  allocator->Free(list);
  allocator->Release();
}

}  // namespace

void FInitializeSpecialFolder(const WChar* programFolder, int folderId, const WChar* subFolder,
                              const WChar* tempFolder) {
  CSpecialFolderMenager& menager = Menager();
  if (programFolder != nullptr) {
    menager.m_sProgramFolder = programFolder;
  } else {
    SetProgramFolderOfModule(menager.m_sProgramFolder);
  }
  SetDataFolders(menager, folderId, subFolder);
  if (tempFolder != nullptr) {
    menager.m_sTempFolder = tempFolder;
  } else {
    SetTempFolderOfSystem(menager.m_sTempFolder);
  }
  RunOnceCommands();
}

WString HandleSubPath(const WString& folder, const WString& subPath) {
  if (subPath.empty()) return folder;
  WString path;
  WChar* end = path.GetBufferSetLength(folder.Length() + 1 + subPath.Length());
  end = std::copy_n(folder.c_str(), folder.Length(), end);
  *end++ = KTEXT('/');
  std::copy_n(subPath.c_str(), subPath.Length(), end);
  return path;
}

WString GetProgramFolderPath(const WString& subPath) {
  return HandleSubPath(Menager().m_sProgramFolder, subPath);
}
WString GetProgramFilesFolderPath(const WString& subPath) {
  return HandleSubPath(GetProgramFolderPath(WString()), subPath);
}
WString GetProgramDataFolderPath(const WString& subPath) {
  return HandleSubPath(Menager().m_sProgramDataFolder, subPath);
}
WString GetProgramDataGlobalFolderPath(const WString& subPath) {
  return HandleSubPath(Menager().m_sProgramDataGlobalFolder, subPath);
}
WString GetTempFolderPath(const WString& subPath) {
  return HandleSubPath(Menager().m_sTempFolder, subPath);
}

WString GetProgramSupportFolderPath(const WString& subPath) {
  return Below(GetProgramFilesFolderPath, KTEXT("Support"), subPath);
}
WString GetProgramGuiFolderPath(const WString& subPath) {
  return Below(GetProgramSupportFolderPath, KTEXT("GUI"), subPath);
}
WString GetProgramReportsFolderPath(const WString& subPath) {
  return Below(GetProgramFilesFolderPath, KTEXT("Reports"), subPath);
}
WString GetProgramCsvTemplatesFolderPath(const WString& subPath) {
  return Below(GetProgramFilesFolderPath, KTEXT("CsvTemplates"), subPath);
}
WString GetLanguagesFolderPath(const WString& subPath) {
  return Below(GetProgramFilesFolderPath, KTEXT("Languages"), subPath);
}
WString GetEgm96FolderPath(const WString& subPath) {
  return Below(GetProgramFilesFolderPath, KTEXT("Egm96"), subPath);
}
WString GetItalyFolderPath(const WString& subPath) {
  return Below(GetProgramFilesFolderPath, KTEXT("res/Italy"), subPath);
}
WString GetResourceFolderPath(const WString& subPath) {
  return Below(GetProgramFolderPath, KTEXT("Res"), subPath);
}
WString GetFontsFolderPath(const WString& subPath) {
  return Below(GetProgramFolderPath, GetFontsFolderName().c_str(), subPath);
}
WString GetPregeoResFolderPath(const WString& subPath) {
  return GetProgramSupportFolderPath(subPath);
}

WString GetProgramDataSupportFolderPath(const WString& subPath) {
  return Below(GetProgramDataFolderPath, KTEXT("Support"), subPath);
}
WString GetProgramDataGuiFolderPath(const WString& subPath) {
  return Below(GetProgramDataSupportFolderPath, KTEXT("GUI"), subPath);
}
WString GetProgramDataWorkspacesFolderPath(const WString& subPath) {
  return Below(GetProgramDataGuiFolderPath, KTEXT("Workspaces"), subPath);
}
WString GetProgramDataReportsFolderPath(const WString& subPath) {
  return Below(GetProgramDataFolderPath, KTEXT("Reports"), subPath);
}
WString GetProgramDataCsvTemplatesFolderPath(const WString& subPath) {
  return Below(GetProgramDataFolderPath, KTEXT("CsvTemplates"), subPath);
}
WString GetVertoFolderPath(const WString& subPath) {
  return Below(GetProgramDataFolderPath, KTEXT("Verto"), subPath);
}
WString GetComuniFolderPath(const WString& subPath) {
  return Below(GetProgramDataSupportFolderPath, KTEXT("Comuni"), subPath);
}
WString GetRoadTemplatesFolderPath(const WString& subPath) {
  return Below(GetProgramDataSupportFolderPath, KTEXT("RoadTemplates"), subPath);
}
WString GetCloudFolderPath(const WString& subPath) {
  return GetProgramDataSupportFolderPath(subPath);
}

WString GetMapsFolderPath(const WString& subPath) {
  return Below(GetProgramDataGlobalFolderPath, KTEXT("Maps"), subPath);
}
WString GetSarnGeoidsFolderPath(const WString& subPath) {
  return Below(GetProgramDataGlobalFolderPath, KTEXT("Geoids"), subPath);
}
WString GetSarnProjectionsFolderPath(const WString& subPath) {
  return Below(GetProgramDataGlobalFolderPath, KTEXT("Geo/4.2"), subPath);
}

WString GetNtripServerFileName() {
  return KTEXT("NtripServerList.xml");
}
WString GetCustomNtripServerFileName() {
  return KTEXT("CustomNtripServerList.xml");
}
WString GetWmsServerFileName() {
  return KTEXT("WmsServerList.xml");
}
WString GetCustomWmsServerFileName() {
  return KTEXT("CustomWmsServerList.xml");
}

WString GetComboFolderName() {
  return Menager().m_FolderFileNames.combo;
}
WString GetUserFolderName() {
  return Menager().m_FolderFileNames.user;
}
WString GetPredefFolderName() {
  return Menager().m_FolderFileNames.predef;
}
WString GetProfilesFolderName() {
  return Menager().m_FolderFileNames.profiles;
}
WString GetPreferencesFolderName() {
  return Menager().m_FolderFileNames.preferences;
}
WString GetFontsFolderName() {
  return Menager().m_FolderFileNames.fonts;
}
WString GetDocumentsFolderName() {
  return Menager().m_FolderFileNames.documents;
}
WString GetTsDescFileName() {
  return Menager().m_FolderFileNames.tsDesc;
}
WString GetCommentsFileName() {
  return Menager().m_FolderFileNames.comments;
}
WString GetPntDescFileName() {
  return Menager().m_FolderFileNames.pntDesc;
}
WString GetLocationFileName() {
  return Menager().m_FolderFileNames.location;
}
WString GetOperatorFileName() {
  return Menager().m_FolderFileNames.operatorFile;
}
WString GetStrumFileName() {
  return Menager().m_FolderFileNames.strum;
}
WString GetOldNtripServerFileName() {
  return Menager().m_FolderFileNames.oldNtripServer;
}

void SetFolderFileNames(const WString& name) {
  Menager().m_FolderFileNames.fonts = name;
}

unsigned short GetCurrentLocale() {
  return currentLocale;
}

void SetCurrentLocale(unsigned short code) {
  currentLocale = code;
}

WString GetTranslatedFilePath(const WString& fileName) {
  WString cultureName;
  if (!getCultureNameByCode(currentLocale, cultureName)) {
    currentLocale = kEnglish;
    cultureName = CultureName(kEnglish);
  }
  const WString path = LanguageFile(cultureName, fileName);
  if (FEsisteIlFile(path.c_str())) return path;
  return LanguageFile(CultureName(kEnglish), fileName);
}

String ConvertPathToLegacyAnsi(const WString& path) {
  WString shortPath;
  bool found = QueryShortPath(path, shortPath);
  if (!found && GetLastError() == ERROR_FILE_NOT_FOUND) {
    found = QueryShortPathOfNewFile(path, shortPath);
  }
  String narrow;
  if (found && ConvertToOem(shortPath, narrow)) return narrow;
  return String::AcceptString(path.c_str());
}

bool FBrowserDirectory(WString& directory) {
  const WString title = Xlate(KXLATE("Specify the directory"));
  PathBuffer displayName;
  BROWSEINFOW question = {};
  question.hwndOwner = GetActiveWindow();
  question.pszDisplayName = displayName.text;
  question.lpszTitle = title.c_str();
  if (!directory.empty()) {
    question.lpfn = SelectFolder;
    question.lParam = reinterpret_cast<LPARAM>(directory.c_str());
  }
  const LPITEMIDLIST chosen = SHBrowseForFolderW(&question);
  if (chosen == nullptr) return false;
  PathBuffer path;
  const bool hasPath = SHGetPathFromIDListW(chosen, path.text) != FALSE;
  FreeItemList(chosen);
  if (hasPath) directory = path.text;
  return hasPath;
}

}  // namespace kelp
