#include <windows.h>

#include <climits>
#include <cstring>
#include <string>

#include "Fail.h"
#include "Utf16.h"
#include "kernel32/CodePageTable.h"

namespace {

using winapi::CodePageTable;

constexpr UINT kLatin1 = 28591;
constexpr char32_t kReplacement = 0xFFFD;

// Counts what is put, and stores it as long as there is room.
template <class C>
class Target {
 public:
  Target(C* begin, int size) : m_begin(begin), m_size(size) {}
  void Put(char32_t unit) {
    if (m_count < m_size) m_begin[m_count] = static_cast<C>(unit);
    ++m_count;
  }
  // Two that stand together or not at all.
  void PutPair(unsigned char lead, unsigned char trail) {
    if (m_count + 1 < m_size) {
      m_begin[m_count] = static_cast<C>(lead);
      m_begin[m_count + 1] = static_cast<C>(trail);
    }
    m_count += 2;
  }
  // The result of the call.
  int Finish() const {
    if (m_count > INT_MAX) return Fail(ERROR_INVALID_PARAMETER);
    if (m_size != 0 && m_count > m_size) return Fail(ERROR_INSUFFICIENT_BUFFER);
    return static_cast<int>(m_count);
  }

 private:
  C* m_begin;
  long long m_size;
  long long m_count = 0;
};

// A character of UTF-8: the ranges are those of the well-formed sequences, so that overlong forms,
// surrogates and values above U+10FFFF end at the first byte that can't stand there.
char32_t NextOfUtf8(const unsigned char*& byte, const unsigned char* end) {
  const unsigned lead = *byte++;
  if (lead < 0x80) return lead;
  if (lead < 0xC2 || lead > 0xF4) return kIllFormed;
  const int following = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t value = lead & (0x3F >> following);
  for (int i = 0; i < following; ++i) {
    if (byte == end || *byte < low || *byte > high) return kIllFormed;
    value = value << 6 | (*byte++ & 0x3F);
    low = 0x80;
    high = 0xBF;
  }
  return value;
}

void PutUtf16(char32_t value, Target<WCHAR>& target) {
  char16_t units[2];
  const int count = ToUtf16(value, units);
  for (int i = 0; i < count; ++i) target.Put(units[i]);
}

void PutUtf8(char32_t value, Target<char>& target) {
  if (value < 0x80) return target.Put(value);
  const int following = value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
  target.Put((0xFF00u >> (following + 1) & 0xFF) | value >> 6 * following);
  for (int i = following - 1; i >= 0; --i) target.Put(0x80 | (value >> 6 * i & 0x3F));
}

int Utf8ToWide(const char* source, std::size_t size, bool strict, Target<WCHAR> target) {
  const auto* byte = reinterpret_cast<const unsigned char*>(source);
  const auto* const end = byte + size;
  while (byte < end) {
    const char32_t value = NextOfUtf8(byte, end);
    if (value == kIllFormed && strict) return Fail(ERROR_NO_UNICODE_TRANSLATION);
    PutUtf16(value == kIllFormed ? kReplacement : value, target);
  }
  return target.Finish();
}

int WideToUtf8(const WCHAR* source, std::size_t size, bool strict, Target<char> target) {
  const WCHAR* const end = source + size;
  while (source < end) {
    const char32_t value = NextOfUtf16(source, end);
    if (value == kIllFormed && strict) return Fail(ERROR_NO_UNICODE_TRANSLATION);
    PutUtf8(value == kIllFormed ? kReplacement : value, target);
  }
  return target.Finish();
}

// Like Windows' it looks at each unit for itself: a pair of surrogates takes two default
// characters.
int WideToLatin1(const WCHAR* source, std::size_t size, char defaultChar, BOOL* usedDefaultChar,
                 Target<char> target) {
  bool used = false;
  for (const WCHAR* const end = source + size; source < end; ++source) {
    used |= *source > 0xFF;
    target.Put(*source > 0xFF ? static_cast<unsigned char>(defaultChar) : *source);
  }
  if (usedDefaultChar != nullptr) *usedDefaultChar = used;
  return target.Finish();
}

// Characters that a user defines are some in a pair of bytes, and none in a single one.
bool IsPrivate(char16_t unit) {
  return unit >= 0xE000 && unit <= 0xF8FF;
}

int TableToWide(const CodePageTable& table, const char* source, std::size_t size, bool strict,
                Target<WCHAR> target) {
  const auto* byte = reinterpret_cast<const unsigned char*>(source);
  for (const auto* const end = byte + size; byte < end; ++byte) {
    char16_t unit = CodePageTable::kNone;
    bool isGood = true;
    if (!table.IsLead(*byte)) {
      unit = table.Decode(*byte);
      isGood = !IsPrivate(unit);
    } else if (byte + 1 < end && byte[1] != 0) {  // a terminator is never part of a pair
      unit = table.Decode(byte[0], byte[1]);
      ++byte;
    }
    if (strict && (!isGood || unit == CodePageTable::kNone)) {
      return Fail(ERROR_NO_UNICODE_TRANSLATION);
    }
    target.Put(unit == CodePageTable::kNone ? table.Substitute() : unit);
  }
  return target.Finish();
}

// The default character may have two bytes where the page has them.
int WideToTable(const CodePageTable& table, const WCHAR* source, std::size_t size,
                LPCSTR defaultChar, BOOL* usedDefaultChar, Target<char> target) {
  const auto* const given = reinterpret_cast<const unsigned char*>(defaultChar);
  unsigned substitute = given == nullptr ? '?' : *given;
  if (given != nullptr && table.IsLead(*given) && given[1] != 0)
    substitute = given[0] << 8 | given[1];
  bool used = false;
  for (const WCHAR* const end = source + size; source < end; ++source) {
    unsigned code = table.Encode(*source);
    if (code == 0 && *source != 0) {
      used = true;
      code = substitute;
    }
    if (code > 0xFF) {
      target.PutPair(static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code));
    } else {
      target.Put(code);
    }
  }
  if (usedDefaultChar != nullptr) *usedDefaultChar = used;
  return target.Finish();
}

// The code pages that are UTF-8 because the system's text is. Programs pass the flags of any code
// page with them.
bool IsOfSystem(UINT codePage) {
  return codePage == CP_ACP || codePage == CP_OEMCP;
}

bool IsUtf8(UINT codePage) {
  return codePage == CP_UTF8 || IsOfSystem(codePage);
}

// What both calls ask of their source and target.
bool AreGood(const void* source, int sourceSize, const void* target, int targetSize) {
  if (source == nullptr || sourceSize == 0 || sourceSize < -1) return false;
  return targetSize == 0 || (targetSize > 0 && target != nullptr && target != source);
}

}  // namespace

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceSize,
                               LPWSTR target, int targetSize) {
  const bool utf8 = IsUtf8(codePage), latin1 = codePage == kLatin1;
  const CodePageTable* const table = utf8 || latin1 ? nullptr : CodePageTable::Find(codePage);
  const bool known = utf8 || latin1 || table != nullptr;
  if (!known || !AreGood(source, sourceSize, target, targetSize)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const DWORD allowed = MB_ERR_INVALID_CHARS | (utf8 ? 0 : MB_PRECOMPOSED);
  if ((flags & ~allowed) != 0) return Fail(ERROR_INVALID_FLAGS);
  const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
  const std::size_t size =
      sourceSize == -1 ? std::strlen(source) + 1 : static_cast<std::size_t>(sourceSize);
  Target<WCHAR> out(target, targetSize);
  if (utf8) return Utf8ToWide(source, size, strict, out);
  if (table != nullptr) return TableToWide(*table, source, size, strict, out);
  for (std::size_t i = 0; i < size; ++i) out.Put(static_cast<unsigned char>(source[i]));
  return out.Finish();
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceSize,
                               LPSTR target, int targetSize, LPCSTR defaultChar,
                               BOOL* usedDefaultChar) {
  const bool utf8 = IsUtf8(codePage), latin1 = codePage == kLatin1;
  const CodePageTable* const table = utf8 || latin1 ? nullptr : CodePageTable::Find(codePage);
  const bool known = utf8 || latin1 || table != nullptr;
  if (!known || !AreGood(source, sourceSize, target, targetSize)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  if (utf8 && (defaultChar != nullptr || usedDefaultChar != nullptr)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const DWORD allowed =
      (utf8 ? WC_ERR_INVALID_CHARS : 0) | (codePage == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS);
  if ((flags & ~allowed) != 0) return Fail(ERROR_INVALID_FLAGS);
  const std::size_t size = sourceSize == -1 ? std::char_traits<WCHAR>::length(source) + 1
                                            : static_cast<std::size_t>(sourceSize);
  const Target<char> out(target, targetSize);
  if (utf8) return WideToUtf8(source, size, (flags & WC_ERR_INVALID_CHARS) != 0, out);
  if (table != nullptr) return WideToTable(*table, source, size, defaultChar, usedDefaultChar, out);
  return WideToLatin1(source, size, defaultChar == nullptr ? '?' : *defaultChar, usedDefaultChar,
                      out);
}
