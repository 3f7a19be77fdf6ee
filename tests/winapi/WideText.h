// Wide literals and texts of the Windows API under either width of wchar_t, and a locale by its
// names.
#pragma once

#include <windows.h>

#include <string>

#ifdef _WIN32
#define WTEXT(text) L##text
constexpr const char* kGermanLocale = "German_Germany.1252";
#else
#define WTEXT(text) u##text
constexpr const char* kGermanLocale = "de_DE.UTF-8";
#endif

using Wide = std::basic_string<WCHAR>;
