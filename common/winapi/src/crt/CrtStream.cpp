// Wide text onto streams of bytes.
#include <tchar.h>

#include <cstdlib>
#include <cwchar>
#include <string>

#include "crt/UnicodeStream.h"

int fputws(const char16_t* text, FILE* file) {
  const Encoding encoding = EncodingOf(file);
  if (encoding != Encoding::kLocale) {
    return PutUnicode(text, file, encoding) ? 0 : static_cast<int>(WEOF);
  }
  constexpr auto kFailed = static_cast<std::size_t>(-1);
  const std::size_t size = wcstombs(nullptr, text, 0);
  if (size == kFailed) return static_cast<int>(WEOF);
  std::string bytes(size, '\0');
  wcstombs(bytes.data(), text, size);
  return std::fwrite(bytes.data(), 1, size, file) == size ? 0 : static_cast<int>(WEOF);
}

wint_t fputwc(char16_t unit, FILE* file) {
  const char16_t text[2] = {unit, 0};
  const Encoding encoding = EncodingOf(file);
  if (encoding != Encoding::kLocale) {
    return PutUnicode({text, 1}, file, encoding) ? unit : WEOF;
  }
  if (unit == 0) return std::fputc(0, file) == EOF ? WEOF : 0;
  return fputws(text, file) < 0 ? WEOF : unit;
}

void _lock_file(FILE* file) {
  flockfile(file);
}

void _unlock_file(FILE* file) {
  funlockfile(file);
}
