// Local time as fields and as text.
#include <tchar.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <iterator>

namespace {

// 31 December 3000, 23:59:59 UTC.
constexpr __time64_t kLastTime = 32'535'215'999;
constexpr int kLastYear = 8099;  // 9999, as fields count them

constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool IsInRange(__time64_t time) {
  return time >= 0 && time <= kLastTime;
}

bool IsWithin(int value, int first, int last) {
  return value >= first && value <= last;
}

bool AreInRange(const tm& fields) {
  return IsWithin(fields.tm_wday, 0, 6) && IsWithin(fields.tm_mon, 0, 11) &&
         IsWithin(fields.tm_mday, 1, 31) && IsWithin(fields.tm_hour, 0, 23) &&
         IsWithin(fields.tm_min, 0, 59) && IsWithin(fields.tm_sec, 0, 59) &&
         IsWithin(fields.tm_year, 0, kLastYear);
}

}  // namespace

struct tm* _localtime64(const __time64_t* time) {
  thread_local tm fields;
  if (time == nullptr || !IsInRange(*time)) {
    errno = EINVAL;
    return nullptr;
  }
  const std::time_t seconds = *time;
  tzset();
  return localtime_r(&seconds, &fields);
}

__time64_t _mktime64(struct tm* fields) {
  tm normal = *fields;
  const std::time_t time = std::mktime(&normal);
  if (!IsInRange(time)) {
    errno = EINVAL;
    return -1;
  }
  *fields = normal;
  return time;
}

char16_t* _wasctime(const struct tm* fields) {
  thread_local char16_t text[26];
  if (fields == nullptr || !AreInRange(*fields)) {
    errno = EINVAL;
    return nullptr;
  }
  char narrow[128];
  std::snprintf(narrow, sizeof narrow, "%s %s %02d %02d:%02d:%02d %04d\n", kDays[fields->tm_wday],
                kMonths[fields->tm_mon], fields->tm_mday, fields->tm_hour, fields->tm_min,
                fields->tm_sec, fields->tm_year + 1900);
  std::copy_n(narrow, std::size(text), text);
  return text;
}
