// Wide text onto streams.
#include <tchar.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cwchar>
#include <string>

#include "crt/Multibyte.h"
#include "crt/UnicodeStream.h"

namespace {

constexpr int kFailed = static_cast<int>(WEOF);

bool PutUnits(const char16_t* units, std::size_t count, FILE* file) {
  return std::fwrite(units, sizeof(*units), count, file) == count;
}

// What the locale can't express is left out.
int PutMultibyte(const char16_t* text, FILE* file) {
  const bool cLocale = IsCLocale();
  std::string bytes;
  bool whole = true;
  while (*text != 0) {
    char character[MB_LEN_MAX];
    const int size = PutCharacter(NextCharacter(text), character, cLocale);
    if (size > 0) bytes.append(character, static_cast<std::size_t>(size));
    whole &= size > 0;
  }
  if (std::fwrite(bytes.data(), 1, bytes.size(), file) < bytes.size()) return kFailed;
  if (whole) return 0;
  errno = EILSEQ;
  return kFailed;
}

}  // namespace

int fputws(const char16_t* text, FILE* file) {
  const StreamKind kind = Describe(file).kind;
  switch (kind) {
    case StreamKind::kUnits:
      return PutUnits(text, wcslen(text), file) ? 0 : kFailed;
    case StreamKind::kUtf16:
    case StreamKind::kUtf8:
      return PutUnicode(text, file, kind) ? 0 : kFailed;
    default:
      return PutMultibyte(text, file);
  }
}

wint_t fputwc(char16_t unit, FILE* file) {
  const char16_t text[2] = {unit, 0};
  const StreamKind kind = Describe(file).kind;
  switch (kind) {
    case StreamKind::kUnits:
      return PutUnits(text, 1, file) ? unit : WEOF;
    case StreamKind::kUtf16:
    case StreamKind::kUtf8:
      return PutUnicode({text, 1}, file, kind) ? unit : WEOF;
    default:
      if (unit == 0) return std::fputc(0, file) == EOF ? WEOF : 0;
      return PutMultibyte(text, file) < 0 ? WEOF : unit;
  }
}

void _lock_file(FILE* file) {
  flockfile(file);
}

void _unlock_file(FILE* file) {
  funlockfile(file);
}
