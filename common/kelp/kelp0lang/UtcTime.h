// Moments and the calendar.
//
//   const std::uint64_t now = kelp::FGetUtcCurTime();
//   _SYSTEMTIME shown;
//   kelp::FUtcMsToUserTime(kelp::tsLocal, now, &shown);
//   const int age = kelp::ComputeDays({1, 3, 2020}, {shown.wDay, shown.wMonth, shown.wYear});
//
// A moment is a count of milliseconds since 1 January 1601 00:00 UTC ("UTC ms"). The same count may
// also tell a reading of the zone's or of the local clock ("zone ms", "local ms"). UTC days are
// whole days since then, C times whole seconds since 1 January 1970 00:00 UTC.
//
// The calendar is the Gregorian one, for all years. Months and days of a date count from 1.
//
// Nothing here reports a failure. A record that isn't a date of the years 1601 to 30827 with a time
// of day counts as 1 January 1601 00:00; a moment that a record can't hold leaves the record as it
// was. The weekday of a record isn't read unless it says so.
//
// Threads: any. Conversions to and from local time enter the critical section of the process-wide
// CGlobalLocalTimeComputer; those to and from zone time only read its zone, and so don't run beside
// FResetGlobalLocalTimeComputer. All others are pure or read the clock.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>

#include "kelp0lang/Export.h"

namespace kelp {

// In which time a user reads a value. Any other value means UTC.
enum enumTimeSystem : std::int32_t {
  tsUtc,
  tsZone,   // standard time of the zone all the year: UTC minus its bias
  tsLocal,  // the local clock, daylight saving included
};

struct TGeoDate {
  int day;
  int month;
  int year;
};

// C times before 1970, and moments before it, wrap around.
KELP0LANG_API std::uint64_t CTimeToUtcMs(std::uint64_t t);
KELP0LANG_API std::uint64_t UtcMsToCTime(std::uint64_t ms);
// Into UTC. Only the low 32 bits count, as a signed number of seconds: 1901 to 2038.
KELP0LANG_API void UnixToSystemTime(std::uint64_t t, _SYSTEMTIME* time);
// An hour of 24 or more is the midnight at the end of the day; the record then reads 23:59:00.000
// afterwards.
KELP0LANG_API std::uint64_t FSystemTimeToMs(_SYSTEMTIME* time);
KELP0LANG_API void FMsToSystemTime(std::uint64_t ms, _SYSTEMTIME* time);

// A moment as the standard library has it, and back; a moment before 1601 wraps around.
inline std::chrono::sys_time<std::chrono::milliseconds> UtcMsToSysTime(std::uint64_t ms) {
  constexpr std::uint64_t kFrom1601To1970 = 11644473600000;
  return std::chrono::sys_time<std::chrono::milliseconds>(
      std::chrono::milliseconds(static_cast<std::int64_t>(ms - kFrom1601To1970)));
}
inline std::uint64_t SysTimeToUtcMs(std::chrono::sys_time<std::chrono::milliseconds> time) {
  constexpr std::uint64_t kFrom1601To1970 = 11644473600000;
  return static_cast<std::uint64_t>(time.time_since_epoch().count()) + kFrom1601To1970;
}

// The low 32 bits of the day; a negative day is a moment before 1601, which wraps around.
KELP0LANG_API int UtcMsToUtcDay1600(std::uint64_t ms);
KELP0LANG_API std::uint64_t UtcDay1600ToUtcMs(int day);
// Years before 1601 have negative days.
KELP0LANG_API int GetUtcDay1600(int day, int month, int year);
// The midnight with which the UTC day of a moment begins.
KELP0LANG_API std::uint64_t FGetUtcMidNight(std::uint64_t ms);

// Now.
KELP0LANG_API std::uint64_t FGetUtcCurTime();
// The midnights with which today began, in UTC and on the local clock, in UTC ms.
KELP0LANG_API std::uint64_t FGetUtcMidNightOfCurUtcDay();
KELP0LANG_API std::uint64_t FGetUtcMidNightOfCurLocalDay();

// Through the process-wide computer of the machine's zone (LocalTimeComputer.h), which says what
// becomes of readings that the clock skips or shows twice.
KELP0LANG_API std::uint64_t FLocalTimeToUtcMs(_SYSTEMTIME* time);
KELP0LANG_API void FUtcMsToLocalTime(std::uint64_t ms, _SYSTEMTIME* time);
KELP0LANG_API std::uint64_t FUtcMsToZoneMs(std::uint64_t ms);
KELP0LANG_API std::uint64_t FZoneMsToUtcMs(std::uint64_t ms);
KELP0LANG_API std::uint64_t FUserMsToUtcMs(enumTimeSystem system, std::uint64_t ms);
KELP0LANG_API std::uint64_t FUtcMsToUserMs(enumTimeSystem system, std::uint64_t ms);
// An hour of 24 or more is as for FSystemTimeToMs.
KELP0LANG_API std::uint64_t FUserTimeToUtcMs(enumTimeSystem system, _SYSTEMTIME* time);
KELP0LANG_API void FUtcMsToUserTime(enumTimeSystem system, std::uint64_t ms, _SYSTEMTIME* time);
// Takes up a change of the machine's zone. No other thread converts meanwhile.
KELP0LANG_API void FResetGlobalLocalTimeComputer();

// Days from 1 January of year 0, which is day 1; a negative year gives 0. Here and below a month is
// from 1 to 12. Counts have 32 bits: from 11 July 5,879,610 on they wrap around, and so do the
// differences.
KELP0LANG_API int GetDaysFrom1stJan0(const TGeoDate& date);
// From a to b, negative where b is the earlier.
KELP0LANG_API int ComputeDays(const TGeoDate& a, const TGeoDate& b);
// The day of the year from 1, and back. Days behind the year's end are counted on in December.
KELP0LANG_API int GetJulianDay(int day, int month, int year);
KELP0LANG_API void FromJulianDay(int year, int julianDay, int& day, int& month);
KELP0LANG_API unsigned short GetNoDaysInMonth(unsigned short year, unsigned short month);
KELP0LANG_API unsigned short GetNoDaysInMonth(const _SYSTEMTIME& time);
// Step date and weekday on or back, day by day: a million days take milliseconds. Zero and negative
// numbers of days change nothing; years have 16 bits and wrap around.
KELP0LANG_API void NextDay(_SYSTEMTIME& time, int days);
KELP0LANG_API void PrevDay(_SYSTEMTIME& time, int days);

}  // namespace kelp
