// The registry: keys with named values, HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE.
//
// Here both belong to the user. They are empty until a program writes something, and are kept in
// the text file "winapi/registry.txt" of the user's data folder, which every call reads and every
// change writes anew as a whole, so that the programs of a user see one state: the new file takes
// the place of the old one in one step, and who changes holds a lock from its reading on. The file
// goes with the last key. Names are compared without regard to case and keep the case of their
// first use.
#pragma once

#include "minwinbase.h"
#include "windef.h"
#include "winerror.h"

typedef LONG LSTATUS;
typedef struct HKEY__* HKEY;
typedef HKEY* PHKEY;
typedef DWORD REGSAM;
typedef BYTE* LPBYTE;

#define HKEY_CURRENT_USER ((HKEY)(ULONG_PTR)(LONG)0x80000001)
#define HKEY_LOCAL_MACHINE ((HKEY)(ULONG_PTR)(LONG)0x80000002)

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11

#define REG_OPTION_NON_VOLATILE 0x00000000L
#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

// All give ERROR_SUCCESS or an error code and leave the last error alone. ERROR_INVALID_HANDLE is a
// key that isn't open, ERROR_KEY_DELETED one that is open but was deleted, ERROR_FILE_NOT_FOUND a
// subkey or value that isn't there. A file that can't be read whole is never taken for an empty or
// shorter one and stays as it is: ERROR_BADDB is one of another form or cut short,
// ERROR_ACCESS_DENIED one that the user may not read, ERROR_REGISTRY_IO_FAILED a disk that fails.
// ERROR_CANTWRITE is a change that can't be written; what was there before stands.
//
// A null or empty subkey opens the key itself once more. Access holds for the values of the key
// that is opened: KEY_QUERY_VALUE to read, KEY_SET_VALUE to write and delete them. GENERIC_READ,
// GENERIC_WRITE, GENERIC_EXECUTE and GENERIC_ALL stand for KEY_READ, KEY_WRITE, KEY_READ and
// KEY_ALL_ACCESS, and MAXIMUM_ALLOWED for all, since the keys are the user's.
WINAPI_EXPORT LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD options, REGSAM access,
                                           PHKEY result);
// Makes the keys on the way too. The class and the security attributes have no effect here, and
// REG_OPTION_NON_VOLATILE is the one option.
WINAPI_EXPORT LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subKey, DWORD reserved,
                                             LPWSTR className, DWORD options, REGSAM access,
                                             LPSECURITY_ATTRIBUTES security, PHKEY result,
                                             LPDWORD disposition);
// The bytes of a value as they were set, the terminator of a text only if it was among them. A null
// name is the key's unnamed value. Size is in bytes; with a null data it becomes the size needed,
// and so it does with ERROR_MORE_DATA.
WINAPI_EXPORT LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved,
                                              LPDWORD type, LPBYTE data, LPDWORD size);
WINAPI_EXPORT LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type,
                                            const BYTE* data, DWORD size);
WINAPI_EXPORT LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name);
// Deletes a key that has no subkeys; others give ERROR_ACCESS_DENIED.
WINAPI_EXPORT LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subKey);
WINAPI_EXPORT LSTATUS WINAPI RegCloseKey(HKEY key);
