// Moments as Windows counts them: in ticks of 100 nanoseconds since 1601.
#pragma once

#include <minwinbase.h>

#include <cstdint>

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;

constexpr FILETIME ToFileTime(std::uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

constexpr std::uint64_t ToTicks(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// Of seconds since 1970 and nanoseconds behind them.
constexpr std::uint64_t ToTicks(std::int64_t seconds, std::int64_t nanoseconds) {
  return static_cast<std::uint64_t>((seconds + kSecondsTo1970) * kTicksPerSecond +
                                    nanoseconds / 100);
}
