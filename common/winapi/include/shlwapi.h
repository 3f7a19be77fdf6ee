// Small helpers of the shell.
#pragma once

#include "winreg.h"

// Opens a key, reads a value and closes the key. The result is an error code, as those of
// RegOpenKeyExW and RegQueryValueExW. Type, data and size may be null.
WINAPI_EXPORT LSTATUS WINAPI SHGetValueW(HKEY key, LPCWSTR subKey, LPCWSTR name, DWORD* type,
                                         void* data, DWORD* size);
