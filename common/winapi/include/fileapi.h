// Files, folders and paths.
//
// Paths are those of Windows: "\" and "/" separate alike, the root folder is drive C:, other drives
// are there when DefineDosDeviceW made them. Names are looked up without regard to case and keep
// the case that the disk has; on disk they are UTF-8. There are no shares ("\\server\share").
#pragma once

#include "minwinbase.h"
#include "winnt.h"

#define INVALID_FILE_ATTRIBUTES ((DWORD)-1)

// Entries of a folder. "*" and "?" stand in the last part of the path only; "." and ".." are listed
// too, except in a root. The entries come in the order of their names, as on NTFS, and are those
// that were there at the first call. A path that ends in a separator finds nothing.
WINAPI_EXPORT HANDLE WINAPI FindFirstFileW(LPCWSTR path, LPWIN32_FIND_DATAW data);
WINAPI_EXPORT BOOL WINAPI FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW data);
WINAPI_EXPORT BOOL WINAPI FindClose(HANDLE search);

// READONLY tells that nobody may write; any file that isn't a folder has ARCHIVE.
WINAPI_EXPORT DWORD WINAPI GetFileAttributesW(LPCWSTR path);

// The security attributes aren't looked at: the rights are those of the process's umask.
WINAPI_EXPORT BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security);
WINAPI_EXPORT BOOL WINAPI RemoveDirectoryW(LPCWSTR path);
WINAPI_EXPORT BOOL WINAPI DeleteFileW(LPCWSTR path);

// Texts of the system. They give the length without the terminator, or, where size units don't
// hold it, the size needed with it; 0 is a failure.
WINAPI_EXPORT DWORD WINAPI GetCurrentDirectoryW(DWORD size, LPWSTR buffer);
// Without a look at the disk. filePart, unless null, receives the place of the last part, or null
// if the path ends in a separator.
WINAPI_EXPORT DWORD WINAPI GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer,
                                            LPWSTR* filePart);
// The path itself, if there is a file or folder of that path: the disks here have no short names.
WINAPI_EXPORT DWORD WINAPI GetShortPathNameW(LPCWSTR path, LPWSTR shortPath, DWORD size);
// The folder of TMPDIR, or /tmp, with a separator at its end.
WINAPI_EXPORT DWORD WINAPI GetTempPathW(DWORD size, LPWSTR buffer);

// The current folder is that of the whole process. A path without a drive goes by its drive.
WINAPI_EXPORT BOOL WINAPI SetCurrentDirectoryW(LPCWSTR path);

// Makes a folder stand as a drive ("X:"), on top of what the letter stood for, or takes the topmost
// definition away again; with a target, the topmost one of that target. C: can't be changed.
#define DDD_RAW_TARGET_PATH 0x00000001
#define DDD_REMOVE_DEFINITION 0x00000002
#define DDD_EXACT_MATCH_ON_REMOVE 0x00000004
#define DDD_NO_BROADCAST_SYSTEM 0x00000008
WINAPI_EXPORT BOOL WINAPI DefineDosDeviceW(DWORD flags, LPCWSTR device, LPCWSTR target);
