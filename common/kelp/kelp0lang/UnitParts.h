// What angle forms and feet-and-inch values share: rounding to whole counts, and the digit runs of
// a text; internal to the library.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "kelp0lang/String.h"

namespace kelp::detail {

// Counts end here, below the limits of 64 bits.
inline constexpr std::int64_t kMaxCount = 9'000'000'000'000'000'000;

// floor(value + 0.5), the nearest count with a half upwards; what lies outside ends at +-kMaxCount,
// NaN counts 0.
inline std::int64_t RoundToCount(double value) {
  constexpr auto kLimit = static_cast<double>(kMaxCount);
  if (std::isnan(value)) return 0;
  if (std::fabs(value) >= kLimit) return value < 0 ? -kMaxCount : kMaxCount;
  return static_cast<std::int64_t>(std::floor(value + 0.5));
}

// The nearest value that 32 bits hold.
inline std::int32_t ToInt32(std::int64_t value) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

// The same for the integer part of a double; NaN gives 0.
inline std::int32_t ToInt32(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(value)) return 0;
  return static_cast<std::int32_t>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

// Digits in a row.
struct DigitRun {
  const WChar* text = nullptr;
  int length = 0;

  // The number that count digits from begin on show; 0 without digits, and what 32 bits don't hold
  // ends at their limit.
  std::int32_t Number(int begin, int count) const {
    std::int64_t number = 0;
    for (int i = begin; i < begin + count; ++i) {
      number = number * 10 + (text[i] - KTEXT('0'));
      if (number > std::numeric_limits<std::int32_t>::max()) return ToInt32(number);
    }
    return static_cast<std::int32_t>(number);
  }
  std::int32_t Number() const { return Number(0, length); }
};

// The first runs of digits of a text, which anything else separates. It points into the text.
struct DigitRuns {
  static constexpr int kMost = 4;

  explicit DigitRuns(const WString& text) {
    const WChar* unit = text.c_str();
    const WChar* const end = unit + text.Length();
    minus = unit != end && *unit == KTEXT('-');
    while (count < kMost) {
      unit = std::find_if(unit, end, IsDigit);
      if (unit == end) return;
      const WChar* const behind = std::find_if_not(unit, end, IsDigit);
      runs[count++] = {unit, static_cast<int>(behind - unit)};
      unit = behind;
    }
  }

  static bool IsDigit(WChar unit) { return unit >= KTEXT('0') && unit <= KTEXT('9'); }

  DigitRun runs[kMost];
  int count = 0;
  bool minus = false;  // the text begins with "-"
};

}  // namespace kelp::detail
