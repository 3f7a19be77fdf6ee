#include "kernel32/OpenFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <windows.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "Fail.h"
#include "kernel32/FileInfo.h"
#include "kernel32/FileObject.h"
#include "kernel32/PathName.h"
#include "kernel32/Pipe.h"

namespace winapi {
namespace {

constexpr DWORD kRead = GENERIC_READ;
constexpr DWORD kWrite = GENERIC_WRITE;
constexpr DWORD kKnownAccess =
    kRead | kWrite | DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
constexpr DWORD kAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                              FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                              FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_TEMPORARY;
constexpr DWORD kHints =
    FILE_FLAG_WRITE_THROUGH | FILE_FLAG_RANDOM_ACCESS | FILE_FLAG_SEQUENTIAL_SCAN;
constexpr DWORD kKnownFlags = kAttributes | kHints | FILE_FLAG_BACKUP_SEMANTICS;

// Sharing locks need a file that is open for reading, whatever is to be done with it. What only
// asks about a file doesn't open its content. Nothing waits for the other end of a pipe.
int OpenFlags(const OpenRequest& request) {
  constexpr int kAlways = O_CLOEXEC | O_NONBLOCK;
  if (request.Changes()) return O_RDWR | kAlways;
  const bool onlyAsks = (request.access & ~FILE_READ_ATTRIBUTES) == 0 && !request.MayMake();
  return (onlyAsks ? O_PATH : O_RDONLY) | kAlways;
}

int OpenThere(const std::string& path, const OpenRequest& request) {
  const int flags = OpenFlags(request);
  const int file = open(path.c_str(), flags);
  if (file >= 0 || (flags & O_RDWR) == 0) return file;
  if (errno == EISDIR && (request.flags & FILE_FLAG_BACKUP_SEMANTICS) != 0 && !request.Empties()) {
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  }
  if (errno != EACCES || (request.access & kRead) != 0) return file;
  return open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
}

bool IsLink(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

// Opens the file that is there or makes one, and knows which; others may make or delete it
// meanwhile. Fails with errno.
OpenedFile OpenOrMake(const std::string& path, const OpenRequest& request) {
  const mode_t mode = (request.flags & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
  const bool alone = request.disposition == CREATE_NEW;
  for (;;) {
    if (!alone) {
      Descriptor file(OpenThere(path, request));
      if (file >= 0 || errno != ENOENT || !request.MayMake()) return {std::move(file)};
    }
    // A link to what isn't there yet is no file in the way.
    const int exclusive = !alone && IsLink(path) ? 0 : O_EXCL;
    const int made = open(path.c_str(), OpenFlags(request) | O_CREAT | exclusive, mode);
    if (made >= 0 || errno != EEXIST || alone) return {Descriptor(made), made >= 0};
  }
}

// What an open file may not be opened for; 0 where it may.
DWORD Refusal(const struct stat& status, const OpenRequest& request, bool made) {
  if (S_ISDIR(status.st_mode)) {
    const bool wanted = (request.flags & FILE_FLAG_BACKUP_SEMANTICS) != 0 && !request.Empties();
    return wanted ? 0 : ERROR_ACCESS_DENIED;
  }
  // Pipes and sockets have neither a size nor a place.
  if (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) return ERROR_ACCESS_DENIED;
  // The user who may do everything is kept off too.
  if (!made && request.Changes() && IsWriteProtected(status.st_mode)) return ERROR_ACCESS_DENIED;
  return 0;
}

DWORD Empty(int file, const struct stat& status, const OpenRequest& request,
            const ShareGate& gate) {
  if (gate.IsMapped()) return ERROR_USER_MAPPED_FILE;
  const bool protects = (request.flags & FILE_ATTRIBUTE_READONLY) != 0;
  if (ftruncate(file, 0) != 0 && errno != EINVAL) return ERROR_WRITE_FAULT;
  if (!protects || fchmod(file, status.st_mode & ~kAnyWrite & 07777) == 0) return 0;
  return ERROR_ACCESS_DENIED;
}

enum class Outcome { kOpen, kGone, kFailed };

// Takes its share of an open file and empties it. Between the open and this the file may have been
// deleted.
Outcome Claim(const OpenedFile& opened, const OpenRequest& request, DWORD& error) {
  struct stat status;
  if (fstat(opened.file, &status) != 0) {
    error = ERROR_GEN_FAILURE;
    return Outcome::kFailed;
  }
  error = Refusal(status, request, opened.made);
  if (error != 0) return Outcome::kFailed;
  if (!S_ISREG(status.st_mode)) {
    // A device is waited for.
    fcntl(opened.file, F_SETFL, fcntl(opened.file, F_GETFL) & ~O_NONBLOCK);
    return Outcome::kOpen;
  }
  const ShareClaim claim = request.Claim();
  ShareClaim asked = claim;
  if (request.Empties() && !opened.made) asked.uses |= FILE_SHARE_WRITE;
  if (asked.uses == 0) return Outcome::kOpen;

  const ShareGate gate(opened.file);
  // Who makes a file has it first, even if another has opened it in between.
  if (!opened.made && !gate.Allows(asked)) {
    error = ERROR_SHARING_VIOLATION;
    return Outcome::kFailed;
  }
  if (fstat(opened.file, &status) == 0 && status.st_nlink == 0) return Outcome::kGone;
  if (request.Empties() && !opened.made) error = Empty(opened.file, status, request, gate);
  if (error != 0) return Outcome::kFailed;
  gate.Hold(claim);
  return Outcome::kOpen;
}

}  // namespace

bool OpenRequest::IsKnown() const {
  return disposition >= CREATE_NEW && disposition <= TRUNCATE_EXISTING &&
         (flags & ~kKnownFlags) == 0 && (access & ~kKnownAccess) == 0 &&
         (disposition != TRUNCATE_EXISTING || (access & kWrite) != 0);
}

bool OpenRequest::MayMake() const {
  return disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
}

bool OpenRequest::Empties() const {
  return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
}

bool OpenRequest::Changes() const {
  return Empties() || (access & kWrite) != 0;
}

ShareClaim OpenRequest::Claim() const {
  DWORD uses = 0;
  if ((access & kRead) != 0) uses |= FILE_SHARE_READ;
  if ((access & kWrite) != 0) uses |= FILE_SHARE_WRITE;
  if ((access & DELETE) != 0) uses |= FILE_SHARE_DELETE;
  return {uses, share};
}

OpenedFile OpenFile(const std::string& posixPath, const OpenRequest& request) {
  for (;;) {
    OpenedFile opened = OpenOrMake(posixPath, request);
    if (opened.file < 0) {
      if (errno == EEXIST) {
        SetLastError(ERROR_FILE_EXISTS);
      } else {
        SetFileError(errno, posixPath);
      }
      return opened;
    }
    DWORD error = 0;
    const Outcome outcome = Claim(opened, request, error);
    if (outcome == Outcome::kOpen) return opened;
    if (outcome == Outcome::kFailed) return Fail(error, OpenedFile());
  }
}

std::shared_ptr<File> FindFile(HANDLE handle, DWORD rights) {
  const KernelLock lock;
  File* const file = lock.Find<File>(handle);
  if (file == nullptr) return nullptr;
  if (rights == 0 || (file->rights & rights) != 0) {
    return std::static_pointer_cast<File>(file->shared_from_this());
  }
  SetLastError(ERROR_ACCESS_DENIED);
  return nullptr;
}

}  // namespace winapi

HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES,
                          DWORD disposition, DWORD flags, HANDLE) {
  if (winapi::IsPipePath(path)) return winapi::OpenPipe(path, access, disposition);
  const winapi::OpenRequest request = {access, share, disposition, flags};
  if (!request.IsKnown()) return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return INVALID_HANDLE_VALUE;
  winapi::OpenedFile opened = winapi::OpenFile(posix, request);
  if (opened.file < 0) return INVALID_HANDLE_VALUE;
  const HANDLE handle =
      winapi::KernelLock().Add(std::make_shared<winapi::File>(std::move(opened.file), access));
  if (handle == nullptr) return INVALID_HANDLE_VALUE;
  const bool tells = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
  if (tells) SetLastError(opened.made ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS);
  return handle;
}

DWORD WINAPI GetFinalPathNameByHandleW(HANDLE handle, LPWSTR buffer, DWORD size, DWORD flags) {
  if (flags != 0) return Fail(ERROR_INVALID_PARAMETER, DWORD{0});
  const auto file = winapi::FindFile(handle, 0);
  if (file == nullptr) return 0;
  char name[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(file->descriptor);
  const ssize_t length = readlink(link.c_str(), name, sizeof(name));
  if (length < 0) {
    SetFileError(errno, link);
    return 0;
  }
  const std::string_view path(name, static_cast<std::size_t>(length));
  return GiveText(u"\\\\?\\" + FromPosixPath(path), size, buffer);
}
