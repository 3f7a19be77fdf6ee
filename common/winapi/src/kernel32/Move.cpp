#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "Fail.h"
#include "kernel32/PathName.h"

namespace {

// The target of a rename that only changes case is the source itself, under the name asked for.
std::string WithNameOf(const std::string& posixPath, LPCWSTR path) {
  std::u16string_view name(path);
  name = name.substr(name.find_last_of(u"\\/:") + 1);
  return posixPath.substr(0, posixPath.rfind('/') + 1) + ToUtf8(name);
}

bool IsFolder(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void FlushFolderOf(const std::string& path) {
  const int folder = open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY);
  if (folder < 0) return;
  fsync(folder);
  close(folder);
}

}  // namespace

BOOL WINAPI MoveFileExW(LPCWSTR source, LPCWSTR target, DWORD flags) {
  constexpr DWORD kKnown = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  if ((flags & ~kKnown) != 0 || target == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  const std::string from = ToPosixPath(source);
  if (from.empty()) return FALSE;
  std::string to = ToPosixPath(target);
  if (to.empty()) return FALSE;
  if (to == from) to = WithNameOf(from, target);

  const bool replace = (flags & MOVEFILE_REPLACE_EXISTING) != 0;
  if (replace && to != from && IsFolder(to)) return Fail(ERROR_ACCESS_DENIED);
  const unsigned how = replace || to == from ? 0 : RENAME_NOREPLACE;
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), how) != 0) {
    const int error = errno;
    if (error == EXDEV) return Fail(ERROR_NOT_SAME_DEVICE);
    if (error == EEXIST) return Fail(ERROR_ALREADY_EXISTS);
    SetFileError(error, access(from.c_str(), F_OK) == 0 ? to : from);
    return FALSE;
  }
  if ((flags & MOVEFILE_WRITE_THROUGH) != 0) FlushFolderOf(to);
  return TRUE;
}
