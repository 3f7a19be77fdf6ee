// Streams under the names of Windows, and wide text from them.
#include <sys/stat.h>
#include <sys/types.h>
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <string_view>

#include "crt/UnicodeStream.h"
#include "kernel32/PathName.h"

namespace {

constexpr int kCtrlZ = 0x1A;

// The stream beneath a stream of text, which is the one that buffers what is read.
std::FILE* Inner(void* cookie) {
  return static_cast<std::FILE*>(cookie);
}

// One unit of text: a carriage return before a line feed goes.
int GetTextByte(std::FILE* inner) {
  const int byte = std::getc(inner);
  if (byte == kCtrlZ) {
    std::ungetc(byte, inner);
    return EOF;
  }
  if (byte != '\r') return byte;
  const int following = std::getc(inner);
  if (following == '\n') return following;
  if (following != EOF) std::ungetc(following, inner);
  return byte;
}

ssize_t ReadText(void* cookie, char* buffer, std::size_t size) {
  std::size_t count = 0;
  while (count < size) {
    const int byte = GetTextByte(Inner(cookie));
    if (byte == EOF) break;
    buffer[count++] = static_cast<char>(byte);
  }
  return count == 0 && std::ferror(Inner(cookie)) != 0 ? -1 : static_cast<ssize_t>(count);
}

ssize_t WriteText(void* cookie, const char* buffer, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    if (buffer[i] == '\n' && std::putc('\r', Inner(cookie)) == EOF) return 0;
    if (std::putc(buffer[i], Inner(cookie)) == EOF) return 0;
  }
  return std::fflush(Inner(cookie)) == 0 ? static_cast<ssize_t>(size) : 0;
}

int SeekText(void* cookie, off64_t* position, int origin) {
  if (fseeko(Inner(cookie), *position, origin) != 0) return -1;
  *position = ftello(Inner(cookie));
  return *position < 0 ? -1 : 0;
}

int CloseText(void* cookie) {
  return std::fclose(Inner(cookie));
}

// A stream of text on top of one of bytes, which it takes over. It has no buffer of its own, so
// that its position is that of the bytes.
std::FILE* AsText(std::FILE* inner, const char* mode) {
  std::FILE* const text = fopencookie(inner, mode, {ReadText, WriteText, SeekText, CloseText});
  if (text == nullptr) {
    std::fclose(inner);
    return nullptr;
  }
  std::setvbuf(text, nullptr, _IONBF, 0);
  return text;
}

struct Mode {
  std::string posix;
  bool text = true;
  Encoding encoding = Encoding::kLocale;
};

// The encoding behind the comma of a mode, where one may be named for what only writes.
bool ReadEncoding(const char16_t* text, Mode& result) {
  constexpr struct {
    const char16_t* name;
    Encoding encoding;
  } kEncodings[] = {{u"ccs=UNICODE", Encoding::kUtf16},
                    {u"ccs=UTF-16LE", Encoding::kUtf16},
                    {u"ccs=UTF-8", Encoding::kUtf8}};
  while (*text == ' ') ++text;
  for (const auto& [name, encoding] : kEncodings) {
    if (_wcsicmp(text, name) == 0) result.encoding = encoding;
  }
  return result.encoding != Encoding::kLocale && result.text && result.posix[0] != 'r' &&
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

// The bytes of the next character, terminated. Gives their number, 0 at the end, or -1 for bytes
// that are none.
int GetCharacter(std::FILE* stream, char (&bytes)[MB_LEN_MAX + 1]) {
  std::mbstate_t state{};
  int count = 0;
  for (;;) {
    const int byte = std::getc(stream);
    if (byte == EOF) return count == 0 ? 0 : -1;
    bytes[count++] = static_cast<char>(byte);
    bytes[count] = 0;
    if (MB_CUR_MAX == 1) return count;
    const std::size_t size = std::mbrlen(&bytes[count - 1], 1, &state);
    if (size == static_cast<std::size_t>(-1)) return -1;
    if (size != static_cast<std::size_t>(-2)) return count;
    if (count == MB_LEN_MAX) return -1;
  }
}

}  // namespace

std::FILE* _wfopen(const char16_t* path, const char16_t* mode) {
  Mode wanted;
  if (path == nullptr || mode == nullptr || !ReadMode(mode, wanted)) return Refuse(EINVAL);
  // What isn't made by opening it is most often found at once.
  const bool exists = wanted.posix[0] == 'r';
  std::string posix = exists ? ToPosixPathAsGiven(path) : ToPosixPath(path);
  if (posix.empty()) return Refuse(GetLastError() == ERROR_INVALID_NAME ? EINVAL : ENOENT);
  std::FILE* file = std::fopen(posix.c_str(), wanted.posix.c_str());
  if (file == nullptr && exists && errno == ENOENT) {
    posix = ToPosixPath(path);
    file = std::fopen(posix.c_str(), wanted.posix.c_str());
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
  if (wanted.encoding != Encoding::kLocale) return AsUnicode(file, posix, wanted.encoding);
  return wanted.text ? AsText(file, wanted.posix.c_str()) : file;
}

char16_t* fgetws(char16_t* buffer, int size, std::FILE* stream) {
  if (buffer == nullptr || stream == nullptr || size < 1) {
    errno = EINVAL;
    return nullptr;
  }
  int length = 0;
  while (length < size - 1) {
    char bytes[MB_LEN_MAX + 1];
    const int count = GetCharacter(stream, bytes);
    if (count == 0 && length > 0 && std::ferror(stream) == 0) break;
    if (count == 0) return nullptr;
    char16_t units[2] = {};
    std::size_t taken = 1;
    if (count < 0 || (bytes[0] != 0 && (taken = mbstowcs(units, bytes, 2)) > 2)) {
      errno = EILSEQ;
      return nullptr;
    }
    if (taken == 2 && length + 2 > size - 1) {
      // A pair isn't torn apart: it stays for the next call.
      for (int i = count; i > 0; --i) std::ungetc(static_cast<unsigned char>(bytes[i - 1]), stream);
      if (length > 0) break;
      errno = EILSEQ;
      return nullptr;
    }
    for (std::size_t i = 0; i < taken; ++i) buffer[length++] = units[i];
    if (units[0] == '\n') break;
  }
  buffer[length] = 0;
  return buffer;
}
