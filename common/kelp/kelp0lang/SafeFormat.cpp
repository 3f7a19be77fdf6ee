#include "kelp0lang/SafeFormat.h"

#include <tchar.h>

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <string_view>

#include "kelp0lang/TextScan.h"

namespace kelp::detail {

namespace {

constexpr std::uint64_t kMaxArguments = 100;

using View = std::basic_string_view<WChar>;

// Passes the pieces of the text on in order; false for a number without an argument.
template <class Argument, class Pass>
bool ForEachPiece(const WChar* format, Argument argument, std::uint64_t count, Pass pass) {
  const WChar* number = nullptr;  // within braces, where the number begins
  for (; *format != 0; ++format) {
    if (number == nullptr) {
      if (*format == '{') {
        number = format + 1;
      } else {
        pass(View(format, 1));
      }
    } else if (*format == '{') {
      pass(View(format, 1));
      number = nullptr;
    } else if (*format == '}') {
      const int index = _wtoi(number);
      if (index < 1 || static_cast<std::uint64_t>(index) > count) return false;
      pass(argument(static_cast<std::size_t>(index - 1)));
      number = nullptr;
    }
  }
  return true;
}

// argument(i) gives the text of argument i.
template <class Argument>
WString Fill(const WChar* format, std::uint64_t count, Argument argument) {
  std::size_t length = 0;
  const auto measure = [&length](View piece) { length += piece.size(); };
  if (!ForEachPiece(format, argument, count, measure)) return WString();
  WString result;
  WChar* target = result.GetBufferSetLength(FittingLength(length));
  ForEachPiece(format, argument, count,
               [&target](View piece) { target = std::copy(piece.begin(), piece.end(), target); });
  return result;
}

}  // namespace

WString kelp_safefmt(const WChar* format, std::uint64_t count, ...) {
  if (count > kMaxArguments) return WString();
  const WChar* arguments[kMaxArguments];
  std::va_list args;
  va_start(args, count);
  for (std::uint64_t i = 0; i < count; ++i) arguments[i] = va_arg(args, const WChar*);
  va_end(args);

  return Fill(format, count, [&arguments](std::size_t i) {
    return View(arguments[i], TerminatedLength(arguments[i]));
  });
}

}  // namespace kelp::detail

kelp::WString kelp::FillTemplate(const WChar* format, std::span<const WString> values) {
  return detail::Fill(format, values.size(), [values](std::size_t i) {
    return detail::View(values[i].c_str(), values[i].length());
  });
}
