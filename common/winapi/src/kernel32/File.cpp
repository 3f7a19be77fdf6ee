#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <string>

#include "Fail.h"
#include "FileTimes.h"
#include "kernel32/FileInfo.h"
#include "kernel32/PathName.h"

namespace {

constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

FILETIME ToFileTime(const statx_timestamp& time) {
  return ::ToFileTime(ToTicks(time.tv_sec, time.tv_nsec));
}

BOOL Finish(int result, const std::string& path) {
  if (result == 0) return TRUE;
  SetFileError(errno, path);
  return FALSE;
}

}  // namespace

bool ReadFileInfo(const std::string& posixPath, FileInfo& info) {
  constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
  struct statx status;
  const char* const path = posixPath.c_str();
  if (statx(AT_FDCWD, path, 0, kWanted, &status) != 0 &&
      statx(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, kWanted, &status) != 0) {
    return false;
  }
  const bool isFolder = S_ISDIR(status.stx_mode);
  info.attributes = isFolder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
  if ((status.stx_mode & kAnyWrite) == 0) info.attributes |= FILE_ATTRIBUTE_READONLY;
  // Not every file system keeps the time of creation.
  const bool hasCreated = (status.stx_mask & STATX_BTIME) != 0;
  info.created = ToFileTime(hasCreated ? status.stx_btime : status.stx_mtime);
  info.accessed = ToFileTime(status.stx_atime);
  info.written = ToFileTime(status.stx_mtime);
  info.size = isFolder ? 0 : status.stx_size;
  return true;
}

DWORD WINAPI GetFileAttributesW(LPCWSTR path) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return INVALID_FILE_ATTRIBUTES;
  FileInfo info;
  if (ReadFileInfo(posix, info)) return info.attributes;
  SetFileError(errno, posix);
  return INVALID_FILE_ATTRIBUTES;
}

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
  return Finish(unlink(posix.c_str()), posix);
}
