// Files, folders and paths.
//
// Paths are those of Windows: "\" and "/" separate alike, the root folder is drive C:, other drives
// are there when DefineDosDeviceW made them. A name leads to the entry of exactly that name or
// else, without regard to case, to one that differs in it; only where there is none, points and
// blanks go from its end as on Windows. On disk names are UTF-8 and keep their case. There are no
// shares ("\\server\share").
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
// Takes the right to write from everybody, or gives it to the owner, as READONLY says. HIDDEN and
// SYSTEM, and READONLY of a folder, have no place on these disks: ERROR_NOT_SUPPORTED. The other
// attributes make no difference.
WINAPI_EXPORT BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes);
typedef enum _GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard } GET_FILEEX_INFO_LEVELS;
typedef struct _WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
} WIN32_FILE_ATTRIBUTE_DATA;
WINAPI_EXPORT BOOL WINAPI GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level,
                                               LPVOID data);

// The security attributes aren't looked at: the rights are those of the process's umask.
WINAPI_EXPORT BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security);
WINAPI_EXPORT BOOL WINAPI RemoveDirectoryW(LPCWSTR path);
// A write-protected file and a folder stay (ERROR_ACCESS_DENIED), and so does a file that is open
// without FILE_SHARE_DELETE (ERROR_SHARING_VIOLATION). With it, the name is gone at once.
WINAPI_EXPORT BOOL WINAPI DeleteFileW(LPCWSTR path);

// Opens or makes a file; a folder is opened only with BACKUP_SEMANTICS. Access is any of
// GENERIC_READ, GENERIC_WRITE, DELETE, FILE_READ_ATTRIBUTES and FILE_WRITE_ATTRIBUTES, or 0. A new
// file with READONLY can be written by this handle alone. Other attributes and the hints of flags
// make no difference; other flags are ERROR_INVALID_PARAMETER. CREATE_ALWAYS and OPEN_ALWAYS leave
// ERROR_ALREADY_EXISTS where the file was there, and else ERROR_SUCCESS.
//
// The share mode holds between all handles of the file, in all processes that use this layer: what
// one refuses, or another uses that this one refuses, is ERROR_SHARING_VIOLATION. Who uses neither
// READ, WRITE nor DELETE keeps nobody off. Other programs and plain streams aren't kept off.
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

// At the place of the handle, which moves on; overlapped is null. At the end of the file a read
// succeeds with fewer bytes, or none. Where one fails half-way, count says how far it came.
WINAPI_EXPORT BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD count,
                                   LPOVERLAPPED overlapped);
WINAPI_EXPORT BOOL WINAPI WriteFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD count,
                                    LPOVERLAPPED overlapped);
// What was written to the file, by whatever handle, is on the disk. The handle needs GENERIC_WRITE.
WINAPI_EXPORT BOOL WINAPI FlushFileBuffers(HANDLE file);

// The place of the next read or write, beyond the end too. place may be null.
#define FILE_BEGIN 0
#define FILE_CURRENT 1
#define FILE_END 2
WINAPI_EXPORT BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance,
                                           PLARGE_INTEGER place, DWORD from);
// In two halves. A null distanceHigh means a signed distance of 32 bits, and a place beyond 32 bits
// is refused. INVALID_SET_FILE_POINTER is a failure only if the last error isn't NO_ERROR; so too
// with INVALID_FILE_SIZE.
#define INVALID_SET_FILE_POINTER ((DWORD)-1)
WINAPI_EXPORT DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh,
                                          DWORD from);
WINAPI_EXPORT BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);
#define INVALID_FILE_SIZE ((DWORD)0xFFFFFFFF)
WINAPI_EXPORT DWORD WINAPI GetFileSize(HANDLE file, LPDWORD sizeHigh);
// Cuts or grows the file to the handle's place. A mapped file isn't cut (ERROR_USER_MAPPED_FILE).
WINAPI_EXPORT BOOL WINAPI SetEndOfFile(HANDLE file);

// Any of the times may be null. The time of creation can't be set here, nor can a time be frozen
// (ERROR_NOT_SUPPORTED); one of zero stays as it is.
WINAPI_EXPORT BOOL WINAPI GetFileTime(HANDLE file, LPFILETIME created, LPFILETIME accessed,
                                      LPFILETIME written);
WINAPI_EXPORT BOOL WINAPI SetFileTime(HANDLE file, const FILETIME* created,
                                      const FILETIME* accessed, const FILETIME* written);

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

// The drives, a bit for each from A: on.
WINAPI_EXPORT DWORD WINAPI GetLogicalDrives();
// Makes a folder stand as a drive ("X:"), on top of what the letter stood for, or takes the topmost
// definition away again; with a target, the topmost one of that target. C: can't be changed.
#define DDD_RAW_TARGET_PATH 0x00000001
#define DDD_REMOVE_DEFINITION 0x00000002
#define DDD_EXACT_MATCH_ON_REMOVE 0x00000004
#define DDD_NO_BROADCAST_SYSTEM 0x00000008
WINAPI_EXPORT BOOL WINAPI DefineDosDeviceW(DWORD flags, LPCWSTR device, LPCWSTR target);
