// Folders of the shell, and the dialog in which a user chooses one.
#pragma once

#include "objidl.h"
#include "windef.h"

#define CSIDL_DESKTOP 0x0000
#define CSIDL_PERSONAL 0x0005
#define CSIDL_MYMUSIC 0x000d
#define CSIDL_MYVIDEO 0x000e
#define CSIDL_DESKTOPDIRECTORY 0x0010
#define CSIDL_TEMPLATES 0x0015
#define CSIDL_APPDATA 0x001a
#define CSIDL_LOCAL_APPDATA 0x001c
#define CSIDL_COMMON_APPDATA 0x0023
#define CSIDL_WINDOWS 0x0024
#define CSIDL_MYPICTURES 0x0027
#define CSIDL_PROFILE 0x0028

// The folder of an id, without a separator at its end, into a buffer of MAX_PATH units. FALSE, and
// the buffer as it was, for an id that isn't above, for a longer path, for a folder that isn't
// there and where it was to be made and can't be.
//
// The folders are those of the XDG specifications: APPDATA is $XDG_CONFIG_HOME, LOCAL_APPDATA
// $XDG_DATA_HOME, DESKTOP, PERSONAL (documents) and the like what user-dirs.dirs names, PROFILE the
// home folder. COMMON_APPDATA is /var/lib, where the programs of a machine keep their data. On
// Windows these folders come with the user; here many a user has none of APPDATA, LOCAL_APPDATA or
// DESKTOP before a program makes it, and a program that needs one asks with create.
WINAPI_EXPORT BOOL WINAPI SHGetSpecialFolderPathW(HWND owner, LPWSTR path, int id, BOOL create);

// A place in the shell: a list of items, each with its size in front, ended by a size of 0. Here it
// is one item, the path.
typedef struct _SHITEMID {
  uint16_t cb;
  BYTE abID[1];
} SHITEMID;
typedef struct _ITEMIDLIST {
  SHITEMID mkid;
} ITEMIDLIST, *LPITEMIDLIST;
typedef const ITEMIDLIST* LPCITEMIDLIST;

#define BFFM_INITIALIZED 1
#define BFFM_SETSELECTIONW (WM_USER + 103)

typedef int(CALLBACK* BFFCALLBACK)(HWND dialog, UINT message, LPARAM parameter, LPARAM data);

typedef struct _browseinfoW {
  HWND hwndOwner;
  LPCITEMIDLIST pidlRoot;
  LPWSTR pszDisplayName;  // MAX_PATH units
  LPCWSTR lpszTitle;
  UINT ulFlags;
  BFFCALLBACK lpfn;
  LPARAM lParam;
  int iImage;
} BROWSEINFOW, *LPBROWSEINFOW;

// Asks the user for a folder, through the chooser that the host set (winapi_host.h). Null if the
// user cancels, and without a chooser, since there is nobody to ask. The callback gets
// BFFM_INITIALIZED, and the window that comes with it takes BFFM_SETSELECTIONW: the folder on which
// the chooser begins. The root and the flags aren't handed on. The caller frees the list with the
// shell's allocator.
WINAPI_EXPORT LPITEMIDLIST WINAPI SHBrowseForFolderW(LPBROWSEINFOW info);
// The path of a list that SHBrowseForFolderW gave, into MAX_PATH units; FALSE for any other.
WINAPI_EXPORT BOOL WINAPI SHGetPathFromIDListW(LPCITEMIDLIST list, LPWSTR path);
WINAPI_EXPORT HRESULT WINAPI SHGetMalloc(LPMALLOC* allocator);
