// Device contexts, of which there are none.
#include <windows.h>

#include "Fail.h"

int WINAPI GetClipBox(HDC, LPRECT) {
  return Fail(ERROR_INVALID_HANDLE, ERROR);
}

BOOL WINAPI GetDCOrgEx(HDC, LPPOINT) {
  return Fail(ERROR_INVALID_HANDLE);
}
