// The processes of the machine and what is loaded in them.
#pragma once

#include "minwinbase.h"
#include "windef.h"

// As many numbers as fit into size bytes; needed receives the bytes that were used. One that fills
// the room may have cut the list.
WINAPI_EXPORT BOOL WINAPI EnumProcesses(DWORD* processIds, DWORD size, LPDWORD needed);
// The modules of a process, its program first; needed receives the bytes for all of them.
// ERROR_PARTIAL_COPY for a process without a program, as those of the kernel are.
WINAPI_EXPORT BOOL WINAPI EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size,
                                             LPDWORD needed);
// The file name of a module, the program's for null. Gives its length; a name that doesn't fit is
// cut and terminated.
WINAPI_EXPORT DWORD WINAPI GetModuleBaseNameW(HANDLE process, HMODULE module, LPWSTR name,
                                              DWORD size);
