// Characters of UTF-16 and of the locale's multibyte text; internal to the layer's C runtime.
#pragma once

#include <cwchar>

// In the "C" locale glibc knows only ASCII; Windows passes every byte through.
bool IsCLocale();

// Takes one character off UTF-16 text; a lone surrogate gives WEOF.
std::wint_t NextCharacter(const char16_t*& text);

// One character as bytes of the locale, at most MB_LEN_MAX; -1 where it has none, and for WEOF.
int PutCharacter(std::wint_t character, char* bytes, bool cLocale);
