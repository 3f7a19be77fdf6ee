// The program and the libraries in the process, and their resources. A module's handle is the
// address where it is loaded; null means the program.
#pragma once

#include "windef.h"

// A name matches the file name of a module without regard to case, or its
// whole path; "name" and "name.dll" also match a library that is called "libname.so" here, whatever
// its version. The libraries of Windows whose calls this layer has ("user32.dll", "winspool.drv"
// and so on, ".dll" may be left out) are the layer itself. Where there is none it gives null and
// ERROR_MOD_NOT_FOUND.
WINAPI_EXPORT HMODULE WINAPI GetModuleHandleW(LPCWSTR name);

#define GET_MODULE_HANDLE_EX_FLAG_PIN 0x1
#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x2
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x4

// The same, or with FROM_ADDRESS the module in which an address lies. Adds a reference, which
// FreeLibrary gives back; none with UNCHANGED_REFCOUNT, and with PIN one that lasts as long as the
// process. What isn't loaded gives false, null and ERROR_MOD_NOT_FOUND, PIN with
// UNCHANGED_REFCOUNT, other flags or no place for the handle ERROR_INVALID_PARAMETER.
WINAPI_EXPORT BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module);
// A module by its name as GetModuleHandleW finds it, or loaded: a path names its file, and a name
// without a folder a library of the system, "name" or "libname.so". Adds a reference, which
// FreeLibrary gives back. What can't be loaded is ERROR_MOD_NOT_FOUND.
WINAPI_EXPORT HMODULE WINAPI LoadLibraryW(LPCWSTR name);
// A function that the module itself exports under its C name; null and ERROR_PROC_NOT_FOUND where
// it has none. Of the layer's own calls those of winuser.h, wingdi.h and winspool.h have one; where
// the layer is a static library, those for monitors and the spooler alone. There are no ordinals.
WINAPI_EXPORT FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);
// Gives a reference back; the module goes with the last. What is no module gives false and
// ERROR_MOD_NOT_FOUND.
WINAPI_EXPORT BOOL WINAPI FreeLibrary(HMODULE module);

// The path of a module. Gives its length; a path that doesn't fit is cut
// and terminated, and the call gives size and ERROR_INSUFFICIENT_BUFFER. What is no module gives 0
// and ERROR_MOD_NOT_FOUND.
WINAPI_EXPORT DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);

// Resources, which winapi_host.h gives to a module. A type or name is an integer (MAKEINTRESOURCEW,
// winuser.h) or a text without regard to case, where "#" and decimal digits stand for the integer.
// What isn't there gives null and ERROR_RESOURCE_DATA_NOT_FOUND (the module has none),
// ..._TYPE_...,
// ..._NAME_... or ..._LANG_NOT_FOUND. All stay valid for as long as the module has them.
//
// A resource in several languages is found in the neutral one, else in the lowest.
WINAPI_EXPORT HRSRC WINAPI FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type);
// In one language; 0 means any, as with FindResourceW.
WINAPI_EXPORT HRSRC WINAPI FindResourceExW(HMODULE module, LPCWSTR type, LPCWSTR name,
                                           WORD language);
WINAPI_EXPORT HGLOBAL WINAPI LoadResource(HMODULE module, HRSRC resource);
WINAPI_EXPORT LPVOID WINAPI LockResource(HGLOBAL loaded);
// In bytes.
WINAPI_EXPORT DWORD WINAPI SizeofResource(HMODULE module, HRSRC resource);
