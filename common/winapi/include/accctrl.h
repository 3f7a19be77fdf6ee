// The entries of lists of rights, as they are asked for.
#pragma once

#include "winnt.h"

typedef enum _ACCESS_MODE {
  NOT_USED_ACCESS = 0,
  GRANT_ACCESS,   // these rights too
  SET_ACCESS,     // these rights in place of those before
  DENY_ACCESS,    // never these rights
  REVOKE_ACCESS,  // no entry any more
  SET_AUDIT_SUCCESS,
  SET_AUDIT_FAILURE
} ACCESS_MODE;

#define NO_INHERITANCE 0x0

typedef enum _MULTIPLE_TRUSTEE_OPERATION {
  NO_MULTIPLE_TRUSTEE,
  TRUSTEE_IS_IMPERSONATE
} MULTIPLE_TRUSTEE_OPERATION;
typedef enum _TRUSTEE_FORM { TRUSTEE_IS_SID, TRUSTEE_IS_NAME } TRUSTEE_FORM;
typedef enum _TRUSTEE_TYPE { TRUSTEE_IS_UNKNOWN, TRUSTEE_IS_USER, TRUSTEE_IS_GROUP } TRUSTEE_TYPE;

// Whom an entry is for: by a name, or by an identifier in the place of the name.
typedef struct _TRUSTEE_W {
  struct _TRUSTEE_W* pMultipleTrustee;
  MULTIPLE_TRUSTEE_OPERATION MultipleTrusteeOperation;
  TRUSTEE_FORM TrusteeForm;
  TRUSTEE_TYPE TrusteeType;
  LPWSTR ptstrName;
} TRUSTEE_W;

typedef struct _EXPLICIT_ACCESS_W {
  DWORD grfAccessPermissions;
  ACCESS_MODE grfAccessMode;
  DWORD grfInheritance;
  TRUSTEE_W Trustee;
} EXPLICIT_ACCESS_W, *PEXPLICIT_ACCESS_W;
