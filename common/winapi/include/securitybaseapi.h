// Who may do what with a file or a service.
//
// A file's descriptor holds the owner, the group and the mode of the file. It is of use to these
// two calls alone, which take all of it whatever information asks for, the owner only where that is
// allowed.
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

// Identifiers of users and groups, for asking whether the user of this process is one of a group.
typedef struct _SID_IDENTIFIER_AUTHORITY {
  BYTE Value[6];
} SID_IDENTIFIER_AUTHORITY, *PSID_IDENTIFIER_AUTHORITY;
#define SECURITY_NT_AUTHORITY \
  { 0, 0, 0, 0, 0, 5 }
#define SECURITY_BUILTIN_DOMAIN_RID 0x00000020
#define DOMAIN_ALIAS_RID_ADMINS 0x00000220

// Of 1 to 8 numbers behind the authority; FreeSid gives it back.
WINAPI_EXPORT BOOL WINAPI AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count,
                                                   DWORD first, DWORD second, DWORD third,
                                                   DWORD fourth, DWORD fifth, DWORD sixth,
                                                   DWORD seventh, DWORD eighth, PSID* sid);
WINAPI_EXPORT PVOID WINAPI FreeSid(PSID sid);
// Root is in the administrators' group (5, 32, 544) and is the system (5, 18); everybody is of
// everyone (1, 0) and of the authenticated users (5, 11). The users and groups of this system are
// (22, 1, number) and (22, 2, number). The token is null, which means the caller's own; others are
// ERROR_INVALID_HANDLE.
WINAPI_EXPORT BOOL WINAPI CheckTokenMembership(HANDLE token, PSID sid, BOOL* isMember);

// Descriptors with a list of rights, as services have them. The new one is empty; it points at the
// list that it is given, which may be null: then everybody has every right. Other revisions than
// SECURITY_DESCRIPTOR_REVISION are ERROR_UNKNOWN_REVISION, and one whose parts are in one block
// can't be changed (ERROR_INVALID_SECURITY_DESCR).
WINAPI_EXPORT BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor,
                                                       DWORD revision);
WINAPI_EXPORT BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL isPresent,
                                                    PACL list, BOOL isDefaulted);
// Where no list is present the other two stay as they were.
WINAPI_EXPORT BOOL WINAPI GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor,
                                                    BOOL* isPresent, PACL* list, BOOL* isDefaulted);
