#include "kernel32/ProfileFile.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <utility>

#include "kernel32/Descriptor.h"
#include "kernel32/FileInfo.h"

namespace winapi {
namespace {

std::string FolderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

// Hidden, and the same for every writer: who holds the lock clears away what a killed one left.
std::string BesideName(const std::string& path, const char* suffix) {
  return FolderOf(path) + '.' + path.substr(path.rfind('/') + 1) + suffix;
}

bool IsSame(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool ReadAll(int file, std::string& bytes) {
  const Transfer read = ReadBytes(file, bytes.data(), bytes.size());
  bytes.resize(read.count);
  errno = read.error;
  return read.error == 0;
}

bool WriteAll(int file, const std::string& bytes) {
  const Transfer written = WriteBytes(file, bytes.data(), bytes.size());
  errno = written.error;
  return written.count == bytes.size();
}

bool MayBeWritten(const std::string& path, const struct stat& status) {
  if (S_ISREG(status.st_mode) && !IsWriteProtected(status.st_mode)) {
    return access(path.c_str(), W_OK) == 0;
  }
  errno = EACCES;
  return false;
}

bool WriteNew(const std::string& path, const std::string& bytes, mode_t mode,
              const struct stat* old) {
  const Descriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
  if (file < 0) return false;
  if (old != nullptr && !CopyRights(*old, file)) return false;
  return WriteAll(file, bytes) && fsync(file) == 0;
}

int LockedDescriptor(const char* path, int flags) {
  const int descriptor = open(path, flags | O_CLOEXEC, 0666);
  if (descriptor < 0) return -1;
  int result;
  do {
    result = flock(descriptor, LOCK_EX);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return descriptor;
  const Descriptor closed(descriptor);
  return -1;
}

}  // namespace

FileStamp::FileStamp(const struct stat& status)
    : m_device(status.st_dev),
      m_inode(status.st_ino),
      m_size(status.st_size),
      m_written(status.st_mtim),
      m_changed(status.st_ctim) {}

bool FileStamp::operator==(const FileStamp& other) const {
  return m_device == other.m_device && m_inode == other.m_inode && m_size == other.m_size &&
         IsSame(m_written, other.m_written) && IsSame(m_changed, other.m_changed);
}

bool FileStamp::IsSettled() const {
  constexpr std::int64_t kRest = 50'000'000;
  constexpr std::int64_t kSecond = 1'000'000'000;
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t age =
      (now.tv_sec - m_changed.tv_sec) * kSecond + now.tv_nsec - m_changed.tv_nsec;
  return age > kRest;
}

std::optional<FileStamp> StampOf(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileStamp(status);
}

bool ReadWholeFile(const std::string& path, std::string& bytes, FileStamp* stamp) {
  // A pipe in the file's place must not be waited for.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (file < 0 || fstat(file, &status) != 0) return false;
  if (!S_ISREG(status.st_mode)) {
    errno = EACCES;
    return false;
  }
  if (status.st_size > INT_MAX) {
    errno = ENOMEM;
    return false;
  }
  if (stamp != nullptr) *stamp = FileStamp(status);
  bytes.resize(static_cast<std::size_t>(status.st_size));
  return ReadAll(file, bytes);
}

std::string BehindLinks(std::string path) {
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks; ++i) {
    char target[PATH_MAX];
    const ssize_t size = readlink(path.c_str(), target, sizeof(target));
    if (size < 0) return path;
    const std::string link(target, static_cast<std::size_t>(size));
    path = link.starts_with('/') ? link : FolderOf(path) + link;
  }
  errno = ELOOP;
  return {};
}

// The folder is what is locked, since the file changes its identity with every write. Where a
// network file system locks no folders, a file beside does instead.
ProfileLock::ProfileLock(const std::string& path)
    : m_descriptor(LockedDescriptor(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY)) {
  if (m_descriptor >= 0) return;
  if (errno != EBADF && errno != ENOLCK && errno != EOPNOTSUPP && errno != EINVAL) return;
  m_descriptor = LockedDescriptor(BesideName(path, ".lock").c_str(), O_RDWR | O_CREAT);
}

ProfileLock::~ProfileLock() {
  if (m_descriptor >= 0) close(m_descriptor);
}

bool ReplaceWholeFile(const std::string& path, const std::string& bytes, mode_t ofNew) {
  struct stat old;
  const bool exists = stat(path.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return false;
  if (exists && !MayBeWritten(path, old)) return false;

  const std::string written = BesideName(path, ".new");
  unlink(written.c_str());
  if (WriteNew(written, bytes, ofNew, exists ? &old : nullptr) &&
      rename(written.c_str(), path.c_str()) == 0) {
    return true;
  }
  const int error = errno;
  unlink(written.c_str());
  errno = error;
  return false;
}

}  // namespace winapi
