// The folders of the system, the user and the desktop, by the hierarchy standard and the XDG
// specifications; internal to the layer.
// Paths are those of POSIX.
#pragma once

#include <string>

namespace winapi {

// What stands for the Windows folder: where the system's own programs and their files are.
inline constexpr const char* kSystemFolder = "/usr";

// $HOME, or the home folder of the user database.
std::string HomeFolder();
// The base folder that the variable names ($XDG_CONFIG_HOME, $XDG_DATA_HOME), or a folder below
// home where it is unset or not absolute.
std::string BaseFolder(const char* variable, const char* belowHome);
// Where a user's programs keep their data, $XDG_DATA_HOME.
std::string DataFolder();
// A folder of the user's desktop by its name in user-dirs.dirs ("XDG_DOCUMENTS_DIR"), or, where the
// file doesn't name it, one below home.
std::string DesktopFolder(const std::string& name, const char* belowHome = "");

}  // namespace winapi
