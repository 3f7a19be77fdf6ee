// The clock, and file times as dates of the calendar.
#include <windows.h>

#include <chrono>
#include <ctime>

#include "Fail.h"
#include "FileTimes.h"

using std::chrono::day;
using std::chrono::days;
using std::chrono::floor;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year;
using std::chrono::year_month_day;

namespace {

// 100 nanoseconds.
using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

constexpr Ticks kSecond{kTicksPerSecond};
constexpr Ticks kMillisecond{10'000};
constexpr sys_days kEpoch = year(1601) / 1 / 1;
constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

FILETIME ToFileTime(Ticks sinceEpoch) {
  return ::ToFileTime(static_cast<std::uint64_t>(sinceEpoch.count()));
}

SYSTEMTIME ToSystemTime(Ticks sinceEpoch) {
  const days dayCount = floor<days>(sinceEpoch);
  const sys_days date = kEpoch + dayCount;
  const year_month_day calendar = date;
  const std::chrono::hh_mm_ss time(floor<std::chrono::milliseconds>(sinceEpoch - Ticks(dayCount)));
  SYSTEMTIME result;
  result.wYear = static_cast<WORD>(static_cast<int>(calendar.year()));
  result.wMonth = static_cast<WORD>(static_cast<unsigned>(calendar.month()));
  result.wDayOfWeek = static_cast<WORD>(weekday(date).c_encoding());
  result.wDay = static_cast<WORD>(static_cast<unsigned>(calendar.day()));
  result.wHour = static_cast<WORD>(time.hours().count());
  result.wMinute = static_cast<WORD>(time.minutes().count());
  result.wSecond = static_cast<WORD>(time.seconds().count());
  result.wMilliseconds = static_cast<WORD>(time.subseconds().count());
  return result;
}

bool IsTimeOfDay(const SYSTEMTIME& time) {
  return time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

// Seconds and parts of them since the epoch of POSIX.
timespec Now() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return now;
}

Ticks SinceEpoch(const timespec& time) {
  return Ticks(ToTicks(time.tv_sec, time.tv_nsec));
}

}  // namespace

void WINAPI GetSystemTime(LPSYSTEMTIME time) {
  *time = ToSystemTime(SinceEpoch(Now()));
}

void WINAPI GetLocalTime(LPSYSTEMTIME time) {
  timespec now = Now();
  // localtime_r alone needn't notice that the zone has changed.
  tzset();
  tm local;
  localtime_r(&now.tv_sec, &local);
  now.tv_sec += local.tm_gmtoff;
  *time = ToSystemTime(SinceEpoch(now));
}

void WINAPI GetSystemTimeAsFileTime(LPFILETIME time) {
  *time = ToFileTime(SinceEpoch(Now()));
}

ULONGLONG WINAPI GetTickCount64() {
  timespec sinceStart;
  clock_gettime(CLOCK_BOOTTIME, &sinceStart);
  return static_cast<ULONGLONG>(sinceStart.tv_sec) * 1000 + sinceStart.tv_nsec / 1'000'000;
}

DWORD WINAPI GetTickCount() {
  return static_cast<DWORD>(GetTickCount64());
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* time, LPFILETIME fileTime) {
  const year_month_day date(year(time->wYear), month(time->wMonth), day(time->wDay));
  // The calendar keeps a month or day in 8 bits.
  const bool isDate = time->wYear >= kFirstYear && time->wYear <= kLastYear && time->wMonth <= 12 &&
                      time->wDay <= 31 && date.ok();
  if (!isDate || !IsTimeOfDay(*time)) return Fail(ERROR_INVALID_PARAMETER);
  const std::int64_t seconds = (time->wHour * 60 + time->wMinute) * 60 + time->wSecond;
  *fileTime = ToFileTime(Ticks(sys_days(date) - kEpoch) + seconds * kSecond +
                         time->wMilliseconds * kMillisecond);
  return TRUE;
}

BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, LPSYSTEMTIME time) {
  const auto count = static_cast<std::int64_t>(ToTicks(*fileTime));
  if (count < 0) return Fail(ERROR_INVALID_PARAMETER);
  *time = ToSystemTime(Ticks(count));
  return TRUE;
}
