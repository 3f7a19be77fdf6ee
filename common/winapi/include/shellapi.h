// Starting programs.
#pragma once

#include "winreg.h"
#include "winuser.h"

#define SEE_MASK_NOCLOSEPROCESS 0x00000040
#define SEE_MASK_FLAG_NO_UI 0x00000400  // a failure isn't shown, which it never is here
#define SW_SHOW 5

typedef struct _SHELLEXECUTEINFOW {
  DWORD cbSize;
  ULONG fMask;
  HWND hwnd;
  LPCWSTR lpVerb;
  LPCWSTR lpFile;
  LPCWSTR lpParameters;
  LPCWSTR lpDirectory;
  int nShow;
  HINSTANCE hInstApp;
  void* lpIDList;
  LPCWSTR lpClass;
  HKEY hkeyClass;
  DWORD dwHotKey;
  HANDLE hIcon;
  HANDLE hProcess;
} SHELLEXECUTEINFOW;

// Starts a program as the same user, with the parameters cut into arguments by the rules of the
// Windows C runtime (blanks, quotes, backslashes in front of quotes). The verb is null or "open",
// others and other masks than the two above are ERROR_NOT_SUPPORTED; a file that isn't a program
// is ERROR_ACCESS_DENIED or ERROR_BAD_EXE_FORMAT, since there are no associations here. The file is
// a path; one without a folder isn't looked for elsewhere. With NOCLOSEPROCESS hProcess is a handle
// that can be waited for, otherwise null. hInstApp is above 32, or the error.
WINAPI_EXPORT BOOL WINAPI ShellExecuteExW(SHELLEXECUTEINFOW* info);
