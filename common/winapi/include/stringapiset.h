// Text between the code pages and UTF-16.
//
// The layer has CP_UTF8, 28591 (ISO 8859-1) and CP_ACP and CP_OEMCP, which are UTF-8, as the text
// of the system is. Any other code page gives ERROR_INVALID_PARAMETER.
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
// ill-formed piece, and the default character ("?" if null) for what ISO 8859-1 lacks.
WINAPI_EXPORT int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source,
                                             int sourceSize, LPWSTR target, int targetSize);
WINAPI_EXPORT int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source,
                                             int sourceSize, LPSTR target, int targetSize,
                                             LPCSTR defaultChar, BOOL* usedDefaultChar);
