// Building lists of rights.
//
//   EXPLICIT_ACCESS_W entry;
//   BuildExplicitAccessWithNameW(&entry, name, SERVICE_START, SET_ACCESS, NO_INHERITANCE);
//   PACL list = nullptr;
//   if (SetEntriesInAclW(1, &entry, before, &list) == ERROR_SUCCESS) ...
//   LocalFree(list);
#pragma once

#include "accctrl.h"
#include "winerror.h"

// The name isn't copied.
WINAPI_EXPORT void WINAPI BuildExplicitAccessWithNameW(PEXPLICIT_ACCESS_W entry, LPWSTR name,
                                                       DWORD rights, ACCESS_MODE mode,
                                                       DWORD inheritance);

// A list of the entries and of those of an old list, which may be null: denials before permissions,
// the new ones first. The caller frees it by LocalFree. Gives an error code: ERROR_NONE_MAPPED for
// a name that nobody here has ("Everyone", a user or a group), ERROR_INVALID_ACL for an old list
// that isn't whole or has entries of other kinds, ERROR_INVALID_PARAMETER for the modes of
// auditing.
WINAPI_EXPORT DWORD WINAPI SetEntriesInAclW(ULONG count, PEXPLICIT_ACCESS_W entries, PACL old,
                                            PACL* list);
