#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "Fail.h"
#include "kernel32/PathName.h"

namespace {

struct Descriptor {
  uid_t owner;
  gid_t group;
  mode_t mode;
};

constexpr mode_t kRights = 07777;

}  // namespace

BOOL WINAPI GetFileSecurityW(LPCWSTR path, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR descriptor,
                             DWORD length, DWORD* needed) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return FALSE;
  struct stat status;
  if (stat(posix.c_str(), &status) != 0) {
    SetFileError(errno, posix);
    return FALSE;
  }
  *needed = sizeof(Descriptor);
  if (length < sizeof(Descriptor)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  const Descriptor found = {status.st_uid, status.st_gid, status.st_mode & kRights};
  std::memcpy(descriptor, &found, sizeof(found));
  return TRUE;
}

BOOL WINAPI SetFileSecurityW(LPCWSTR path, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR descriptor) {
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return FALSE;
  Descriptor wanted;
  std::memcpy(&wanted, descriptor, sizeof(wanted));
  // A group that can't be given gets no rights of its own; the owner of the others stays.
  const bool sameGroup = chown(posix.c_str(), wanted.owner, wanted.group) == 0 ||
                         chown(posix.c_str(), static_cast<uid_t>(-1), wanted.group) == 0;
  if (!sameGroup) wanted.mode &= ~static_cast<mode_t>(S_IRWXG | S_ISUID | S_ISGID);
  if (chmod(posix.c_str(), wanted.mode) == 0) return TRUE;
  SetFileError(errno, posix);
  return FALSE;
}
