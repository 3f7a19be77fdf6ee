// The 16-bit unit of wide text, and its literals.
//
//   kelp::WString name(KTEXT("Monte Bianco"));
//
// Wide text is UTF-16 on every platform. Where the platform's own wchar_t has 16 bits it is the
// unit, so that text passes to the Windows API as it stands; elsewhere char16_t is, and the
// platform layer's WCHAR is the same type.
#pragma once

#ifdef _WIN32
using WChar = wchar_t;
#define KTEXT(text) L##text
#else
using WChar = char16_t;
#define KTEXT(text) u##text
#endif

static_assert(sizeof(WChar) == 2, "wide text is made of 16-bit units");
