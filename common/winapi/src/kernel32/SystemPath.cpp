#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <string>

#include "Fail.h"
#include "kernel32/PathName.h"
#include "kernel32/UserFolders.h"

UINT WINAPI GetWindowsDirectoryW(LPWSTR buffer, UINT size) {
  return GiveText(FromPosixPath(winapi::kSystemFolder), size, buffer);
}

DWORD WINAPI GetShortPathNameW(LPCWSTR path, LPWSTR shortPath, DWORD size) {
  if (path == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER, DWORD{0});
  }
  const std::string file = ToPosixPath(path);
  if (file.empty()) return 0;
  if (access(file.c_str(), F_OK) != 0) {
    SetFileError(errno, file);
    return 0;
  }
  return GiveText(path, size, shortPath);
}
