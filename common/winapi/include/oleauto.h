// OLE automation: dates out of text.
#pragma once

#include "objidl.h"
#include "windef.h"

typedef WCHAR OLECHAR;
typedef DWORD LCID;
// Days since 30 December 1899; the fraction is the time of day, forward from midnight also before
// that day.
typedef double DATE;

#define LOCALE_INVARIANT ((LCID)0x007F)
#define LOCALE_USER_DEFAULT ((LCID)0x0400)
#define LOCALE_SYSTEM_DEFAULT ((LCID)0x0800)
#define LOCALE_NOUSEROVERRIDE 0x80000000U

#define VAR_TIMEVALUEONLY ((ULONG)0x1)
#define VAR_DATEVALUEONLY ((ULONG)0x2)

#define DISP_E_TYPEMISMATCH ((HRESULT)0x80020005)

// Reads a date, a time of day, or a date and a time, in either order.
//
// Dates: three numbers with "/", "-", "," or spaces between them, and with "." where the short date
// of the locale has it; in the order of the locale or, where that makes no date, in another one,
// the year first ("1999-12-30") before the others. Two numbers are a day of this year or else the
// first of a month. A month may have its name, full or short, of the locale or in English, without
// regard to case ("30 Dec 1999", "December 30, 1999", "Dec 1999"); the name of a weekday is passed
// over. A year below 50 is one of 2000 to 2049, one below 100 of 1950 to 1999. Times: "16:05",
// "16:05:30", "4:05 pm", "4 PM".
//
// The locale is LC_TIME of the process for 0 and the two defaults, and the "C" locale for the
// invariant locale and English of the United States; others give E_INVALIDARG. The result of a text
// that is no date is DISP_E_TYPEMISMATCH, and date then stays.
extern "C" WINAPI_EXPORT HRESULT VarDateFromStr(const OLECHAR* text, LCID locale, ULONG flags,
                                                DATE* date);
