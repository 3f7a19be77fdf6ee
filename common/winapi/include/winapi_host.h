// What a host or a library sets where Windows would ask its desktop or look into a module; only
// this layer has it.
#pragma once

#include "windef.h"

typedef struct WINAPI_STRING {
  UINT id;  // 16 bits
  LPCWSTR text;
} WINAPI_STRING;

// The strings of a module, its string table in one language, as the linker puts it into the module
// on Windows. They are copied, take the place of those before and stay until the next call: a
// library that is unloaded takes them away with a count of 0.
WINAPI_EXPORT void WinapiSetStrings(HMODULE module, WORD language, const WINAPI_STRING* strings,
                                    size_t count);

// Stands in for the dialog of SHBrowseForFolderW: shows the title, begins at a folder (empty:
// none), writes the chosen path, terminated, into MAX_PATH units and gives TRUE, or FALSE if the
// user cancels. Null, as at start, means that there is nobody to ask.
typedef BOOL (*WINAPI_FOLDER_CHOOSER)(HWND owner, LPCWSTR title, LPCWSTR selected, LPWSTR path);
WINAPI_EXPORT void WinapiSetFolderChooser(WINAPI_FOLDER_CHOOSER chooser);

// The file of certificates (PEM, a path of this system) by which HTTPS servers are verified from
// now on; null or empty, as at start, is the system's store.
WINAPI_EXPORT void WinapiSetCertificateStore(LPCWSTR file);

// Stands in for the box of MessageBoxW: shows the text and gives the button that the user chose.
// Null, as at start, means that there is nobody to ask.
typedef int (*WINAPI_MESSAGE_BOX)(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
WINAPI_EXPORT void WinapiSetMessageBox(WINAPI_MESSAGE_BOX shown);

// The folder of the services that this process installs and sees, instead of root's and the user's
// own; it is made when it is first needed. Null or empty, as at start, is those. A service that is
// running goes on to be looked after where it was started.
WINAPI_EXPORT void WinapiSetServiceFolder(LPCWSTR folder);

// The file of this system, an absolute path in the bytes of the disk, that a call of the layer
// opens for a path; and the path, "C:\...", for an absolute one of this system. A name that isn't
// UTF-8 has U+FFFD for what isn't, by which the layer finds it too. They give the length, or where
// that and a terminator don't fit the size that is needed; 0 for what can't be a file's path, the
// former with the last error.
WINAPI_EXPORT DWORD WinapiToHostPath(LPCWSTR path, DWORD size, LPSTR buffer);
WINAPI_EXPORT DWORD WinapiFromHostPath(LPCSTR path, DWORD size, LPWSTR buffer);
