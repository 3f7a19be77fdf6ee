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

#include <locale.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <time.h>
#include <wchar.h>

#include "share.h"
#include "winapi_export.h"

// Terminated wide text. Comparisons are by unit as unsigned values.
WINAPI_EXPORT size_t wcslen(const char16_t* text);
WINAPI_EXPORT int wcscmp(const char16_t* a, const char16_t* b);
WINAPI_EXPORT int wcsncmp(const char16_t* a, const char16_t* b, size_t count);
WINAPI_EXPORT const char16_t* wcschr(const char16_t* text, char16_t unit);
WINAPI_EXPORT const char16_t* wcsrchr(const char16_t* text, char16_t unit);
WINAPI_EXPORT const char16_t* wcsstr(const char16_t* text, const char16_t* wanted);

// Copies text into a buffer of size units. Text that doesn't fit (ERANGE) and null (EINVAL) leave
// the empty text in it.
typedef int errno_t;
WINAPI_EXPORT errno_t wcscpy_s(char16_t* target, size_t size, const char16_t* source);

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

// Numbers at the begin of a text, leading white space skipped. Text without one gives 0. The whole
// numbers have 32 bits, as there: a larger value gives the nearest that fits, and ERANGE.
WINAPI_EXPORT int _wtoi(const char16_t* text);
WINAPI_EXPORT long _wtol(const char16_t* text);
// Decimal, with the decimal point of the locale.
WINAPI_EXPORT double _wtof(const char16_t* text);

// A locale as an object, which changes nothing in the process. A name that the machine doesn't know
// gives null. The category is one of <locale.h>; the rest of the object stays "C".
typedef locale_t _locale_t;
WINAPI_EXPORT _locale_t _create_locale(int category, const char* name);
// A copy of the locale that the calling thread runs under, for _free_locale too.
WINAPI_EXPORT _locale_t _get_current_locale();
// A null locale is no error.
WINAPI_EXPORT void _free_locale(_locale_t locale);

// The number that text begins with: white space, a sign, digits with the locale's decimal point,
// and an exponent behind "e" or "E". Other text gives 0. A null locale means the current one.
WINAPI_EXPORT double _atof_l(const char* text, _locale_t locale);
WINAPI_EXPORT double _wtof_l(const char16_t* text, _locale_t locale);

// Times are seconds since 1 January 1970 UTC, up to the end of the year 3000. Both texts and fields
// are in a place of the thread's own, which the next call uses again.
typedef int64_t __time64_t;
// Local time; null and EINVAL for a time before 1970 or behind 3000.
WINAPI_EXPORT struct tm* _localtime64(const __time64_t* time);
// The time of local fields, which it brings into their ranges. A negative tm_isdst leaves open
// whether daylight saving is in force. -1 and EINVAL, and the fields as they were, for a time
// before 1970 or behind 3000.
WINAPI_EXPORT __time64_t _mktime64(struct tm* fields);
// "Wed Jan 02 02:03:55 1980\n"; null and EINVAL for fields outside their ranges.
WINAPI_EXPORT char16_t* _wasctime(const struct tm* fields);

// Wide text into a stream as multibyte text of the locale. A character that has no such form is left
// out and gives WEOF and EILSEQ; the rest of the text is written. fputwc takes a whole character.
// Into a stream that _wfopen opened with b go the 16-bit units as they are.
WINAPI_EXPORT int fputws(const char16_t* text, FILE* file);
WINAPI_EXPORT wint_t fputwc(char16_t unit, FILE* file);
// Keeps other threads off a stream; a thread may lock it more than once.
WINAPI_EXPORT void _lock_file(FILE* file);
WINAPI_EXPORT void _unlock_file(FILE* file);

// Streams. A path is one of Windows (fileapi.h); the mode is r, w or a with +, b, t, x, N, and the
// hints n, S, R, T. Anything else fails with EINVAL.
//
// Without b the stream is one of text, as there: a line feed is written as carriage return and line
// feed and read back as one, and Ctrl-Z ends what is read. Text streams are written through to the
// system at once and have no file descriptor.
//
// A text stream that only writes may name its encoding: "w, ccs=" and UNICODE, UTF-16LE (the same)
// or UTF-8. A new or empty file gets a byte-order mark; one that has a mark is gone on with in its
// encoding. Such a stream takes wide text only.
WINAPI_EXPORT FILE* _wfopen(const char16_t* path, const char16_t* mode);
// The same, with the file kept from others: null and EACCES while one has it open.
// Of the ways of sharing it knows _SH_DENYNO, which keeps nobody off, and, with the modes "rb" and
// "wb", _SH_DENYRW: handles of CreateFileW are kept off too, streams of _wfopen aren't.
WINAPI_EXPORT FILE* _wfsopen(const char16_t* path, const char16_t* mode, int share);
// Up to size - 1 units, or up to and including a line feed, of multibyte text of the locale, or of
// 16-bit units as they are from a stream that _wfopen opened with b (half a unit at the end is
// none). Null, and buffer as it was or cut short, at the end, for an error of the stream, and
// (EILSEQ) for bytes that are no character.
WINAPI_EXPORT char16_t* fgetws(char16_t* buffer, int size, FILE* stream);
