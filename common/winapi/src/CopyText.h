// How text gets into a caller's buffer.
#pragma once

#include <windows.h>

#include <algorithm>
#include <string_view>

// What fits in front of a terminator; gives the units copied. No buffer or no room gives 0.
inline int CopyText(std::u16string_view text, LPWSTR buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  const std::size_t count = std::min(text.size(), static_cast<std::size_t>(size) - 1);
  *std::copy_n(text.begin(), count, buffer) = 0;
  return static_cast<int>(count);
}
