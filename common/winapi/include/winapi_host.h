// What a host sets where Windows would ask its desktop; only this layer has it.
#pragma once

#include "windef.h"

// Stands in for the dialog of SHBrowseForFolderW: shows the title, begins at a folder (empty:
// none), writes the chosen path, terminated, into MAX_PATH units and gives TRUE, or FALSE if the
// user cancels. Null, as at start, means that there is nobody to ask.
typedef BOOL (*WINAPI_FOLDER_CHOOSER)(HWND owner, LPCWSTR title, LPCWSTR selected, LPWSTR path);
WINAPI_EXPORT void WinapiSetFolderChooser(WINAPI_FOLDER_CHOOSER chooser);
