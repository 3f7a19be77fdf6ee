// Terminated text: comparison, search, case, and conversion between the widths.
#include <tchar.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <string>

#include "Utf16.h"
#include "crt/Multibyte.h"

namespace {

char16_t Lower(char16_t unit) {
  return static_cast<char16_t>(std::towlower(unit));
}
char16_t Upper(char16_t unit) {
  return static_cast<char16_t>(std::towupper(unit));
}
unsigned char LowerByte(char unit) {
  return static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(unit)));
}

// Text of either width without regard to case, up to count units.
template <class C, class Fold>
int CompareFolded(const C* a, const C* b, std::size_t count, Fold fold) {
  for (; count > 0; --count, ++a, ++b) {
    const int x = fold(*a);
    const int y = fold(*b);
    if (x != y) return x - y;
    if (x == 0) break;
  }
  return 0;
}

std::size_t Unconvertible() {
  errno = EILSEQ;
  return static_cast<std::size_t>(-1);
}

}  // namespace

std::size_t wcslen(const char16_t* text) {
  // Four at a time: most texts are short, and each test costs as much as the rest of its step.
  const char16_t* end = text;
  for (;; end += 4) {
    if (end[0] == 0) return static_cast<std::size_t>(end - text);
    if (end[1] == 0) return static_cast<std::size_t>(end - text) + 1;
    if (end[2] == 0) return static_cast<std::size_t>(end - text) + 2;
    if (end[3] == 0) return static_cast<std::size_t>(end - text) + 3;
  }
}

errno_t wcscpy_s(char16_t* target, std::size_t size, const char16_t* source) {
  if (target == nullptr || size == 0) return errno = EINVAL;
  const std::size_t length = source == nullptr ? size : wcslen(source);
  if (length >= size) {
    *target = 0;
    return errno = source == nullptr ? EINVAL : ERANGE;
  }
  std::copy_n(source, length + 1, target);
  return 0;
}

int wcscmp(const char16_t* a, const char16_t* b) {
  return wcsncmp(a, b, SIZE_MAX);
}

int wcsncmp(const char16_t* a, const char16_t* b, std::size_t count) {
  return CompareFolded(a, b, count, [](char16_t unit) { return unit; });
}

const char16_t* wcschr(const char16_t* text, char16_t unit) {
  while (*text != unit) {
    if (*text++ == 0) return nullptr;
  }
  return text;
}

const char16_t* wcsrchr(const char16_t* text, char16_t unit) {
  const char16_t* found = nullptr;
  for (;; ++text) {
    if (*text == unit) found = text;
    if (*text == 0) return found;
  }
}

const char16_t* wcsstr(const char16_t* text, const char16_t* wanted) {
  const std::size_t length = wcslen(wanted);
  if (length == 0) return text;
  for (; (text = wcschr(text, *wanted)) != nullptr; ++text) {
    if (wcsncmp(text, wanted, length) == 0) return text;
  }
  return nullptr;
}

int _stricmp(const char* a, const char* b) {
  return _strnicmp(a, b, SIZE_MAX);
}

int _strnicmp(const char* a, const char* b, std::size_t count) {
  return CompareFolded(a, b, count, LowerByte);
}

int _wcsicmp(const char16_t* a, const char16_t* b) {
  return _wcsnicmp(a, b, SIZE_MAX);
}

int _wcsnicmp(const char16_t* a, const char16_t* b, std::size_t count) {
  return CompareFolded(a, b, count, Lower);
}

char* _strlwr(char* text) {
  for (char* c = text; *c != 0; ++c) *c = static_cast<char>(LowerByte(*c));
  return text;
}

char* _strupr(char* text) {
  for (char* c = text; *c != 0; ++c) {
    *c = static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
  }
  return text;
}

char16_t* _wcslwr(char16_t* text) {
  for (char16_t* c = text; *c != 0; ++c) *c = Lower(*c);
  return text;
}

char16_t* _wcsupr(char16_t* text) {
  for (char16_t* c = text; *c != 0; ++c) *c = Upper(*c);
  return text;
}

std::size_t wcstombs(char* target, const char16_t* source, std::size_t size) {
  const bool cLocale = IsCLocale();
  std::size_t written = 0;
  while (*source != 0) {
    char bytes[MB_LEN_MAX];
    const int count = PutCharacter(NextCharacter(source), bytes, cLocale);
    if (count < 0) return Unconvertible();
    if (target != nullptr) {
      // A character that doesn't fit whole isn't begun.
      if (written + static_cast<std::size_t>(count) > size) return written;
      std::memcpy(target + written, bytes, static_cast<std::size_t>(count));
    }
    written += static_cast<std::size_t>(count);
  }
  if (target != nullptr && written < size) target[written] = 0;
  return written;
}

std::size_t mbstowcs(char16_t* target, const char* source, std::size_t size) {
  const bool cLocale = IsCLocale();
  const char* const end = source + std::strlen(source);
  std::mbstate_t state{};
  std::size_t written = 0;
  while (source < end) {
    wchar_t character = static_cast<unsigned char>(*source);
    std::size_t taken = 1;
    if (!cLocale) {
      taken = std::mbrtowc(&character, source, static_cast<std::size_t>(end - source), &state);
      if (taken > static_cast<std::size_t>(end - source)) return Unconvertible();
    }
    source += taken;
    char16_t units[2];
    const auto count = static_cast<std::size_t>(ToUtf16(static_cast<char32_t>(character), units));
    if (target != nullptr) {
      if (written + count > size) return written;
      std::copy_n(units, count, target + written);
    }
    written += count;
  }
  if (target != nullptr && written < size) target[written] = 0;
  return written;
}
