// What every test of text needs: readable failures, and locales under either platform's names.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <ostream>
#include <string>

#include "kelp0lang/String.h"

namespace kelp {
inline void PrintTo(const String& text, std::ostream* out) { *out << '"' << text.c_str() << '"'; }
inline void PrintTo(const WString& text, std::ostream* out) {
  *out << '"' << text.ToUtf8().c_str() << '"';
}
}  // namespace kelp

// Sets a locale for a scope. Where the machine lacks it Ok() is false.
class LocaleScope {
 public:
  LocaleScope(int category, const char* name)
      : m_category(category), m_old(std::setlocale(category, nullptr)) {
    m_ok = std::setlocale(category, name) != nullptr;
  }
  ~LocaleScope() { std::setlocale(m_category, m_old.c_str()); }
  LocaleScope(const LocaleScope&) = delete;
  LocaleScope& operator=(const LocaleScope&) = delete;
  bool Ok() const { return m_ok; }

 private:
  int m_category;
  std::string m_old;
  bool m_ok;
};

// A locale with a decimal comma, and one whose characters have one byte, with its euro sign.
#ifdef _WIN32
inline constexpr const char* kGermanLocale = "German_Germany.1252";
inline constexpr const char* kOneByteLocale = kGermanLocale;
inline constexpr const char* kOneByteEuro = "\x80";
#else
inline constexpr const char* kGermanLocale = "de_DE.UTF-8";
inline constexpr const char* kOneByteLocale = "de_DE.ISO-8859-15";
inline constexpr const char* kOneByteEuro = "\xA4";
#endif
