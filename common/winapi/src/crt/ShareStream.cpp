// Streams that keep others off their file.
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "kernel32/OpenFile.h"
#include "kernel32/PathName.h"

namespace {

int ErrnoOf(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return ENOENT;
    case ERROR_TOO_MANY_OPEN_FILES:
      return EMFILE;
    case ERROR_DISK_FULL:
      return ENOSPC;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_SHARING_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
      return EACCES;
    default:
      return EINVAL;
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
  const winapi::OpenRequest request = {static_cast<DWORD>(reads ? GENERIC_READ : GENERIC_WRITE), 0,
                                       static_cast<DWORD>(reads ? OPEN_EXISTING : CREATE_ALWAYS),
                                       FILE_ATTRIBUTE_NORMAL};
  winapi::OpenedFile opened = winapi::OpenFile(posix, request);
  if (opened.file < 0) {
    errno = ErrnoOf(GetLastError());
    return nullptr;
  }
  std::FILE* const file = fdopen(opened.file, reads ? "r" : "w");
  if (file != nullptr) opened.file.Release();
  return file;
}
