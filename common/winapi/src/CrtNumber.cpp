// Numbers out of wide text.
#include <tchar.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <string>
#include <string_view>

namespace {

bool IsDigit(char16_t unit) {
  return unit >= '0' && unit <= '9';
}

const char16_t* SkipSpace(const char16_t* text) {
  while (std::iswspace(*text) != 0) ++text;
  return text;
}

// The decimal point of the locale, as bytes and as one unit.
struct DecimalPoint {
  std::string bytes;
  char16_t unit;
};

DecimalPoint LocalePoint() {
  const char* bytes = std::localeconv()->decimal_point;
  char16_t unit[2] = {};
  if (mbstowcs(unit, bytes, 1) != 1) return {".", u'.'};
  return {bytes, unit[0]};
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
  const DecimalPoint point = LocalePoint();
  // What can belong to a number, as the bytes that the narrow function reads.
  std::string bytes;
  for (text = SkipSpace(text); *text != 0; ++text) {
    if (*text == point.unit) {
      bytes += point.bytes;
    } else if (IsDigit(*text) ||
               std::u16string_view(u"+-eE").find(*text) != std::u16string_view::npos) {
      bytes += static_cast<char>(*text);
    } else {
      break;
    }
  }
  return std::strtod(bytes.c_str(), nullptr);
}
