// The processes of the machine at one moment.
#pragma once

#include "windef.h"

#define TH32CS_SNAPPROCESS 0x00000002

typedef struct tagPROCESSENTRY32W {
  DWORD dwSize;
  DWORD cntUsage;
  DWORD th32ProcessID;
  ULONG_PTR th32DefaultHeapID;
  DWORD th32ModuleID;
  DWORD cntThreads;
  DWORD th32ParentProcessID;
  LONG pcPriClassBase;
  DWORD dwFlags;
  WCHAR szExeFile[MAX_PATH];
} PROCESSENTRY32W, *LPPROCESSENTRY32W;

// Other flags are ERROR_NOT_SUPPORTED. The handle is closed by CloseHandle.
WINAPI_EXPORT HANDLE WINAPI CreateToolhelp32Snapshot(DWORD flags, DWORD processId);
// The processes one after another: number, number of the parent (of the one that took its place,
// where it has ended), threads, and the file name of the program, of which the kernel tells 15
// characters where this user may not look into the process. dwSize is sizeof(PROCESSENTRY32W), else
// ERROR_BAD_LENGTH. Behind the last one false and ERROR_NO_MORE_FILES.
WINAPI_EXPORT BOOL WINAPI Process32FirstW(HANDLE snapshot, LPPROCESSENTRY32W entry);
WINAPI_EXPORT BOOL WINAPI Process32NextW(HANDLE snapshot, LPPROCESSENTRY32W entry);
