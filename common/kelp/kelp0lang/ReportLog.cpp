#include "kelp0lang/ReportLog.h"

#include <tchar.h>
#include <windows.h>

#include <cstdio>

#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/LocaleFree.h"

namespace {

template <class... Values>
void WriteLine(const WChar* format, Values... values) {
  const kelp::CCriticalSecLock lock(&kelp::detail::GetReportLogSection());
  std::FILE* const file = _wfopen(KTEXT("/Log.txt"), KTEXT("a, ccs=UNICODE"));
  if (file == nullptr) return;
  kelp_fwprintf(file, format, values...);
  std::fclose(file);
}

// With the local time in front.
template <class... Values>
void WriteTimedLine(const WChar* format, Values... values) {
  SYSTEMTIME time;
  GetLocalTime(&time);
  WriteLine(format, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds, values...);
}

}  // namespace

void ReportLogChr(int, WChar c) {
  WriteLine(KTEXT("%c %d\n"), c, c);
}

void ReportLogNum(int code, int value) {
  WriteLine(KTEXT("(%d): %d\n"), code, value);
}

void ReportLogTxt(int code, const WChar* text) {
  WriteTimedLine(KTEXT("%d %d:%d:%d - (%d): %ls\n"), code, text);
}

void ReportLogTxtNum(int code, const WChar* text, int value) {
  WriteTimedLine(KTEXT("%d %d:%d:%d - (%d): %ls %d\n"), code, text, value);
}

void ReportLogTxtTxt(int code, const WChar* a, const WChar* b) {
  WriteTimedLine(KTEXT("%d %d:%d:%d - (%d): %ls %ls\n"), code, a, b);
}

void ReportLogTxtTxtNum(int code, const WChar* a, const WChar* b, int value) {
  WriteTimedLine(KTEXT("%d %d:%d:%d - (%d): %ls %ls %d\n"), code, a, b, value);
}

void ReportLogTxtTxtNumNum(int code, const WChar* a, const WChar* b, int value1, int value2) {
  WriteTimedLine(KTEXT("%d %d:%d:%d - (%d): %ls %ls %d %d\n"), code, a, b, value1, value2);
}
