// Memory, moving files, profiles, and who is at the ends of a pipe.
#pragma once

#include "windef.h"

// Memory that stays where it is, zeros with GMEM_ZEROINIT; null, and ERROR_NOT_ENOUGH_MEMORY, where
// there isn't enough. Other flags are ERROR_INVALID_PARAMETER. GlobalFree gives it back, and gives
// null.
#define GMEM_FIXED 0x0000
#define GMEM_ZEROINIT 0x0040
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)
WINAPI_EXPORT HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size);
WINAPI_EXPORT HGLOBAL WINAPI GlobalFree(HGLOBAL memory);

#define MOVEFILE_REPLACE_EXISTING 0x00000001
#define MOVEFILE_COPY_ALLOWED 0x00000002
#define MOVEFILE_WRITE_THROUGH 0x00000008

// Renames a file or folder, in one step for everyone who looks. A target that is there is an error
// (ERROR_ALREADY_EXISTS) unless it may be replaced; a folder doesn't replace and isn't replaced, a
// write-protected file and one that is open without FILE_SHARE_DELETE aren't (ERROR_ACCESS_DENIED).
// A source that is open so stays (ERROR_SHARING_VIOLATION), and a folder doesn't move into itself
// (ERROR_INVALID_PARAMETER). Between file systems only files move, and only with COPY_ALLOWED
// (else ERROR_NOT_SAME_DEVICE): the target is there when the copy is whole. With WRITE_THROUGH the
// new name is on the disk when the call returns. Other flags are ERROR_INVALID_PARAMETER.
WINAPI_EXPORT BOOL WINAPI MoveFileExW(LPCWSTR source, LPCWSTR target, DWORD flags);
// With COPY_ALLOWED.
WINAPI_EXPORT BOOL WINAPI MoveFileW(LPCWSTR source, LPCWSTR target);
// The content, the time of writing and READONLY; a new file also has the source's permissions. The
// target is there, or replaced, when the copy is whole. It must not be open, nor be write-protected
// or a folder (ERROR_ACCESS_DENIED).
WINAPI_EXPORT BOOL WINAPI CopyFileW(LPCWSTR source, LPCWSTR target, BOOL failIfExists);

// Settings files of "[section]" and "key=value" lines. A file without a folder in its name is one
// of the Windows folder. A file that begins with the mark FF FE holds UTF-16, any other bytes of
// CP_ACP. Names have no regard to case; of several of one name in a file the first counts. Blanks
// around names and values don't count. Lines that begin with ";", empty lines and lines that are
// neither a section nor a key are passed over, and kept.
//
// A read looks at the file each time and so sees what other processes have written. The value loses
// one pair of quotes around it. Where the file, the section or the key is missing, the default,
// without the blanks at its end, takes its place and the last error is ERROR_FILE_NOT_FOUND, or
// tells why the file couldn't be read. The result is the number of units copied; text that doesn't
// fit is cut (size
// - 1, ERROR_MORE_DATA). With a null section the names of all sections are given, with a null key
// those of the section's keys: each with its terminator, and another one behind the last; where
// they don't fit the result is size - 2.
WINAPI_EXPORT DWORD WINAPI GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key,
                                                    LPCWSTR defaultText, LPWSTR buffer, DWORD size,
                                                    LPCWSTR file);
// The digits that the value begins with, behind a sign.
WINAPI_EXPORT UINT WINAPI GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int defaultValue,
                                                LPCWSTR file);
// Sets a value as it is given; a null value removes the key, a null key the section. A file that
// isn't there is made, as one of bytes. The change is on the disk when the call returns, and
// whoever looks at the file meanwhile finds the old content or the new one, whole: the new file is
// written beside it and renamed. Its permissions stay, a symbolic link stays one. Writers in a
// folder exclude each other, threads and processes alike.
//
// Fails with a null section, and with the reason of the disk: ERROR_ACCESS_DENIED for a file that
// nobody may write, or a folder in its place.
WINAPI_EXPORT BOOL WINAPI WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value,
                                                     LPCWSTR file);

// The process at an end of a named pipe, by the handle of either end. Of a client that has gone the
// one that it was; ERROR_PIPE_LISTENING or ERROR_PIPE_NOT_CONNECTED where there is none.
WINAPI_EXPORT BOOL WINAPI GetNamedPipeServerProcessId(HANDLE pipe, ULONG* processId);
WINAPI_EXPORT BOOL WINAPI GetNamedPipeClientProcessId(HANDLE pipe, ULONG* processId);

// Gives back a block that a call says is to be freed so. Gives null.
WINAPI_EXPORT HANDLE WINAPI LocalFree(HANDLE block);
