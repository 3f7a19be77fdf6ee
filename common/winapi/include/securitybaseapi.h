// Who may do what with a file.
//
// A descriptor holds the owner, the group and the mode of the file. It is of use to these two calls
// alone, which take all of it whatever information asks for, the owner only where that is allowed.
#pragma once

#include "minwinbase.h"
#include "winnt.h"

// needed receives the size of the descriptor; where length is less the error is
// ERROR_INSUFFICIENT_BUFFER.
WINAPI_EXPORT BOOL WINAPI GetFileSecurityW(LPCWSTR path, SECURITY_INFORMATION information,
                                           PSECURITY_DESCRIPTOR descriptor, DWORD length,
                                           DWORD* needed);
WINAPI_EXPORT BOOL WINAPI SetFileSecurityW(LPCWSTR path, SECURITY_INFORMATION information,
                                           PSECURITY_DESCRIPTOR descriptor);
