// How a call of the layer fails.
#pragma once

#include <windows.h>

// Sets the last error, and gives what a call gives when it fails: 0, false, null, or another value.
template <class Result = int>
Result Fail(DWORD error, Result result = {}) {
  SetLastError(error);
  return result;
}
