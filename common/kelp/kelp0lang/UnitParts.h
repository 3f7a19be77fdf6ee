// What angle forms and feet-and-inch values share: signs, rounding to whole counts, writing these,
// and the digit runs of a text; internal to the library.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "kelp0lang/String.h"
#include "kelptext/Digits.h"

namespace kelp::detail {

// Counts end here, below the limits of 64 bits.
inline constexpr std::int64_t kMaxCount = 9'000'000'000'000'000'000;

// floor(value + 0.5), the nearest count with a half upwards; what lies outside ends at +-kMaxCount,
// NaN counts 0.
inline std::int64_t RoundToCount(double value) {
  constexpr auto kLimit = static_cast<double>(kMaxCount);
  if (std::isnan(value)) return 0;
  if (std::fabs(value) >= kLimit) return value < 0 ? -kMaxCount : kMaxCount;
  const double shifted = value + 0.5;
  const auto truncated = static_cast<std::int64_t>(shifted);
  return truncated - (static_cast<double>(truncated) > shifted);
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

inline double WithSign(double magnitude, bool negative) {
  return negative ? -magnitude : magnitude;
}

// Writes into a buffer that the caller knows to be large enough, by eight units more than the text.
class TextWriter {
 public:
  explicit TextWriter(WChar* text) : m_begin(text), m_end(text) {}

  void Put(WChar unit) { *m_end++ = unit; }
  void Zeros(int count) { m_end = std::fill_n(m_end, std::max(count, 0), KTEXT('0')); }
  // A number below 100, with as many digits as it has, or two.
  void Small(int value) {
    const WChar* const pair = &kDigitPairs<WChar>[static_cast<std::size_t>(value) * 2];
    const int two = value >= 10;
    m_end[0] = pair[1 - two];
    m_end[1] = pair[1];
    m_end += 1 + two;
  }
  void TwoDigits(int value) { Digits(static_cast<std::uint64_t>(value), 2); }
  // With zeros in front up to count digits, which suffice.
  void Digits(std::uint64_t value, int count) {
    WriteDigits(m_end, value, count);
    m_end += count;
  }
  // A number that isn't negative.
  void Number(std::int64_t value) {
    const auto magnitude = static_cast<std::uint64_t>(value);
    const int count = CountDigits(magnitude);
    if (count > kAhead) return Digits(magnitude, count);
    // As many digits each time, so that no branch depends on their number.
    WChar text[2 * kAhead] = {};
    WriteDigits(text, magnitude, kAhead);
    std::memcpy(m_end, text + kAhead - count, kAhead * sizeof(WChar));
    m_end += count;
  }

  WString Text() const { return TextOf(m_begin, static_cast<int>(m_end - m_begin)); }

 private:
  static constexpr int kAhead = 8;

  WChar* const m_begin;
  WChar* m_end;
};

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
      unit = std::find_if(unit, end, IsDigit<WChar>);
      if (unit == end) return;
      const WChar* const behind = std::find_if_not(unit, end, IsDigit<WChar>);
      runs[count++] = {unit, static_cast<int>(behind - unit)};
      unit = behind;
    }
  }

  DigitRun runs[kMost];
  int count = 0;
  bool minus = false;  // the text begins with "-"
};

}  // namespace kelp::detail
