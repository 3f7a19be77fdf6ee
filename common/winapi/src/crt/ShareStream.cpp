// Streams that keep others off their file.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <tchar.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "kernel32/PathName.h"

namespace {

// Whether the path still leads to the open file: who held it may have deleted it.
bool IsCurrent(int descriptor, const std::string& path) {
  struct stat open;
  struct stat named;
  return fstat(descriptor, &open) == 0 && stat(path.c_str(), &named) == 0 &&
         open.st_ino == named.st_ino && open.st_dev == named.st_dev;
}

int Refuse(int descriptor, int error) {
  if (descriptor >= 0) close(descriptor);
  errno = error;
  return -1;
}

int OpenAlone(const std::string& path, int flags) {
  for (;;) {
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC, 0666);
    if (descriptor < 0) return Refuse(descriptor, errno == EISDIR ? EACCES : errno);
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
      return Refuse(descriptor, errno == EWOULDBLOCK ? EACCES : errno);
    }
    if (IsCurrent(descriptor, path)) return descriptor;
    close(descriptor);
  }
}

}  // namespace

std::FILE* _wfsopen(const char16_t* path, const char16_t* mode, int share) {
  if (share == _SH_DENYNO) return _wfopen(path, mode);
  const std::u16string_view wanted = mode == nullptr ? u"" : mode;
  const bool reads = wanted == u"rb";
  if (path == nullptr || share != _SH_DENYRW || (!reads && wanted != u"wb")) {
    errno = EINVAL;
    return nullptr;
  }
  const std::string posix = ToPosixPath(path);
  if (posix.empty()) {
    errno = ENOENT;
    return nullptr;
  }
  const int descriptor = OpenAlone(posix, reads ? O_RDONLY : O_WRONLY | O_CREAT);
  // Only now that nobody else has it is it emptied.
  if (descriptor < 0 || (!reads && ftruncate(descriptor, 0) != 0)) {
    const int error = errno;
    SetFileError(error, posix);
    Refuse(descriptor, error);
    return nullptr;
  }
  std::FILE* const file = fdopen(descriptor, reads ? "r" : "w");
  if (file == nullptr) Refuse(descriptor, errno);
  return file;
}
