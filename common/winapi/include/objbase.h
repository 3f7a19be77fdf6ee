// Identifiers of COM.
#pragma once

#include "objidl.h"

// A new identifier, of random bits. E_POINTER for null, E_FAIL where the system has none.
WINAPI_EXPORT HRESULT WINAPI CoCreateGuid(GUID* id);
