#include "kelp0lang/Calendar.h"

namespace kelp::detail {
namespace {

constexpr std::uint64_t kMsPerMinute = 60'000;
constexpr std::uint64_t kTicksPerMs = 10'000;

}  // namespace

void SetTimeOfDay(_SYSTEMTIME& time, WORD hour, WORD minute) {
  time.wHour = hour;
  time.wMinute = minute;
  time.wSecond = 0;
  time.wMilliseconds = 0;
}

std::uint64_t FieldsToMs(const _SYSTEMTIME& time) {
  FILETIME ticks;
  if (!SystemTimeToFileTime(&time, &ticks)) return 0;
  return (std::uint64_t{ticks.dwHighDateTime} << 32 | ticks.dwLowDateTime) / kTicksPerMs;
}

std::uint64_t FieldsOrEndOfDayToMs(_SYSTEMTIME& time) {
  const bool isEndOfDay = time.wHour >= 24;
  if (isEndOfDay) SetTimeOfDay(time, 23, 59);
  return FieldsToMs(time) + (isEndOfDay ? kMsPerMinute : 0);
}

}  // namespace kelp::detail
