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

// Opens or makes a file; a folder is opened only with BACKUP_SEMANTICS. Access is any of
// GENERIC_READ and GENERIC_WRITE, or 0, which only asks about the file. A new file with READONLY
// can be written by this handle alone. Others aren't kept off the file, whatever share says, and
// the hints of flags make no difference; other flags are ERROR_INVALID_PARAMETER. CREATE_ALWAYS and
// OPEN_ALWAYS leave ERROR_ALREADY_EXISTS where the file was there.
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5
#define FILE_FLAG_WRITE_THROUGH 0x80000000
#define FILE_FLAG_RANDOM_ACCESS 0x10000000
#define FILE_FLAG_SEQUENTIAL_SCAN 0x08000000
#define FILE_FLAG_BACKUP_SEMANTICS 0x02000000
WINAPI_EXPORT HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD share,
                                        LPSECURITY_ATTRIBUTES security, DWORD disposition,
                                        DWORD flags, HANDLE templateFile);
// What was written to the file, by whatever handle, is on the disk. The handle needs GENERIC_WRITE.
WINAPI_EXPORT BOOL WINAPI FlushFileBuffers(HANDLE file);
// The path behind all symbolic links, "\\?\C:\folder\name"; a length or size as below. The flags
// are 0: no other form of the name is known here (ERROR_INVALID_PARAMETER).
#define FILE_NAME_NORMALIZED 0x0
#define VOLUME_NAME_DOS 0x0
WINAPI_EXPORT DWORD WINAPI GetFinalPathNameByHandleW(HANDLE file, LPWSTR buffer, DWORD size,
                                                     DWORD flags);

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
