// File times, calendar dates and the time zone.
#pragma once

#include "minwinbase.h"

// A year from 1601 to 30827, an existing day of it, a time from 00:00:00.000 to 23:59:59.999. The
// weekday isn't looked at. Anything else fails with ERROR_INVALID_PARAMETER.
WINAPI_EXPORT BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* time, LPFILETIME fileTime);
// A file time below 0x8000000000000000, which is in September 30828; from there on it fails with
// ERROR_INVALID_PARAMETER.
WINAPI_EXPORT BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, LPSYSTEMTIME time);

#define TIME_ZONE_ID_UNKNOWN 0
#define TIME_ZONE_ID_STANDARD 1
#define TIME_ZONE_ID_DAYLIGHT 2
#define TIME_ZONE_ID_INVALID ((DWORD)0xFFFFFFFF)

// UTC = local time + Bias + the bias of the part of the year, in minutes. The two dates are those
// of the changes to standard and to daylight saving time, on the clock as it reads before: year 0,
// the month, the weekday, in wDay the week from 1 to 5, the last, and the time. Both months are 0
// where there is no daylight saving.
typedef struct _TIME_ZONE_INFORMATION {
  LONG Bias;
  WCHAR StandardName[32];
  SYSTEMTIME StandardDate;
  LONG StandardBias;
  WCHAR DaylightName[32];
  SYSTEMTIME DaylightDate;
  LONG DaylightBias;
} TIME_ZONE_INFORMATION, *LPTIME_ZONE_INFORMATION;

// The machine's zone, and which part of its year it is: TIME_ZONE_ID_UNKNOWN where there is no
// daylight saving. Never fails.
//
// The zone is that of TZ, where it is set, else of /etc/localtime: a rule ("CET-1CEST,M3.5.0,
// M10.5.0/3") or a zone file. A file's record has the changes of the current year: by the rule at
// its end where that foretells them, else, as where clocks go back for Ramadan, each as the weekday
// and week on which it falls this year, so that only this year is right. A record has two changes;
// of a file's three or more they are the last and the next one. The names are those of the periods.
// Of two offsets the lesser is standard time, though the rule call it the other way, as the Irish
// does. A zone that can't be read is UTC. What a record can't tell is made to fit: 24:00 is
// 23:59:59.999, days of the year and times further outside of their day become the weekday and week
// that they have in the current year, daylight saving all the year the standard time.
WINAPI_EXPORT DWORD WINAPI GetTimeZoneInformation(LPTIME_ZONE_INFORMATION zone);

// A zone and the name by which the system knows it.
typedef struct _TIME_DYNAMIC_ZONE_INFORMATION {
  LONG Bias;
  WCHAR StandardName[32];
  SYSTEMTIME StandardDate;
  LONG StandardBias;
  WCHAR DaylightName[32];
  SYSTEMTIME DaylightDate;
  LONG DaylightBias;
  WCHAR TimeZoneKeyName[128];
  BOOLEAN DynamicDaylightTimeDisabled;
} DYNAMIC_TIME_ZONE_INFORMATION, *PDYNAMIC_TIME_ZONE_INFORMATION;

// The zones that the system knows, one for each index from 0 on; ERROR_NO_MORE_ITEMS behind the
// last, ERROR_INVALID_PARAMETER without a place for the record. They are the files of the folder
// that TZDIR names, else of the system's database, in the order of their names ("Europe/Rome"; on
// Windows names are of another kind, "W. Europe Standard Time"). Each has the record that
// GetTimeZoneInformation gives where it is the machine's zone.
WINAPI_EXPORT DWORD WINAPI EnumDynamicTimeZoneInformation(DWORD index,
                                                          PDYNAMIC_TIME_ZONE_INFORMATION zone);
