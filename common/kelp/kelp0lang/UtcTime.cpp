#include "kelp0lang/UtcTime.h"

#include "kelp0lang/Calendar.h"
#include "kelp0lang/LocalTimeComputer.h"

namespace kelp {

using detail::FieldsToMs;
using detail::IsLeapYear;
using detail::kDaysOfWeek;
using detail::kFebruary;
using detail::kMonths;
using detail::SetTimeOfDay;

namespace {

// From 1601 to 1970.
constexpr std::uint64_t kUnixEpochSeconds = 11644473600;
constexpr std::uint64_t kMsPerSecond = 1000;
constexpr std::uint64_t kMsPerDay = 86'400'000;
constexpr std::uint64_t kTicksPerMs = 10'000;

constexpr int kDaysOfYear = 365;
constexpr int kLeapDayOfYear = 60;
constexpr int kDaysBeforeMonth[kMonths] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
constexpr TGeoDate kEpochDate{1, 1, 1601};

std::int64_t DayOfYear(int day, int month, int year) {
  const int leapDay = month > kFebruary && IsLeapYear(year) ? 1 : 0;
  return std::int64_t{kDaysBeforeMonth[month - 1]} + day + leapDay;
}

}  // namespace

std::uint64_t CTimeToUtcMs(std::uint64_t t) {
  return (kUnixEpochSeconds + t) * kMsPerSecond;
}

std::uint64_t UtcMsToCTime(std::uint64_t ms) {
  return (ms - kUnixEpochSeconds * kMsPerSecond) / kMsPerSecond;
}

void UnixToSystemTime(std::uint64_t t, _SYSTEMTIME* time) {
  const std::int64_t seconds = static_cast<std::int32_t>(t);
  FMsToSystemTime(CTimeToUtcMs(static_cast<std::uint64_t>(seconds)), time);
}

std::uint64_t FSystemTimeToMs(_SYSTEMTIME* time) {
  return detail::FieldsOrEndOfDayToMs(*time);
}

void FMsToSystemTime(std::uint64_t ms, _SYSTEMTIME* time) {
  const std::uint64_t ticks = ms * kTicksPerMs;
  const FILETIME fileTime{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  FileTimeToSystemTime(&fileTime, time);
}

int UtcMsToUtcDay1600(std::uint64_t ms) {
  return static_cast<int>(ms / kMsPerDay);
}

std::uint64_t UtcDay1600ToUtcMs(int day) {
  return static_cast<std::uint64_t>(day) * kMsPerDay;
}

int GetUtcDay1600(int day, int month, int year) {
  return ComputeDays(kEpochDate, {day, month, year});
}

std::uint64_t FGetUtcMidNight(std::uint64_t ms) {
  return ms - ms % kMsPerDay;
}

std::uint64_t FGetUtcCurTime() {
  _SYSTEMTIME now;
  GetSystemTime(&now);
  return FSystemTimeToMs(&now);
}

std::uint64_t FGetUtcMidNightOfCurUtcDay() {
  _SYSTEMTIME now;
  GetSystemTime(&now);
  SetTimeOfDay(now, 0, 0);
  return FSystemTimeToMs(&now);
}

std::uint64_t FGetUtcMidNightOfCurLocalDay() {
  _SYSTEMTIME now;
  GetLocalTime(&now);
  SetTimeOfDay(now, 0, 0);
  return FLocalTimeToUtcMs(&now);
}

std::uint64_t FLocalTimeToUtcMs(_SYSTEMTIME* time) {
  return CGlobalLocalTimeComputer::GetInstance().Local_to_Utc(FieldsToMs(*time));
}

void FUtcMsToLocalTime(std::uint64_t ms, _SYSTEMTIME* time) {
  FMsToSystemTime(CGlobalLocalTimeComputer::GetInstance().Utc_to_Local(ms), time);
}

std::uint64_t FUtcMsToZoneMs(std::uint64_t ms) {
  return CGlobalLocalTimeComputer::GetInstance().GetComputer().Utc_to_Zone(ms);
}

std::uint64_t FZoneMsToUtcMs(std::uint64_t ms) {
  return CGlobalLocalTimeComputer::GetInstance().GetComputer().Zone_to_Utc(ms);
}

std::uint64_t FUserMsToUtcMs(enumTimeSystem system, std::uint64_t ms) {
  if (system == tsZone) return FZoneMsToUtcMs(ms);
  if (system == tsLocal) return CGlobalLocalTimeComputer::GetInstance().Local_to_Utc(ms);
  return ms;
}

std::uint64_t FUtcMsToUserMs(enumTimeSystem system, std::uint64_t ms) {
  if (system == tsZone) return FUtcMsToZoneMs(ms);
  if (system == tsLocal) return CGlobalLocalTimeComputer::GetInstance().Utc_to_Local(ms);
  return ms;
}

std::uint64_t FUserTimeToUtcMs(enumTimeSystem system, _SYSTEMTIME* time) {
  return FUserMsToUtcMs(system, FSystemTimeToMs(time));
}

void FUtcMsToUserTime(enumTimeSystem system, std::uint64_t ms, _SYSTEMTIME* time) {
  FMsToSystemTime(FUtcMsToUserMs(system, ms), time);
}

void FResetGlobalLocalTimeComputer() {
  _TIME_ZONE_INFORMATION zone;
  GetTimeZoneInformation(&zone);
  CGlobalLocalTimeComputer::GetInstance().GetComputer().SetTimeZoneInformation(zone);
}

int GetDaysFrom1stJan0(const TGeoDate& date) {
  if (date.year < 0) return 0;
  // The leap years from year 0 on that have gone by are counted.
  const std::int64_t year = date.year;
  const std::int64_t days =
      year * kDaysOfYear + (year + 3) / 4 - (year + 99) / 100 + (year + 399) / 400;
  return static_cast<int>(days + DayOfYear(date.day, date.month, date.year));
}

int ComputeDays(const TGeoDate& a, const TGeoDate& b) {
  return static_cast<int>(std::int64_t{GetDaysFrom1stJan0(b)} - GetDaysFrom1stJan0(a));
}

int GetJulianDay(int day, int month, int year) {
  return static_cast<int>(DayOfYear(day, month, year));
}

void FromJulianDay(int year, int julianDay, int& day, int& month) {
  if (IsLeapYear(year)) {
    if (julianDay == kLeapDayOfYear) {
      day = 29;
      month = kFebruary;
      return;
    }
    if (julianDay > kLeapDayOfYear) --julianDay;
  }
  month = 1;
  while (month < kMonths && julianDay > kDaysBeforeMonth[month]) ++month;
  day = julianDay - kDaysBeforeMonth[month - 1];
}

unsigned short GetNoDaysInMonth(unsigned short year, unsigned short month) {
  return static_cast<unsigned short>(detail::DaysInMonth(year, month));
}

unsigned short GetNoDaysInMonth(const _SYSTEMTIME& time) {
  return GetNoDaysInMonth(time.wYear, time.wMonth);
}

void NextDay(_SYSTEMTIME& time, int days) {
  for (; days > 0; --days) {
    time.wDayOfWeek = (time.wDayOfWeek + 1) % kDaysOfWeek;
    if (++time.wDay <= GetNoDaysInMonth(time)) continue;
    time.wDay = 1;
    if (++time.wMonth <= kMonths) continue;
    time.wMonth = 1;
    ++time.wYear;
  }
}

void PrevDay(_SYSTEMTIME& time, int days) {
  for (; days > 0; --days) {
    time.wDayOfWeek = (time.wDayOfWeek + kDaysOfWeek - 1) % kDaysOfWeek;
    if (--time.wDay > 0) continue;
    if (--time.wMonth == 0) {
      time.wMonth = kMonths;
      --time.wYear;
    }
    time.wDay = GetNoDaysInMonth(time);
  }
}

}  // namespace kelp
