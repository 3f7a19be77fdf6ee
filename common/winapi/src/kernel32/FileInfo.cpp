// What is known of a file beside its content: attributes and times.
#include "kernel32/FileInfo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <string>

#include "Fail.h"
#include "FileTimes.h"
#include "kernel32/FileObject.h"
#include "kernel32/PathName.h"

namespace {

constexpr DWORD kNotKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

FILETIME ToFileTime(const statx_timestamp& time) {
  return ::ToFileTime(ToTicks(time.tv_sec, time.tv_nsec));
}

// Ticks of zero, as no time at all, leave a time as it is.
timespec ToTimespec(const FILETIME* time) {
  if (time == nullptr || ToTicks(*time) == 0) return {0, UTIME_OMIT};
  const auto ticks = static_cast<std::int64_t>(ToTicks(*time));
  return {ticks / kTicksPerSecond - kSecondsTo1970, ticks % kTicksPerSecond * 100};
}

bool CanBeKept(const FILETIME* time) {
  return time == nullptr || static_cast<std::int64_t>(ToTicks(*time)) >= 0;
}

bool ReadStatus(int folder, const char* path, int flags, FileInfo& info) {
  struct statx status;
  if (statx(folder, path, flags, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) return false;
  const bool isFolder = S_ISDIR(status.stx_mode);
  info.attributes = isFolder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
  if (IsWriteProtected(status.stx_mode)) info.attributes |= FILE_ATTRIBUTE_READONLY;
  // Not every file system keeps the time of creation.
  const bool hasCreated = (status.stx_mask & STATX_BTIME) != 0;
  info.created = ToFileTime(hasCreated ? status.stx_btime : status.stx_mtime);
  info.accessed = ToFileTime(status.stx_atime);
  info.written = ToFileTime(status.stx_mtime);
  info.size = isFolder ? 0 : status.stx_size;
  return true;
}

bool FindInfo(LPCWSTR path, FileInfo& info) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return false;
  if (ReadFileInfo(posix, info)) return true;
  SetFileError(errno, posix);
  return false;
}

}  // namespace

bool ReadFileInfo(const std::string& posixPath, FileInfo& info) {
  const char* const path = posixPath.c_str();
  return ReadStatus(AT_FDCWD, path, 0, info) ||
         ReadStatus(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, info);
}

bool CopyRights(const struct stat& from, int file) {
  mode_t mode = from.st_mode & 07777;
  const bool sameGroup = fchown(file, from.st_uid, from.st_gid) == 0 ||
                         fchown(file, static_cast<uid_t>(-1), from.st_gid) == 0;
  if (!sameGroup) mode &= ~static_cast<mode_t>(S_IRWXG | S_ISUID | S_ISGID);
  return fchmod(file, mode) == 0;
}

DWORD WINAPI GetFileAttributesW(LPCWSTR path) {
  FileInfo info;
  return FindInfo(path, info) ? info.attributes : INVALID_FILE_ATTRIBUTES;
}

BOOL WINAPI GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
  if (level != GetFileExInfoStandard || data == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  FileInfo info;
  if (!FindInfo(path, info)) return FALSE;
  *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = {info.attributes,
                                                    info.created,
                                                    info.accessed,
                                                    info.written,
                                                    static_cast<DWORD>(info.size >> 32),
                                                    static_cast<DWORD>(info.size)};
  return TRUE;
}

BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return FALSE;
  struct stat status;
  if (stat(posix.c_str(), &status) != 0) {
    SetFileError(errno, posix);
    return FALSE;
  }
  if ((attributes & kNotKept) != 0) return Fail(ERROR_NOT_SUPPORTED);
  const bool isFolder = S_ISDIR(status.st_mode);
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !isFolder) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const bool protects = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  if (protects == IsWriteProtected(status.st_mode)) return TRUE;
  if (protects && isFolder) return Fail(ERROR_NOT_SUPPORTED);
  // Who else might write before isn't known any more.
  const mode_t mode = status.st_mode & 07777;
  if (chmod(posix.c_str(), protects ? mode & ~kAnyWrite : mode | S_IWUSR) == 0) return TRUE;
  SetFileError(errno, posix);
  return FALSE;
}

BOOL WINAPI GetFileTime(HANDLE handle, LPFILETIME created, LPFILETIME accessed,
                        LPFILETIME written) {
  const auto file = winapi::FindFile(handle, 0);
  if (file == nullptr) return FALSE;
  FileInfo info;
  if (!ReadStatus(file->descriptor, "", AT_EMPTY_PATH, info)) return Fail(ERROR_GEN_FAILURE);
  if (created != nullptr) *created = info.created;
  if (accessed != nullptr) *accessed = info.accessed;
  if (written != nullptr) *written = info.written;
  return TRUE;
}

BOOL WINAPI SetFileTime(HANDLE handle, const FILETIME* created, const FILETIME* accessed,
                        const FILETIME* written) {
  const auto file = winapi::FindFile(handle, GENERIC_WRITE | FILE_WRITE_ATTRIBUTES);
  if (file == nullptr) return FALSE;
  const bool setsCreated = created != nullptr && ToTicks(*created) != 0;
  if (setsCreated || !CanBeKept(accessed) || !CanBeKept(written)) return Fail(ERROR_NOT_SUPPORTED);
  const timespec times[] = {ToTimespec(accessed), ToTimespec(written)};
  if (futimens(file->descriptor, times) == 0) return TRUE;
  SetFileError(errno, {});
  return FALSE;
}
