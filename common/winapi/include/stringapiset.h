// Text between the code pages and UTF-16.
//
// The layer has CP_UTF8, and CP_ACP and CP_OEMCP, which are UTF-8, as the text of the system is;
// 1250 to 1258, 437, 850, 28591 to 28599, 28603 and 28605 (ISO 8859-1 to 9, 13 and 15), of one byte;
// 932, 936, 949 and 950 (Japanese, Chinese of both writings, Korean), of one or two. These are made
// at their first use. Any other code page gives ERROR_INVALID_PARAMETER, and so does one that the
// machine's iconv lacks.
#pragma once

#include "windef.h"

#define CP_ACP 0
#define CP_OEMCP 1
#define CP_UTF8 65001

#define MB_PRECOMPOSED 0x00000001
#define MB_ERR_INVALID_CHARS 0x00000008
#define WC_ERR_INVALID_CHARS 0x00000080
#define WC_NO_BEST_FIT_CHARS 0x00000400

// Both give the units or bytes written, or with a size of 0 for the target those needed. A length
// of -1 for the source takes its terminator along. Failure gives 0 and the last error:
// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER (a length of 0, a null source, a source that
// is the target), ERROR_INVALID_FLAGS, and, with the flag that asks for it,
// ERROR_NO_UNICODE_TRANSLATION for ill-formed text. Without that flag U+FFFD stands for each
// ill-formed piece of UTF-8 and UTF-16.
//
// In the other code pages every single byte has a character, as on Windows: those that the page
// leaves open are control characters up to 0x9F and private ones above, which MB_ERR_INVALID_CHARS
// refuses. It refuses a pair of bytes that is no character too, and a lead byte at the end or before
// a zero; else "?" stands for the pair or the byte, in 932 U+30FB. The characters that users define
// in 936, 949 and 950 are private ones; of the private places that 936 has between its own
// characters, the layer has none.
//
// The default character ("?" if null; in a page of two bytes it may have two) stands for each unit
// of UTF-16 that a page lacks, so twice for a pair of surrogates. On Windows a letter of like form
// takes its place ("A" for an A with a macron) unless WC_NO_BEST_FIT_CHARS forbids it; the layer has
// no such letters, with the flag or without.
WINAPI_EXPORT int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source,
                                             int sourceSize, LPWSTR target, int targetSize);
WINAPI_EXPORT int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source,
                                             int sourceSize, LPSTR target, int targetSize,
                                             LPCSTR defaultChar, BOOL* usedDefaultChar);
