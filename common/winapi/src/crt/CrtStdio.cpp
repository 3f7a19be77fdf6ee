// Streams under the names of Windows.
#include <sys/stat.h>
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "crt/OpenStreams.h"
#include "crt/TextStream.h"
#include "crt/UnicodeStream.h"
#include "kernel32/PathName.h"

namespace {

struct Mode {
  std::string posix;
  bool text = true;
  // kBytes where none is named.
  StreamKind encoding = StreamKind::kBytes;
};

// Reads the encoding behind the comma of a mode, where one may be named for what only writes.
bool ReadEncoding(const char16_t* text, Mode& result) {
  constexpr struct {
    const char16_t* name;
    StreamKind encoding;
  } kEncodings[] = {{u"ccs=UNICODE", StreamKind::kUtf16},
                    {u"ccs=UTF-16LE", StreamKind::kUtf16},
                    {u"ccs=UTF-8", StreamKind::kUtf8}};
  while (*text == ' ') ++text;
  for (const auto& [name, encoding] : kEncodings) {
    if (_wcsicmp(text, name) == 0) result.encoding = encoding;
  }
  return result.encoding != StreamKind::kBytes && result.text && result.posix[0] != 'r' &&
         result.posix.find('+') == std::string::npos;
}

bool ReadMode(const char16_t* mode, Mode& result) {
  if (*mode != 'r' && *mode != 'w' && *mode != 'a') return false;
  result.posix = static_cast<char>(*mode);
  // Where every reader of a mode looks for it: before the other letters.
  if (std::u16string_view(mode).find('+') != std::u16string_view::npos) result.posix += '+';
  for (++mode; *mode != 0; ++mode) {
    switch (*mode) {
      case 'x':
        result.posix += 'x';
        break;
      case 'N':
        result.posix += 'e';
        break;
      case 'b':
        result.text = false;
        break;
      case 't':
        result.text = true;
        break;
      case 'n':
      case 'S':
      case 'R':
      case 'T':
      case '+':
      case ' ':
        break;
      case ',':
        return ReadEncoding(mode + 1, result);
      default:
        return false;
    }
  }
  return true;
}

std::FILE* Refuse(int error) {
  errno = error;
  return nullptr;
}

bool IsFolder(std::FILE* file) {
  struct stat status;
  return fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode);
}

std::FILE* Open(const std::string& posixPath, const Mode& mode) {
  return mode.text ? std::fopen(posixPath.c_str(), mode.posix.c_str())
                   : OpenBinary(posixPath, mode.posix);
}

}  // namespace

std::FILE* _wfopen(const char16_t* path, const char16_t* mode) {
  Mode wanted;
  if (path == nullptr || mode == nullptr || !ReadMode(mode, wanted)) return Refuse(EINVAL);
  // What isn't made by opening it is most often found at once.
  const bool exists = wanted.posix[0] == 'r';
  std::string posix = exists ? ToPosixPathAsGiven(path) : ToPosixPath(path);
  if (posix.empty()) return Refuse(GetLastError() == ERROR_INVALID_NAME ? EINVAL : ENOENT);
  std::FILE* file = Open(posix, wanted);
  if (file == nullptr && exists && errno == ENOENT) {
    posix = ToPosixPath(path);
    if (posix.empty()) return Refuse(EINVAL);
    file = Open(posix, wanted);
  }
  if (file == nullptr) {
    const int error = errno;
    SetFileError(error, posix);
    return Refuse(error == EISDIR ? EACCES : error);
  }
  // Only for reading can a folder be opened.
  if (exists && IsFolder(file)) {
    std::fclose(file);
    SetLastError(ERROR_ACCESS_DENIED);
    return Refuse(EACCES);
  }
  if (wanted.encoding != StreamKind::kBytes) return AsUnicode(file, posix, wanted.encoding);
  return wanted.text ? AsText(file, wanted.posix.c_str()) : file;
}
