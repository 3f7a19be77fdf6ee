#include "fieldbook/values/Number.h"

#include <charconv>
#include <cmath>
#include <iterator>

#include "fieldbook/values/Scanner.h"
#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/LocaleFree.h"

namespace fieldbook {
namespace {

// kelp_wtof reads the number that a text begins with, which would pass "12abc" as 12.
bool IsNumber(const WString& text, DecimalMark mark) {
  Scanner scan(ViewOf(text));
  scan.TakeSign();
  std::size_t digits = scan.TakeDigits().size();
  const WideView marks = mark == DecimalMark::Point ? KTEXT(".") : KTEXT(".,");
  if (scan.TakeOneOf(marks)) digits += scan.TakeDigits().size();
  if (digits == 0) return false;
  if (scan.TakeOneOf(KTEXT("eE"))) {
    scan.TakeSign();
    if (scan.TakeDigits().empty()) return false;
  }
  return scan.AtEnd();
}

}  // namespace

Message NotANumber() {
  return {KTEXT("not a number"), {}};
}
Message OutOfRange() {
  return {KTEXT("out of range"), {}};
}

Reading ReadNumber(const WString& text, DecimalMark mark) {
  if (!IsNumber(text, mark)) return {kelp::kNotSet, NotANumber()};
  const double value = kelp_wtof(text.Replace(KTEXT(','), KTEXT('.')).c_str());
  if (std::fabs(value) > kelp::kNotSetThreshold) return {kelp::kNotSet, OutOfRange()};
  return {value, {}};
}

WString WriteExactly(double value, int leastDecimals) {
  if (value > kelp::kNotSetThreshold) return WString();
  char digits[400];  // the smallest double has 324 decimals
  const auto written =
      std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed);
  std::string text(digits, written.ptr);
  if (text.find('.') == std::string::npos) text += '.';
  const std::size_t least = text.find('.') + 1 + static_cast<std::size_t>(leastDecimals);
  if (text.size() < least) text.append(least - text.size(), '0');
  return Decode(text, true);
}

WString WriteNumber(double value, int decimals) {
  const WString text = StringDaDouble(value, 0, decimals);
  const bool isZero = ViewOf(text).find_first_of(KTEXT("123456789")) == WideView::npos;
  return isZero ? text.TrimLeft(KTEXT('-')) : text;
}

}  // namespace fieldbook
