// Device contexts. There is nothing here that would make one, so every handle of one is
// ERROR_INVALID_HANDLE.
#pragma once

#include "windef.h"

extern "C" {

#define ERROR 0
#define NULLREGION 1
#define SIMPLEREGION 2
#define COMPLEXREGION 3
#define RGN_ERROR ERROR

// The rectangle around what can be drawn on, and where the context begins on the screen.
WINAPI_EXPORT int WINAPI GetClipBox(HDC context, LPRECT box);
WINAPI_EXPORT BOOL WINAPI GetDCOrgEx(HDC context, LPPOINT origin);
}
