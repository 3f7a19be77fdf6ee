// The program and the libraries in the process. A module's handle is the address where it is
// loaded.
#pragma once

#include "windef.h"

// Null means the program. A name matches the file name of a module without regard to case, or its
// whole path; "name" and "name.dll" also match a library that is called "libname.so" here, whatever
// its version. Where there is none it gives null and ERROR_MOD_NOT_FOUND.
WINAPI_EXPORT HMODULE WINAPI GetModuleHandleW(LPCWSTR name);

// The path of a module, of the program for null. Gives its length; a path that doesn't fit is cut
// and terminated, and the call gives size and ERROR_INSUFFICIENT_BUFFER. What is no module gives 0
// and ERROR_MOD_NOT_FOUND.
WINAPI_EXPORT DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);
