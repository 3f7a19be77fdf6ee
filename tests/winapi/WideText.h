// Wide literals and texts of the Windows API under either width of wchar_t.
#pragma once

#include <windows.h>

#include <string>

#ifdef _WIN32
#define WTEXT(text) L##text
#else
#define WTEXT(text) u##text
#endif

using Wide = std::basic_string<WCHAR>;
