#include <limits.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <cstdlib>

#include "Fail.h"
#include "kernel32/Drive.h"
#include "kernel32/PathName.h"

DWORD WINAPI GetCurrentDirectoryW(DWORD size, LPWSTR buffer) {
  const std::u16string folder = CurrentFolder();
  if (!folder.empty()) return GiveText(folder, size, buffer);
  SetFileError(errno, "");
  return 0;
}

BOOL WINAPI SetCurrentDirectoryW(LPCWSTR path) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return FALSE;
  const char16_t drive = FullPath(path)[0];
  if (chdir(posix.c_str()) != 0) {
    if (errno == ENOTDIR && access(posix.c_str(), F_OK) == 0) {
      SetLastError(ERROR_DIRECTORY);
    } else {
      SetFileError(errno, posix);
    }
    return FALSE;
  }
  SetCurrentDrive(drive);
  return TRUE;
}

DWORD WINAPI GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* filePart) {
  if (path == nullptr || *path == 0) {
    return Fail(ERROR_INVALID_NAME, DWORD{0});
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
