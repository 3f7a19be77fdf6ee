// Folders, and what is deleted.
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <string>

#include "Fail.h"
#include "kernel32/FileInfo.h"
#include "kernel32/PathName.h"
#include "kernel32/Sharing.h"

namespace {

BOOL Finish(int result, const std::string& path) {
  if (result == 0) return TRUE;
  SetFileError(errno, path);
  return FALSE;
}

// Where the process is.
bool IsCurrentFolder(const std::string& path) {
  struct stat folder;
  struct stat current;
  return stat(path.c_str(), &folder) == 0 && stat(".", &current) == 0 &&
         folder.st_ino == current.st_ino && folder.st_dev == current.st_dev;
}

}  // namespace

BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return FALSE;
  return Finish(mkdir(posix.c_str(), 0777), posix);
}

BOOL WINAPI RemoveDirectoryW(LPCWSTR path) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return FALSE;
  FileInfo info;
  if (ReadFileInfo(posix, info) && (info.attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    return Fail(ERROR_DIRECTORY);
  }
  if (IsCurrentFolder(posix)) return Fail(ERROR_SHARING_VIOLATION);
  return Finish(rmdir(posix.c_str()), posix);
}

BOOL WINAPI DeleteFileW(LPCWSTR path) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return FALSE;
  FileInfo info;
  if (ReadFileInfo(posix, info) &&
      (info.attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) {
    return Fail(ERROR_ACCESS_DENIED);
  }
  const winapi::DeletionGate gate(posix);
  if (!gate.Allows()) return Fail(ERROR_SHARING_VIOLATION);
  return Finish(unlink(posix.c_str()), posix);
}
