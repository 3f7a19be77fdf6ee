#include "kelp0lang/SafeFormat.h"

#include <tchar.h>

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <cwchar>

#include "kelp0lang/TextScan.h"

namespace kelp::detail {

namespace {

constexpr std::uint64_t kMaxArguments = 100;

// Passes the pieces of the text on in order; false for a number without an argument.
template <class Pass>
bool ForEachPiece(const WChar* format, const WChar* const* arguments, std::uint64_t count,
                  Pass pass) {
  const WChar* number = nullptr;  // within braces, where the number begins
  for (; *format != 0; ++format) {
    if (number == nullptr) {
      if (*format == '{') {
        number = format + 1;
      } else {
        pass(format, 1);
      }
    } else if (*format == '{') {
      pass(format, 1);
      number = nullptr;
    } else if (*format == '}') {
      const int index = _wtoi(number);
      if (index < 1 || static_cast<std::uint64_t>(index) > count) return false;
      const WChar* argument = arguments[index - 1];
      pass(argument, wcslen(argument));
      number = nullptr;
    }
  }
  return true;
}

}  // namespace

WString kelp_safefmt(const WChar* format, std::uint64_t count, ...) {
  if (count > kMaxArguments) return WString();
  const WChar* arguments[kMaxArguments];
  std::va_list args;
  va_start(args, count);
  for (std::uint64_t i = 0; i < count; ++i) arguments[i] = va_arg(args, const WChar*);
  va_end(args);

  std::size_t length = 0;
  const auto measure = [&length](const WChar*, std::size_t size) { length += size; };
  if (!ForEachPiece(format, arguments, count, measure)) return WString();
  WString result;
  WChar* target = result.GetBufferSetLength(FittingLength(length));
  ForEachPiece(format, arguments, count, [&target](const WChar* text, std::size_t size) {
    target = std::copy_n(text, size, target);
  });
  return result;
}

}  // namespace kelp::detail
