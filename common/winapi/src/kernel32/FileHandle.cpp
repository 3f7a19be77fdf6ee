#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <iterator>
#include <memory>
#include <string>

#include "Fail.h"
#include "kernel32/FileInfo.h"
#include "kernel32/KernelObject.h"
#include "kernel32/PathName.h"

namespace {

using winapi::KernelLock;
using winapi::KernelObject;
using winapi::KernelType;

constexpr DWORD kAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                              FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NORMAL;
constexpr DWORD kHints =
    FILE_FLAG_WRITE_THROUGH | FILE_FLAG_RANDOM_ACCESS | FILE_FLAG_SEQUENTIAL_SCAN;
constexpr DWORD kKnownFlags = kAttributes | kHints | FILE_FLAG_BACKUP_SEMANTICS;
constexpr DWORD kReadWrite = static_cast<DWORD>(GENERIC_READ | GENERIC_WRITE);

// What open needs for each disposition, by its number.
constexpr int kOpenFlags[] = {0, O_CREAT | O_EXCL, O_CREAT | O_TRUNC, 0, O_CREAT, O_TRUNC};

class File : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kFile;

  File(int descriptor, bool writes) : KernelObject(kType), descriptor(descriptor), writes(writes) {}
  ~File() override { close(descriptor); }
  bool IsSignalled(const winapi::Thread&) const override { return true; }

  const int descriptor;
  const bool writes;
};

int AccessFlags(DWORD access) {
  const bool reads = (access & GENERIC_READ) != 0;
  if ((access & GENERIC_WRITE) != 0) return reads ? O_RDWR : O_WRONLY;
  return reads ? O_RDONLY : O_PATH;
}

// A copy, so that the call doesn't hold the lock; -1, and the last error, where there is none.
int DescriptorOf(HANDLE handle, bool mustWrite) {
  const KernelLock lock;
  const File* const file = lock.Find<File>(handle);
  if (file == nullptr) return -1;
  if (mustWrite && !file->writes) {
    SetLastError(ERROR_ACCESS_DENIED);
    return -1;
  }
  return fcntl(file->descriptor, F_DUPFD_CLOEXEC, 0);
}

}  // namespace

HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD, LPSECURITY_ATTRIBUTES,
                          DWORD disposition, DWORD flags, HANDLE) {
  const bool known = disposition >= CREATE_NEW && disposition <= TRUNCATE_EXISTING &&
                     (flags & ~kKnownFlags) == 0 && (access & ~kReadWrite) == 0;
  const bool writes = (access & GENERIC_WRITE) != 0;
  if (!known || (disposition == TRUNCATE_EXISTING && !writes))
    return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) return INVALID_HANDLE_VALUE;

  FileInfo info{};
  const bool exists = ReadFileInfo(posix, info);
  if (exists && disposition == CREATE_NEW) return Fail(ERROR_FILE_EXISTS, INVALID_HANDLE_VALUE);
  const bool isFolder = (info.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (isFolder && (flags & FILE_FLAG_BACKUP_SEMANTICS) == 0)
    return Fail(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
  // The user who may do everything is kept off too.
  const bool changes = writes || disposition == CREATE_ALWAYS;
  if (exists && changes && (info.attributes & FILE_ATTRIBUTE_READONLY) != 0 && !isFolder) {
    return Fail(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
  }

  // What asks only about a file neither makes nor empties it.
  int how = AccessFlags(access);
  if (how == O_PATH && disposition != OPEN_EXISTING) how = O_RDONLY;
  const mode_t mode = (flags & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
  const int descriptor = open(posix.c_str(), how | kOpenFlags[disposition] | O_CLOEXEC, mode);
  if (descriptor < 0) {
    const int error = errno;
    if (error == EEXIST) return Fail(ERROR_FILE_EXISTS, INVALID_HANDLE_VALUE);
    SetFileError(error, posix);
    return INVALID_HANDLE_VALUE;
  }
  auto file = std::make_shared<File>(descriptor, writes);
  const HANDLE handle = KernelLock().Add(std::move(file));
  if (handle == nullptr) return INVALID_HANDLE_VALUE;
  const bool tells = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
  if (tells) SetLastError(exists ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
  return handle;
}

BOOL WINAPI FlushFileBuffers(HANDLE handle) {
  const int descriptor = DescriptorOf(handle, true);
  if (descriptor < 0) return FALSE;
  const int result = fsync(descriptor);
  const int error = errno;
  close(descriptor);
  // What has no disk behind it has nothing to wait for.
  if (result == 0 || error == EINVAL) return TRUE;
  SetLastError(error == ENOSPC || error == EDQUOT ? ERROR_DISK_FULL : ERROR_WRITE_FAULT);
  return FALSE;
}

DWORD WINAPI GetFinalPathNameByHandleW(HANDLE handle, LPWSTR buffer, DWORD size, DWORD flags) {
  if (flags != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const int descriptor = DescriptorOf(handle, false);
  if (descriptor < 0) return 0;
  char name[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = readlink(link.c_str(), name, sizeof(name));
  const int error = errno;
  close(descriptor);
  if (length < 0) {
    SetFileError(error, link);
    return 0;
  }
  const std::string_view path(name, static_cast<std::size_t>(length));
  return GiveText(u"\\\\?\\" + FromPosixPath(path), size, buffer);
}
