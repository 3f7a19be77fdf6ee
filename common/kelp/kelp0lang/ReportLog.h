// A log for developers: each call appends one line to the file Log.txt in the root folder of the
// current drive, as UTF-16.
//
//   ReportLogTxtNum(12, KTEXT("points read:"), count);   // 9 5:3:250 - (12): points read: 4096
//
// The file is closed again behind each line, so that a line survives a crash right after it. Where
// the file can't be opened nothing is written.
//
// Threads: any; a line is written in one piece.
#pragma once

#include "kelp0lang/Export.h"
#include "kelptext/WideChar.h"

// The first number is one of the caller's choosing. In the comments stand the lines; the four
// numbers in front are the hour, minute, second and millisecond of the local time.

// "c n", c as a character and as a number; code isn't written.
KELP0LANG_API void ReportLogChr(int code, WChar c);
// "(code): value"
KELP0LANG_API void ReportLogNum(int code, int value);
// "9 5:3:250 - (code): text"
KELP0LANG_API void ReportLogTxt(int code, const WChar* text);
// "9 5:3:250 - (code): text value", and so on.
KELP0LANG_API void ReportLogTxtNum(int code, const WChar* text, int value);
KELP0LANG_API void ReportLogTxtTxt(int code, const WChar* a, const WChar* b);
KELP0LANG_API void ReportLogTxtTxtNum(int code, const WChar* a, const WChar* b, int value);
KELP0LANG_API void ReportLogTxtTxtNumNum(int code, const WChar* a, const WChar* b, int value1,
                                         int value2);

namespace kelp {
class CCriticalSec;
namespace detail {

// Within it the log is written.
CCriticalSec& GetReportLogSection();

}  // namespace detail
}  // namespace kelp
