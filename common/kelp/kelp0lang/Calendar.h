// The arithmetic of the calendar, on which moments and local time both stand.
#pragma once

#include <windows.h>

#include <cstdint>

namespace kelp::detail {

inline constexpr int kMonths = 12;
inline constexpr int kDaysOfWeek = 7;
inline constexpr int kFebruary = 2;
inline constexpr int kDaysInMonth[kMonths] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// By the Gregorian rule, for all years.
constexpr bool IsLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// A month from 1 to 12.
constexpr int DaysInMonth(int year, int month) {
  return kDaysInMonth[month - 1] + (month == kFebruary && IsLeapYear(year) ? 1 : 0);
}

void SetTimeOfDay(_SYSTEMTIME& time, WORD hour, WORD minute);

// Milliseconds since 1601; 0 for a record that isn't a date with a time of day.
std::uint64_t FieldsToMs(const _SYSTEMTIME& time);
// The same, but an hour of 24 or more is the midnight at the end of the day, and the record then
// reads 23:59:00.000 afterwards.
std::uint64_t FieldsOrEndOfDayToMs(_SYSTEMTIME& time);

}  // namespace kelp::detail
