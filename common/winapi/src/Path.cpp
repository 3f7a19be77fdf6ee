#include <limits.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <cstdlib>

#include "PathName.h"

DWORD WINAPI GetCurrentDirectoryW(DWORD size, LPWSTR buffer) {
  char folder[PATH_MAX];
  if (getcwd(folder, sizeof(folder)) == nullptr) {
    SetFileError(errno, "");
    return 0;
  }
  return GiveText(FromPosixPath(folder), size, buffer);
}

DWORD WINAPI GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* filePart) {
  if (path == nullptr || *path == 0) {
    SetLastError(ERROR_INVALID_NAME);
    return 0;
  }
  const std::u16string full = FullPath(path);
  const DWORD result = GiveText(full, size, buffer);
  if (filePart != nullptr && result < size) {
    const std::size_t name = full.find_last_of('\\') + 1;
    *filePart = name == full.size() ? nullptr : buffer + name;
  }
  return result;
}

DWORD WINAPI GetTempPathW(DWORD size, LPWSTR buffer) {
  const char* const set = std::getenv("TMPDIR");
  std::u16string folder = FromPosixPath(set != nullptr && *set == '/' ? set : "/tmp");
  if (folder.back() != '\\') folder += '\\';
  return GiveText(folder, size, buffer);
}
