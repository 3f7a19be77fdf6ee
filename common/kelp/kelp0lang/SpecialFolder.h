// The layout of folders that the family's programs share: the program's own folder, the data folder
// of the product, the data folder of all products and the temporary folder, and below them fixed
// named folders.
//
//   kelp::FInitializeSpecialFolder(nullptr, CSIDL_COMMON_APPDATA, KTEXT("Product"), nullptr);
//   kelp::WString table = kelp::GetComuniFolderPath(KTEXT("towns.dat"));
//
// All of it is text: no folder is made, and only GetTranslatedFilePath and ConvertPathToLegacyAnsi
// look at the disk. Before FInitializeSpecialFolder the roots are empty, and a function gives its
// tail alone.
//
// A path is joined by "/" (HandleSubPath), the roots bear "\" from the system; Windows takes both.
//
// Threads: nothing is locked. FInitializeSpecialFolder runs before other threads read the folders.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

namespace kelp {

// Sets the four roots, then runs the queued run-once commands. May run again.
//
// programFolder: null means the folder of the running program. folderId and subFolder: the data
// folder is subFolder of the system's special folder of that id (CSIDL_...), and the family's is
// "Halden" there; with -1 the data folder is subFolder as it stands, and the family's is in the
// machine-wide folder of application data. tempFolder: null means the system's.
//
// Texts may have any length and are stored whole. A question to the system whose answer is missing
// or longer than 259 characters leaves the folders that hang on it as they were: both data folders,
// where the special folder is unknown or isn't there. At the first call they are then empty, and
// GetProgramDataSupportFolderPath("") gives "/Support", so a host looks at
// GetProgramDataFolderPath("") before it saves. Windows makes CSIDL_APPDATA and its like with the
// user; elsewhere a new user has none, and a host calls SHGetSpecialFolderPathW with TRUE first.
// CSIDL_COMMON_APPDATA always has an answer.
//
// No folder is made, and none of this library's saves makes one: a save into a folder that isn't
// there fails. A host makes (CheckSeDirExist, LegacyPath.h, which makes those on the way too), or
// its set-up, those into which it saves:
//   GetProgramDataSupportFolderPath("")  before CCurrMeasUnitInfo or CMeasUnitSystem::SaveConfig,
//   the product's other data folders     before its own files there,
//   GetProgramDataGlobalFolderPath("")   before files that the family's programs share,
//   GetTempFolderPath("")                where tempFolder was given.
// Folders below the program's are only read.
KELP0LANG_API void FInitializeSpecialFolder(const WChar* programFolder, int folderId,
                                            const WChar* subFolder, const WChar* tempFolder);

// folder, or folder + "/" + subPath where subPath isn't empty.
KELP0LANG_API WString HandleSubPath(const WString& folder, const WString& subPath);

// The roots; subPath may be empty, here and below. GetProgramFilesFolderPath is
// GetProgramFolderPath.
KELP0LANG_API WString GetProgramFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramFilesFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramDataFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramDataGlobalFolderPath(const WString& subPath);
KELP0LANG_API WString GetTempFolderPath(const WString& subPath);

// Below the program's folder: "Support", "Support/GUI", "Reports", "CsvTemplates", "Languages",
// "Egm96", "res/Italy", "Res", and GetFontsFolderName().
KELP0LANG_API WString GetProgramSupportFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramGuiFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramReportsFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramCsvTemplatesFolderPath(const WString& subPath);
KELP0LANG_API WString GetLanguagesFolderPath(const WString& subPath);
KELP0LANG_API WString GetEgm96FolderPath(const WString& subPath);
KELP0LANG_API WString GetItalyFolderPath(const WString& subPath);
KELP0LANG_API WString GetResourceFolderPath(const WString& subPath);
KELP0LANG_API WString GetFontsFolderPath(const WString& subPath);
// Another name of GetProgramSupportFolderPath.
KELP0LANG_API WString GetPregeoResFolderPath(const WString& subPath);

// Below the product's data folder: "Support", "Support/GUI", "Support/GUI/Workspaces", "Reports",
// "CsvTemplates", "Verto", "Support/Comuni", "Support/RoadTemplates".
KELP0LANG_API WString GetProgramDataSupportFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramDataGuiFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramDataWorkspacesFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramDataReportsFolderPath(const WString& subPath);
KELP0LANG_API WString GetProgramDataCsvTemplatesFolderPath(const WString& subPath);
KELP0LANG_API WString GetVertoFolderPath(const WString& subPath);
KELP0LANG_API WString GetComuniFolderPath(const WString& subPath);
KELP0LANG_API WString GetRoadTemplatesFolderPath(const WString& subPath);
// Another name of GetProgramDataSupportFolderPath.
KELP0LANG_API WString GetCloudFolderPath(const WString& subPath);

// Below the family's data folder: "Maps", "Geoids", "Geo/4.2".
KELP0LANG_API WString GetMapsFolderPath(const WString& subPath);
KELP0LANG_API WString GetSarnGeoidsFolderPath(const WString& subPath);
KELP0LANG_API WString GetSarnProjectionsFolderPath(const WString& subPath);

// Fixed file names.
KELP0LANG_API WString GetNtripServerFileName();
KELP0LANG_API WString GetCustomNtripServerFileName();
KELP0LANG_API WString GetWmsServerFileName();
KELP0LANG_API WString GetCustomWmsServerFileName();

// Names of folders and files that a program configures; empty at start.
KELP0LANG_API WString GetComboFolderName();
KELP0LANG_API WString GetUserFolderName();
KELP0LANG_API WString GetPredefFolderName();
KELP0LANG_API WString GetProfilesFolderName();
KELP0LANG_API WString GetPreferencesFolderName();
KELP0LANG_API WString GetFontsFolderName();
KELP0LANG_API WString GetDocumentsFolderName();
KELP0LANG_API WString GetTsDescFileName();
KELP0LANG_API WString GetCommentsFileName();
KELP0LANG_API WString GetPntDescFileName();
KELP0LANG_API WString GetLocationFileName();
KELP0LANG_API WString GetOperatorFileName();
KELP0LANG_API WString GetStrumFileName();
KELP0LANG_API WString GetOldNtripServerFileName();
// Sets the name that GetFontsFolderName gives; the others have no writer.
KELP0LANG_API void SetFolderFileNames(const WString& name);

// The Windows language code that GetTranslatedFilePath goes by; 1033, English, at start.
KELP0LANG_API unsigned short GetCurrentLocale();
KELP0LANG_API void SetCurrentLocale(unsigned short code);
// The file in the languages folder of the current locale's culture, or, where it can't be opened
// for reading, its English path whether that is there or not. A code that the culture table doesn't
// know sets the current locale to 1033.
KELP0LANG_API WString GetTranslatedFilePath(const WString& fileName);

// A path as programs of the narrow file API can open it: the short form in the OEM code page. A
// file that isn't there is made for the moment of the question. Where there is no short form, the
// path in the locale's own code page (String::AcceptString).
KELP0LANG_API String ConvertPathToLegacyAnsi(const WString& path);

// Lets the user choose a folder, beginning at directory unless that is empty. False, and directory
// as it was, if the user cancels or chooses what is no folder of a disk.
KELP0LANG_API bool FBrowserDirectory(WString& directory);

}  // namespace kelp
