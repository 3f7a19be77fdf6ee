// Why a call failed.
#pragma once

#include <windows.h>

// The last error of a call that failed, which is then forgotten; ERROR_SUCCESS of one that worked.
template <class Result>
long ErrorOf(Result result, Result failure = {}) {
  const DWORD error = GetLastError();
  SetLastError(0);
  return result == failure ? static_cast<long>(error) : ERROR_SUCCESS;
}
