// Moving files.
#pragma once

#include "windef.h"

#define MOVEFILE_REPLACE_EXISTING 0x00000001
#define MOVEFILE_WRITE_THROUGH 0x00000008

// Renames a file or folder, in one step for everyone who looks. A target that is there is an error
// (ERROR_ALREADY_EXISTS) unless it may be replaced; a folder isn't replaced (ERROR_ACCESS_DENIED).
// Between file systems nothing moves (ERROR_NOT_SAME_DEVICE). With WRITE_THROUGH the new name is on
// the disk when the call returns. Other flags are ERROR_INVALID_PARAMETER.
WINAPI_EXPORT BOOL WINAPI MoveFileExW(LPCWSTR source, LPCWSTR target, DWORD flags);
