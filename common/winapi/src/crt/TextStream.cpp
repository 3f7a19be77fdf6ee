#include "crt/TextStream.h"

#include <sys/types.h>

#include "crt/OpenStreams.h"

namespace {

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

}  // namespace

std::FILE* AsText(std::FILE* inner, const char* mode) {
  return OpenOnTop(inner, mode, StreamKind::kText, {ReadText, WriteText, SeekText, CloseCookie});
}
