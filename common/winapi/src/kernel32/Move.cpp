#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <string>

#include "Fail.h"
#include "kernel32/Copy.h"
#include "kernel32/FileInfo.h"
#include "kernel32/OpenFile.h"
#include "kernel32/PathName.h"

namespace {

// The target of a rename that only changes case is the source itself, under the name asked for.
std::string WithNameOf(const std::string& posixPath, LPCWSTR path) {
  std::u16string name = FullPath(path);
  if (name.back() == '\\') name.pop_back();
  return posixPath.substr(0, posixPath.rfind('/') + 1) + ToUtf8(name.substr(name.rfind('\\') + 1));
}

void FlushFolderOf(const std::string& path) {
  const winapi::Descriptor folder(
      open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder >= 0) fsync(folder);
}

// What keeps a target from being replaced; 0 where nothing does, be it that there is none.
DWORD RefusalOf(const std::string& to, const struct stat& source, bool replace) {
  struct stat target;
  if (stat(to.c_str(), &target) != 0) return 0;
  if (!replace) return ERROR_ALREADY_EXISTS;
  const bool folders = S_ISDIR(source.st_mode) || S_ISDIR(target.st_mode);
  if (folders || IsWriteProtected(target.st_mode)) return ERROR_ACCESS_DENIED;
  return winapi::DeletionGate(to).Allows() ? 0 : ERROR_ACCESS_DENIED;
}

// To another file system; a source that can't be deleted stays beside its copy.
BOOL MoveByCopy(const std::string& from, const std::string& to, const struct stat& source,
                bool replace) {
  if (!S_ISREG(source.st_mode)) return Fail(ERROR_ACCESS_DENIED);
  const winapi::Descriptor file(open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (file < 0 || !winapi::CopyWhole({file, to, source, replace, true})) {
    SetFileError(errno, file < 0 ? from : to);
    return FALSE;
  }
  FlushFolderOf(to);
  unlink(from.c_str());
  return TRUE;
}

}  // namespace

BOOL WINAPI MoveFileExW(LPCWSTR source, LPCWSTR target, DWORD flags) {
  constexpr DWORD kKnown =
      MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH;
  if ((flags & ~kKnown) != 0 || target == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  const std::string from = ToPosixPath(source);
  if (from.empty()) return FALSE;
  std::string to = ToPosixPath(target);
  if (to.empty()) return FALSE;
  const bool isSame = to == from;
  if (isSame) to = WithNameOf(from, target);

  struct stat status;
  if (lstat(from.c_str(), &status) != 0) {
    SetFileError(errno, from);
    return FALSE;
  }
  const bool replace = (flags & MOVEFILE_REPLACE_EXISTING) != 0;
  const DWORD refusal = isSame ? 0 : RefusalOf(to, status, replace);
  if (refusal != 0) return Fail(refusal);
  const winapi::DeletionGate gate(from);
  if (!gate.Allows()) return Fail(ERROR_SHARING_VIOLATION);
  const unsigned how = replace || isSame ? 0 : RENAME_NOREPLACE;
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), how) == 0) {
    if ((flags & MOVEFILE_WRITE_THROUGH) != 0) FlushFolderOf(to);
    return TRUE;
  }
  if (errno == EXDEV && (flags & MOVEFILE_COPY_ALLOWED) != 0) {
    return MoveByCopy(from, to, status, replace);
  }
  if (errno == EXDEV) return Fail(ERROR_NOT_SAME_DEVICE);
  // Into itself.
  if (errno == EINVAL) return Fail(ERROR_INVALID_PARAMETER);
  SetFileError(errno, to);
  return FALSE;
}

BOOL WINAPI MoveFileW(LPCWSTR source, LPCWSTR target) {
  return MoveFileExW(source, target, MOVEFILE_COPY_ALLOWED);
}
