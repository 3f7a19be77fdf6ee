#include "crt/Multibyte.h"

#include <clocale>
#include <cstring>

#include "Utf16.h"

bool IsCLocale() {
  const char* name = std::setlocale(LC_CTYPE, nullptr);
  return name != nullptr && (std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0);
}

std::wint_t NextCharacter(const char16_t*& text) {
  // The terminator ends a pair, so that one unit more can be looked at.
  const char32_t character = NextOfUtf16(text, text + 2);
  return character == kIllFormed ? WEOF : static_cast<std::wint_t>(character);
}

int PutCharacter(std::wint_t character, char* bytes, bool cLocale) {
  if (character == WEOF) return -1;
  if (cLocale) {
    if (character > 0xFF) return -1;
    *bytes = static_cast<char>(character);
    return 1;
  }
  std::mbstate_t state{};
  const std::size_t size = std::wcrtomb(bytes, static_cast<wchar_t>(character), &state);
  return size == static_cast<std::size_t>(-1) ? -1 : static_cast<int>(size);
}
