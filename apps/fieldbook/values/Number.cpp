#include "fieldbook/values/Number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace fieldbook {

Message NotANumber() {
  return {KTEXT("not a number"), {}};
}
Message OutOfRange() {
  return {KTEXT("out of range"), {}};
}

Reading ToReading(const TValueCheck& check) {
  if (check.IsValue()) return {check.value, {}};
  return {kelp::kNotSet, {check.source, {check.first, check.second}}};
}

bool HasForbiddenComma(const WString& text, DecimalMark mark) {
  return mark == DecimalMark::Point && text.IndexOf(KTEXT(',')) >= 0;
}

Reading ReadNumber(const WString& text, DecimalMark mark) {
  if (HasForbiddenComma(text, mark)) return {kelp::kNotSet, NotANumber()};
  return ToReading(CheckNumber(text));
}

bool IsFraction(const WString& word) {
  const WideView view = ViewOf(word);
  if (view.empty() || ReadNumber(word, DecimalMark::Point).fault) return false;
  const bool hasDigits = std::any_of(view.begin(), view.end(), IsDigit<WChar>);
  const bool isOneWord = std::none_of(view.begin(), view.end(), IsBlank<WChar>);
  return !hasDigits || (isOneWord && IsDigit(view.front()) && view.find(KTEXT('/')) != view.npos);
}

WString WriteExactly(double value, int leastDecimals) {
  std::string text;
  AppendExactly(text, value, leastDecimals);
  return Decode(text, true);
}

void AppendExactly(std::string& bytes, double value, int leastDecimals) {
  if (value > kelp::kNotSetThreshold) return;
  char digits[400];  // the smallest double has 324 decimals
  const auto written =
      std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed);
  const char* const point = std::find(std::begin(digits), written.ptr, '.');
  bytes.append(digits, written.ptr);
  if (point == written.ptr) bytes += '.';
  const auto decimals = std::max<std::ptrdiff_t>(written.ptr - point - 1, 0);
  if (decimals < leastDecimals)
    bytes.append(static_cast<std::size_t>(leastDecimals - decimals), '0');
}

WString WriteNumber(double value, int decimals) {
  std::string bytes;
  AppendNumber(bytes, value, decimals);
  return Decode(bytes, true);
}

void AppendNumber(std::string& bytes, double value, int decimals) {
  if (value > kelp::kNotSetThreshold) return;
  char digits[350];  // the greatest double has 309 of them before the point
  const auto written = std::to_chars(std::begin(digits), std::end(digits), value,
                                     std::chars_format::fixed, decimals);
  std::string_view text(digits, static_cast<std::size_t>(written.ptr - digits));
  const bool isZero = text.find_first_of("123456789") == text.npos;
  if (isZero && text.starts_with('-')) text.remove_prefix(1);
  bytes += text;
}

}  // namespace fieldbook
