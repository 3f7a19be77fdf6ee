// The Windows C runtime's text and number functions that POSIX lacks, and its wide functions as
// overloads on 16-bit units.
//
// A source includes <tchar.h> beside the standard headers (<cwchar>, <cstdlib>, <cstdio>): on
// Windows it adds nothing that they don't have, here it adds the overloads. wchar_t and char16_t
// differ, so a mix of the two doesn't compile.
//
// What depends on the locale follows LC_CTYPE and LC_NUMERIC of the process, as there. In the "C"
// locale bytes and units from 0 to 255 stand for each other, and case is that of the ASCII letters.
#pragma once

#include <stddef.h>
#include <stdio.h>

#include "winapi_export.h"

// Terminated wide text. Comparisons are by unit as unsigned values.
WINAPI_EXPORT size_t wcslen(const char16_t* text);
WINAPI_EXPORT int wcscmp(const char16_t* a, const char16_t* b);
WINAPI_EXPORT int wcsncmp(const char16_t* a, const char16_t* b, size_t count);
WINAPI_EXPORT const char16_t* wcschr(const char16_t* text, char16_t unit);
WINAPI_EXPORT const char16_t* wcsrchr(const char16_t* text, char16_t unit);
WINAPI_EXPORT const char16_t* wcsstr(const char16_t* text, const char16_t* wanted);

// Without regard to case, both texts as lower case.
WINAPI_EXPORT int _stricmp(const char* a, const char* b);
WINAPI_EXPORT int _strnicmp(const char* a, const char* b, size_t count);
WINAPI_EXPORT int _wcsicmp(const char16_t* a, const char16_t* b);
WINAPI_EXPORT int _wcsnicmp(const char16_t* a, const char16_t* b, size_t count);

// Case in place; they return text.
WINAPI_EXPORT char* _strlwr(char* text);
WINAPI_EXPORT char* _strupr(char* text);
WINAPI_EXPORT char16_t* _wcslwr(char16_t* text);
WINAPI_EXPORT char16_t* _wcsupr(char16_t* text);

// Between multibyte text of the locale and UTF-16. With a null target they give the size needed, in
// units of the target without the terminator; a character that can't be converted gives
// (size_t)-1 and EILSEQ. At most size units are written, the terminator only if there is room.
WINAPI_EXPORT size_t wcstombs(char* target, const char16_t* source, size_t size);
WINAPI_EXPORT size_t mbstowcs(char16_t* target, const char* source, size_t size);
