#include "kernel32/Copy.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <cerrno>
#include <vector>

#include "Fail.h"
#include "kernel32/FileInfo.h"
#include "kernel32/OpenFile.h"
#include "kernel32/PathName.h"
#include "kernel32/ProfileFile.h"

namespace winapi {
namespace {

// No other copy's, by process and counted within it.
std::string BesideName(const std::string& path) {
  static constinit std::atomic<unsigned> count{0};
  const std::size_t name = path.rfind('/') + 1;
  return path.substr(0, name) + ".copy-" + std::to_string(getpid()) + '-' + std::to_string(++count);
}

bool CopyContent(int from, int to) {
  constexpr std::size_t kBlock = 0x100000;
  std::vector<char> block(kBlock);
  for (;;) {
    const Transfer read = ReadBytes(from, block.data(), kBlock);
    const Transfer written = WriteBytes(to, block.data(), read.count);
    errno = read.error != 0 ? read.error : written.error;
    if (read.error != 0 || written.count < read.count) return false;
    if (read.count < kBlock) return true;
  }
}

bool WriteCopy(const CopyRequest& request, int to) {
  struct stat source;
  if (fstat(request.from, &source) != 0 || !CopyContent(request.from, to)) return false;
  const timespec times[] = {{0, UTIME_OMIT}, source.st_mtim};
  if (futimens(to, times) != 0 || !CopyRights(request.rights, to)) return false;
  return !request.flushes || fsync(to) == 0;
}

// Which rights a copy gets: those of the file that it replaces, or else the source's mode.
struct stat RightsOf(const struct stat& source, const struct stat* replaced) {
  struct stat rights = replaced == nullptr ? source : *replaced;
  if (replaced == nullptr) {
    rights.st_uid = geteuid();
    rights.st_gid = getegid();
    rights.st_mode &= 0777;
  }
  if (IsWriteProtected(source.st_mode)) rights.st_mode &= ~kAnyWrite;
  return rights;
}

// Whether a file may be overwritten; it must not be open, so that it can't be the source either.
DWORD RefusalOf(const std::string& path, const struct stat& status, bool failIfExists) {
  if (failIfExists) return ERROR_FILE_EXISTS;
  if (!S_ISREG(status.st_mode) || IsWriteProtected(status.st_mode)) return ERROR_ACCESS_DENIED;
  const OpenRequest writing = {static_cast<DWORD>(GENERIC_WRITE), 0, OPEN_EXISTING, 0};
  return OpenFile(path, writing).file < 0 ? GetLastError() : 0;
}

}  // namespace

bool CopyWhole(const CopyRequest& request) {
  std::string written;
  int made;
  // An earlier process of the same number may have been ended in the middle of a copy.
  do {
    written = BesideName(request.to);
    made = open(written.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  } while (made < 0 && errno == EEXIST);
  if (made < 0) return false;
  const Descriptor to(made);
  const unsigned how = request.replaces ? 0 : RENAME_NOREPLACE;
  if (WriteCopy(request, to) &&
      renameat2(AT_FDCWD, written.c_str(), AT_FDCWD, request.to.c_str(), how) == 0) {
    return true;
  }
  const int error = errno;
  unlink(written.c_str());
  errno = error;
  return false;
}

}  // namespace winapi

BOOL WINAPI CopyFileW(LPCWSTR source, LPCWSTR target, BOOL failIfExists) {
  const std::string from = ToPosixPath(source);
  if (from.empty()) return FALSE;
  const std::string asked = ToPosixPath(target);
  if (asked.empty()) return FALSE;
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const winapi::OpenedFile opened = winapi::OpenFile(
      from, {static_cast<DWORD>(GENERIC_READ), kShareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL});
  if (opened.file < 0) return FALSE;

  const std::string to = winapi::BehindLinks(asked);
  struct stat status;
  struct stat replaced;
  const bool exists = stat(to.c_str(), &replaced) == 0;
  if (fstat(opened.file, &status) != 0) return Fail(ERROR_GEN_FAILURE);
  const DWORD refusal = exists ? winapi::RefusalOf(to, replaced, failIfExists != FALSE) : 0;
  if (refusal != 0) return Fail(refusal);
  const auto rights = winapi::RightsOf(status, exists ? &replaced : nullptr);
  if (winapi::CopyWhole({opened.file, to, rights, failIfExists == FALSE, false})) return TRUE;
  if (errno == EEXIST) return Fail(ERROR_FILE_EXISTS);
  SetFileError(errno, to);
  return FALSE;
}
