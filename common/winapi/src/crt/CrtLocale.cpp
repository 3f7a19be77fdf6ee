// Locale objects, and numbers read under them.
#include <tchar.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <string>

namespace {

int MaskOf(int category) {
  switch (category) {
    case LC_ALL:
      return LC_ALL_MASK;
    case LC_COLLATE:
      return LC_COLLATE_MASK;
    case LC_CTYPE:
      return LC_CTYPE_MASK;
    case LC_MONETARY:
      return LC_MONETARY_MASK;
    case LC_NUMERIC:
      return LC_NUMERIC_MASK;
    case LC_TIME:
      return LC_TIME_MASK;
    default:
      return 0;
  }
}

// Puts the thread under a locale for a scope; null leaves it where it is.
class ThreadLocale {
 public:
  explicit ThreadLocale(_locale_t locale) : m_old(uselocale(locale)) {}
  ~ThreadLocale() { uselocale(m_old); }
  ThreadLocale(const ThreadLocale&) = delete;
  ThreadLocale& operator=(const ThreadLocale&) = delete;

 private:
  locale_t m_old;
};

bool IsSpace(char unit) {
  return std::isspace(static_cast<unsigned char>(unit)) != 0;
}
bool IsSpace(char16_t unit) {
  return std::iswspace(unit) != 0;
}

// Copies ASCII units as long as they are digits.
template <class C>
void TakeDigits(const C*& text, std::string& number) {
  for (; *text >= '0' && *text <= '9'; ++text) number += static_cast<char>(*text);
}

template <class C>
void TakeSign(const C*& text, std::string& number) {
  if (*text == '-' || *text == '+') number += static_cast<char>(*text++);
}

// Gives strtod the documented form alone, so that it reads no hexadecimal digits, "inf" or "nan";
// point is the decimal point in units of the text, pointBytes what strtod knows it as.
template <class C>
double ReadNumber(const C* text, const std::basic_string<C>& point, const char* pointBytes) {
  std::string number;
  while (IsSpace(*text)) ++text;
  TakeSign(text, number);
  TakeDigits(text, number);
  if (std::equal(point.begin(), point.end(), text)) {
    number += pointBytes;
    text += point.size();
    TakeDigits(text, number);
  }
  if (*text == 'e' || *text == 'E') {
    number += 'e';
    TakeSign(++text, number);
    TakeDigits(text, number);
  }
  return std::strtod(number.c_str(), nullptr);
}

}  // namespace

_locale_t _create_locale(int category, const char* name) {
  const int mask = MaskOf(category);
  return mask == 0 || name == nullptr ? nullptr : newlocale(mask, name, nullptr);
}

_locale_t _get_current_locale() {
  return duplocale(uselocale(nullptr));
}

void _free_locale(_locale_t locale) {
  if (locale != nullptr) freelocale(locale);
}

double _atof_l(const char* text, _locale_t locale) {
  const ThreadLocale scope(locale);
  const char* point = std::localeconv()->decimal_point;
  return ReadNumber(text, std::string(point), point);
}

double _wtof_l(const char16_t* text, _locale_t locale) {
  const ThreadLocale scope(locale);
  const char* bytes = std::localeconv()->decimal_point;
  wchar_t point = L'.';
  std::mbstate_t state{};
  std::mbrtowc(&point, bytes, MB_CUR_MAX, &state);
  return ReadNumber(text, std::u16string(1, static_cast<char16_t>(point)), bytes);
}
