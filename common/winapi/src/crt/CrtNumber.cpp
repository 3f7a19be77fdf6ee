// Numbers out of wide text.
#include <tchar.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cwctype>

namespace {

bool IsDigit(char16_t unit) {
  return unit >= '0' && unit <= '9';
}

const char16_t* SkipSpace(const char16_t* text) {
  while (std::iswspace(*text) != 0) ++text;
  return text;
}

}  // namespace

int _wtoi(const char16_t* text) {
  text = SkipSpace(text);
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  std::int64_t value = 0;
  // One digit beyond 32 bits settles that the value doesn't fit; the rest can't take it back.
  for (; IsDigit(*text) && value <= INT_MAX; ++text) value = value * 10 + (*text - '0');
  if (negative) value = -value;
  const auto fitting = static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX));
  if (fitting != value) errno = ERANGE;
  return fitting;
}

long _wtol(const char16_t* text) {
  return _wtoi(text);
}

double _wtof(const char16_t* text) {
  return _wtof_l(text, nullptr);
}
