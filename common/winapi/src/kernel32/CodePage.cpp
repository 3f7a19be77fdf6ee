#include <windows.h>

#include <climits>
#include <cstring>
#include <string>

#include "Fail.h"
#include "Utf16.h"

namespace {

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

// A pair of surrogates is one character, and takes one default character.
int WideToLatin1(const WCHAR* source, std::size_t size, char defaultChar, BOOL* usedDefaultChar,
                 Target<char> target) {
  const WCHAR* const end = source + size;
  bool used = false;
  while (source < end) {
    const char32_t value = NextOfUtf16(source, end);
    used |= value > 0xFF;
    target.Put(value > 0xFF ? static_cast<unsigned char>(defaultChar) : value);
  }
  if (usedDefaultChar != nullptr) *usedDefaultChar = used;
  return target.Finish();
}

// The code pages that are UTF-8 because the system's text is. Programs pass the flags of any code
// page with them.
bool IsOfSystem(UINT codePage) {
  return codePage == CP_ACP || codePage == CP_OEMCP;
}

// What both calls ask of their source and target.
bool AreGood(UINT codePage, const void* source, int sourceSize, const void* target,
             int targetSize) {
  const bool known = IsOfSystem(codePage) || codePage == CP_UTF8 || codePage == kLatin1;
  if (!known) return false;
  if (source == nullptr || sourceSize == 0 || sourceSize < -1) return false;
  return targetSize == 0 || (targetSize > 0 && target != nullptr && target != source);
}

}  // namespace

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceSize,
                               LPWSTR target, int targetSize) {
  if (!AreGood(codePage, source, sourceSize, target, targetSize)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const DWORD allowed = MB_ERR_INVALID_CHARS | (codePage == kLatin1 ? MB_PRECOMPOSED : 0);
  if ((flags & ~allowed) != 0) return Fail(ERROR_INVALID_FLAGS);
  const std::size_t size =
      sourceSize == -1 ? std::strlen(source) + 1 : static_cast<std::size_t>(sourceSize);
  Target<WCHAR> out(target, targetSize);
  if (codePage != kLatin1) return Utf8ToWide(source, size, flags != 0, out);
  for (std::size_t i = 0; i < size; ++i) out.Put(static_cast<unsigned char>(source[i]));
  return out.Finish();
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceSize,
                               LPSTR target, int targetSize, LPCSTR defaultChar,
                               BOOL* usedDefaultChar) {
  if (!AreGood(codePage, source, sourceSize, target, targetSize)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const bool latin1 = codePage == kLatin1;
  if (!latin1 && (defaultChar != nullptr || usedDefaultChar != nullptr)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const DWORD allowed = (latin1 ? 0 : WC_ERR_INVALID_CHARS) |
                        (latin1 || IsOfSystem(codePage) ? WC_NO_BEST_FIT_CHARS : 0);
  if ((flags & ~allowed) != 0) return Fail(ERROR_INVALID_FLAGS);
  const std::size_t size = sourceSize == -1 ? std::char_traits<WCHAR>::length(source) + 1
                                            : static_cast<std::size_t>(sourceSize);
  const Target<char> out(target, targetSize);
  if (!latin1) return WideToUtf8(source, size, (flags & WC_ERR_INVALID_CHARS) != 0, out);
  return WideToLatin1(source, size, defaultChar == nullptr ? '?' : *defaultChar, usedDefaultChar,
                      out);
}
