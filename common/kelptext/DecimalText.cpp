#include "kelptext/DecimalText.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "kelptext/Compiler.h"
#include "kelptext/Digits.h"

namespace kelp::detail {

namespace {

constexpr int kFractionBits = 52;
constexpr int kExponentBias = 1023;
constexpr std::uint64_t kFractionMask = (std::uint64_t{1} << kFractionBits) - 1;
constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << kFractionBits;

// Mantissa and exponent of a finite magnitude: mantissa * 2^exponent.
struct BinaryParts {
  std::uint64_t mantissa;
  int exponent;
};

BinaryParts Split(std::uint64_t bits) {
  const int biased = static_cast<int>(bits >> kFractionBits & 0x7FF);
  const std::uint64_t fraction = bits & kFractionMask;
  return {biased == 0 ? fraction : fraction | kHiddenBit,
          std::max(biased, 1) - kExponentBias - kFractionBits};
}

// scaled / 2^shift, rounded to the nearest; a tie goes to where result + parity is even.
std::uint64_t ShiftRounded(std::uint64_t scaled, int shift, std::uint64_t parity) {
  const std::uint64_t result = scaled >> shift;
  const std::uint64_t rest = scaled - (result << shift);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  const bool up = rest > half || (rest == half && ((result + parity) & 1) != 0);
  return result + up;
}

// The same, where the result has at most 62 bits and shift is above 2. What is shifted out decides
// by its first bit and by whether any other is set, so the last of two that stay stands for those.
std::uint64_t ShiftRounded(const WideProduct& scaled, int shift, std::uint64_t parity) {
  const int out = shift - 2;
  const std::uint64_t kept =
      out < 64 ? scaled.high << (64 - out) | scaled.low >> out : scaled.high >> (out - 64);
  const std::uint64_t lost = out < 64 ? scaled.low << (64 - out)
                                      : scaled.low | (out > 64 ? scaled.high << (128 - out) : 0);
  return ShiftRounded(kept | (lost != 0), 2, parity);
}

// A magnitude below 2^63 as its whole part and its decimals, which count in units of
// 10^-decimals.
struct FixedParts {
  std::uint64_t whole;
  std::uint64_t decimals;
};

inline FixedParts RoundToDecimals(const BinaryParts& value, int decimals) {
  if (value.exponent >= 0) return {value.mantissa << value.exponent, 0};
  const int shift = -value.exponent;
  const std::uint64_t whole = shift < 64 ? value.mantissa >> shift : 0;
  const std::uint64_t fraction = shift < 64 ? value.mantissa - (whole << shift) : value.mantissa;
  // The scaled fraction has at most 53 + 57 bits, so behind this shift it rounds to nothing.
  if (shift > 120) return {whole, 0};

  const std::uint64_t scale = kPowersOf10[decimals];
  // Without decimals it is the whole part that is odd or even.
  const std::uint64_t parity = decimals == 0 ? whole : 0;
  // The fraction has at most shift bits.
  const std::uint64_t result = shift + std::bit_width(scale) <= 64
                                   ? ShiftRounded(fraction * scale, shift, parity)
                                   : ShiftRounded(MultiplyWide(fraction, scale), shift, parity);
  if (result == scale) return {whole + 1, 0};
  return {whole, result};
}

}  // namespace

template <class C>
int WriteFixed(C* target, double value, int decimals, C point) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const BinaryParts binary = Split(bits);
  if (binary.exponent > 62 - kFractionBits || decimals < 0 || decimals > kMaxFixedDecimals) {
    return -1;
  }
  const FixedParts parts = RoundToDecimals(binary, decimals);
  C* end = target;
  if (bits >> 63 != 0) *end++ = '-';
  const int digits = CountDigits(parts.whole);
  WriteDigits(end, parts.whole, digits);
  end += digits;
  if (decimals > 0) {
    *end++ = point;
    WriteDigits(end, parts.decimals, decimals);
    end += decimals;
  }
  return static_cast<int>(end - target);
}

template int WriteFixed(char*, double, int, char);
template int WriteFixed(WChar*, double, int, WChar);

namespace {

// Significant digits behind the first, and decimals, that suffice for every double.
constexpr int kMaxScientificDecimals = 766;
constexpr int kMaxDecimals = 1074;
constexpr int kHexDigits = kFractionBits / 4;

std::size_t Size(const char* begin, const char* end) {
  return static_cast<std::size_t>(end - begin);
}

// Moves what stands from the letter of the exponent on into the tail.
void SplitExponent(FloatText& out, char* end) {
  char* letter = std::find(out.body, end, 'e');
  out.bodySize = Size(out.body, letter);
  out.tailSize = Size(letter, end);
  std::memcpy(out.tail, letter, out.tailSize);
}

void SpellFixed(FloatText& out, double magnitude, std::int64_t precision) {
  const int decimals = static_cast<int>(std::min<std::int64_t>(precision, kMaxDecimals));
  const char* end =
      std::to_chars(out.body, std::end(out.body), magnitude, std::chars_format::fixed, decimals)
          .ptr;
  out.bodySize = Size(out.body, end);
  out.zeros = static_cast<std::size_t>(precision - decimals);
  out.tailSize = 0;
}

void SpellScientific(FloatText& out, double magnitude, int precision) {
  const int decimals = std::min(precision, kMaxScientificDecimals);
  char* end = std::to_chars(out.body, std::end(out.body), magnitude, std::chars_format::scientific,
                            decimals)
                  .ptr;
  SplitExponent(out, end);
  out.zeros = static_cast<std::size_t>(precision - decimals);
}

// By the exponent that the number has when rounded to precision digits; trailing zeros stay only
// under the flag '#'.
void SpellGeneral(FloatText& out, double magnitude, int precision, bool alternate) {
  precision = std::max(precision, 1);
  if (!alternate) {
    char* end = std::to_chars(out.body, std::end(out.body), magnitude, std::chars_format::general,
                              std::min(precision, kMaxScientificDecimals + 1))
                    .ptr;
    SplitExponent(out, end);
    out.zeros = 0;
    return;
  }
  SpellScientific(out, magnitude, precision - 1);
  int exponent = 0;
  std::from_chars(out.tail + 2, out.tail + out.tailSize, exponent);
  if (out.tail[1] == '-') exponent = -exponent;
  // A small number has more decimals than digits, which can be more than an int.
  const std::int64_t decimals = std::int64_t{precision} - 1 - exponent;
  if (exponent >= -4 && decimals >= 0) SpellFixed(out, magnitude, decimals);
}

// Mantissa and exponent of 2; zero and numbers below the normal ones lead with 0.
void SpellHex(FloatText& out, double magnitude, int precision) {
  BinaryParts binary = Split(std::bit_cast<std::uint64_t>(magnitude));
  const int exponent = binary.mantissa == 0 ? 0 : binary.exponent + kFractionBits;
  const int digits = std::min(precision, kHexDigits);
  const int dropped = (kHexDigits - digits) * 4;
  if (dropped > 0) {
    const std::uint64_t rest = binary.mantissa & ((std::uint64_t{1} << dropped) - 1);
    const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
    binary.mantissa >>= dropped;
    if (rest > half || (rest == half && (binary.mantissa & 1) != 0)) ++binary.mantissa;
  }
  out.body[0] = static_cast<char>('0' + (binary.mantissa >> (digits * 4)));
  out.body[1] = '.';
  for (int i = 0; i < digits; ++i) {
    out.body[2 + i] = "0123456789abcdef"[binary.mantissa >> ((digits - 1 - i) * 4) & 0xF];
  }
  out.bodySize = digits == 0 ? 1 : static_cast<std::size_t>(digits) + 2;
  out.zeros = static_cast<std::size_t>(precision - digits);
  out.tail[0] = 'p';
  out.tail[1] = exponent < 0 ? '-' : '+';
  const char* end = std::to_chars(out.tail + 2, std::end(out.tail), std::abs(exponent)).ptr;
  out.tailSize = Size(out.tail, end);
}

}  // namespace

void SpellFloat(FloatText& out, double magnitude, char conversion, int precision, bool alternate) {
  if (precision < 0) precision = conversion == 'a' ? kHexDigits : 6;
  switch (conversion) {
    case 'f':
      SpellFixed(out, magnitude, precision);
      break;
    case 'e':
      SpellScientific(out, magnitude, precision);
      break;
    case 'a':
      SpellHex(out, magnitude, precision);
      break;
    default:
      SpellGeneral(out, magnitude, precision, alternate);
      break;
  }
  if (alternate && std::memchr(out.body, '.', out.bodySize) == nullptr) {
    out.body[out.bodySize++] = '.';
  }
}

namespace {

constexpr int kMaxExactPower = std::size(kExactPowersOf10) - 1;
// Digits that always fit into 64 bits.
constexpr std::ptrdiff_t kMaxExactDigits = 19;

template <class C>
bool IsBlank(C unit) {
  return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

// The parts of a number in text; where there is no exponent, it is 0.
template <class C>
struct Scan {
  const C* digits;          // the whole part, then perhaps a point and the decimals
  const C* end;             // behind the last digit or the point
  std::ptrdiff_t whole;     // digits before the point
  std::ptrdiff_t decimals;  // digits behind it
  std::int64_t exponent;
  std::uint64_t mantissa;  // all digits as one number, modulo 2^64
};

// The exponent behind a number; text that isn't one has the exponent 0.
template <class C>
std::int64_t ReadExponent(const C* text) {
  if (*text != 'e' && *text != 'E') return 0;
  ++text;
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  // Beyond this no count of digits can bring the number back into range.
  constexpr std::int64_t kLimit = std::int64_t{1} << 50;
  std::int64_t exponent = 0;
  for (; IsDigit(*text); ++text) exponent = std::min(exponent * 10 + (*text - '0'), kLimit);
  return negative ? -exponent : exponent;
}

template <class C>
Scan<C> ScanNumber(const C* text, C point) {
  Scan<C> scan{text, text, 0, 0, 0, 0};
  for (; IsDigit(*text); ++text) scan.mantissa = scan.mantissa * 10 + (*text - '0');
  scan.whole = text - scan.digits;
  if (*text == point) {
    const C* const decimals = ++text;
    for (; IsDigit(*text); ++text) scan.mantissa = scan.mantissa * 10 + (*text - '0');
    scan.decimals = text - decimals;
  }
  scan.end = text;
  if (scan.whole + scan.decimals > 0) scan.exponent = ReadExponent(text);
  return scan;
}

// Any number: the significant digits as a decimal fraction for from_chars. No two doubles have a
// midpoint of more digits than are kept, so of those that follow it only matters whether one isn't
// 0.
template <class C>
double ParseLong(const Scan<C>& scan) {
  constexpr int kKept = 768;
  char text[kKept + 32];
  char* out = text;
  *out++ = '.';
  char* const limit = out + kKept;
  std::int64_t exponent = scan.exponent + scan.whole;
  bool rest = false;
  for (const C* digit = scan.digits; digit != scan.end; ++digit) {
    if (!IsDigit(*digit)) continue;  // the point
    if (*digit == '0' && out == text + 1) {
      --exponent;
    } else if (out < limit) {
      *out++ = static_cast<char>(*digit);
    } else {
      rest = rest || *digit != '0';
    }
  }
  if (out == text + 1) return 0;
  if (rest) *out++ = '1';
  // The fraction lies in [0.1, 1), a double between 10^-324 and 10^309.
  if (exponent > 310) return HUGE_VAL;
  if (exponent < -330) return 0;
  *out++ = 'e';
  out = std::to_chars(out, std::end(text), exponent).ptr;
  double value = 0;
  if (std::from_chars(text, out, value).ec == std::errc::result_out_of_range) {
    return exponent > 0 ? HUGE_VAL : 0;
  }
  return value;
}

template <class C>
double Magnitude(const Scan<C>& scan) {
  const std::int64_t exponent = scan.exponent - scan.decimals;
  if (scan.whole + scan.decimals > kMaxExactDigits || scan.mantissa > 2 * kHiddenBit ||
      exponent < -kMaxExactPower || exponent > kMaxExactPower) {
    return ParseLong(scan);
  }
  // Both operands are exact, so the one operation rounds correctly.
  const auto mantissa = static_cast<double>(scan.mantissa);
  return exponent < 0 ? mantissa / kExactPowersOf10[-exponent]
                      : mantissa * kExactPowersOf10[exponent];
}

}  // namespace

template <class C>
double ParseDecimal(const C* text, C point) {
  if (text == nullptr) return 0;
  while (IsBlank(*text)) ++text;
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  const Scan<C> scan = ScanNumber(text, point);
  if (scan.whole + scan.decimals == 0) return 0;
  const double magnitude = Magnitude(scan);
  return negative ? -magnitude : magnitude;
}

template double ParseDecimal(const char*, char);
template double ParseDecimal(const WChar*, WChar);

}  // namespace kelp::detail
