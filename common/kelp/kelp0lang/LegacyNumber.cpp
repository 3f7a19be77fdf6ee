#include "kelp0lang/LegacyNumber.h"

#include <tchar.h>

#include <algorithm>
#include <cmath>
#include <cwchar>

#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/MeasUnit.h"
#include "kelptext/DecimalText.h"
#include "kelptext/Digits.h"

using kelp::IsNotSet;
using kelp::WString;
using kelp::detail::kExactPowersOf10;

namespace {

// Numbers are rounded to at most so many decimals.
constexpr int kMostDecimals = 5;
constexpr int kShortLimit = 32750;
constexpr long kLongLimit = 2100000000;
// Units of a printed number, with the terminator.
constexpr int kNumberRoom = 512;

bool IsRounded(int dec) {
  return dec >= 0 && dec <= kMostDecimals;
}

// Drops the fraction.
template <class Int>
Int Truncated(double v, Int limit) {
  if (std::isnan(v)) return 0;
  return static_cast<Int>(std::clamp<double>(v, -limit, limit));
}

// Halves away from zero. The fraction is tested before anything is added, so that the largest
// double below a half goes down; not every runtime's round gets that right.
template <class Int>
Int Rounded(double v, Int limit) {
  const double whole = std::trunc(v);
  const double fraction = v - whole;
  return Truncated(fraction >= 0.5 ? whole + 1 : fraction <= -0.5 ? whole - 1 : whole, limit);
}

template <class C>
int FillWithBlanks(C* out, int width) {
  const int count = std::max(width, 0);
  std::fill_n(out, count, static_cast<C>(' '));
  out[count] = 0;
  return count;
}

}  // namespace

bool UgualeA(double a, double b) {
  return std::abs(a - b) < 0.001;
}

bool MinoreDi(double a, double b) {
  return a < b - 0.0006;
}

double ArrotondatoAtDec(double v, int dec) {
  if (!IsRounded(dec)) return v;
  return std::floor(v * kExactPowersOf10[dec] + 0.5) / kExactPowersOf10[dec];
}

double TroncatoAtDec(double v, int dec) {
  if (!IsRounded(dec)) return v;
  return std::floor(v * kExactPowersOf10[dec]) / kExactPowersOf10[dec];
}

double ArrotondatoAlVal(double v, double step) {
  if (IsNotSet(v) || IsNotSet(step)) return v;
  return std::floor(v / step + 0.5) * step;
}

double DoubleRound(double v) {
  return std::floor(v + 0.5);
}

double DoubleTrunk(double v) {
  return std::floor(v);
}

short IntRound(double v) {
  return static_cast<short>(Rounded(v, kShortLimit));
}

short InteroEntro32000(double v) {
  return static_cast<short>(Truncated(v, kShortLimit));
}

long LongRound(double v) {
  return Rounded(v, kLongLimit);
}

long LongTrunk(double v) {
  return Truncated(v, kLongLimit);
}

double DoubleDaString(const WString& text) {
  if (text.empty()) return kelp::kNotSet;
  const bool isComma = text.IndexOf(KTEXT(',')) >= 0 && text.IndexOf(KTEXT('.')) < 0;
  return kelp::detail::ParseDecimal(text.c_str(),
                                    isComma ? KTEXT(',') : kelp::detail::ProcessDecimalPoint());
}

double DoubleDaStringSoloNum(const WString& text) {
  WString number;
  WChar* const begin = number.GetBufferSetLength(text.Length());
  WChar* out = begin;
  for (int i = 0; i < text.Length(); ++i) {
    const WChar unit = text.GetChar(i);
    if (unit == KTEXT(',')) {
      *out++ = KTEXT('.');
    } else if (unit == KTEXT('.') || unit == KTEXT('-') || kelp::detail::IsDigit(unit)) {
      *out++ = unit;
    }
  }
  if (out == begin) return kelp::kNotSet;
  number.ReleaseBuffer(static_cast<int>(out - begin));
  return kelp_wtof(number.c_str());
}

double DoubleDaArChar(const char* text) {
  return *text == 0 ? kelp::kNotSet : kelp_atof(text);
}

long IntDaString(const WString& text) {
  return LongTrunk(DoubleDaString(text));
}

long IntDaStringNullZero(const WString& text) {
  return text.empty() ? 0 : IntDaString(text);
}

short ShortDaString32000(const WString& text) {
  return InteroEntro32000(DoubleDaString(text));
}

short ShortDaStringNullZero(const WString& text) {
  if (text.empty()) return 0;
  return static_cast<short>(std::clamp(_wtoi(text.c_str()), -kShortLimit, kShortLimit));
}

long LongDaStringNullZero(const WString& text) {
  return text.empty() ? 0 : _wtol(text.c_str());
}

WString StringDaDouble(double v, int width, int dec) {
  if (IsNotSet(v)) {
    WString blanks;
    blanks.resize(std::max(width, 0), KTEXT(' '));
    return blanks;
  }
  const WChar point = kelp::detail::ProcessDecimalPoint();
  WChar text[kNumberRoom];
  int length = kelp::detail::FormatFixed(text, v, dec, point);
  if (length < 0) length = kelp::detail::Format(text, kNumberRoom, point, KTEXT("%.*f"), dec, v);
  if (length < 0 || width >= kNumberRoom) return WString();
  if (width > length) {
    std::copy_backward(text, text + length, text + width);
    std::fill_n(text, width - length, KTEXT(' '));
    length = width;
  }
  return kelp::detail::TextOf(text, length);
}

WString StringDaDoubleConZeri(double v, int width, int dec) {
  return StringDaDouble(v, width, dec).Replace(KTEXT(' '), KTEXT('0'));
}

WString StringDaDoubleSenzaZeri(double v, int width, int dec) {
  WString text = StringDaDouble(v, width, dec);
  if (dec <= 0) return text;
  const int shortest = std::max(text.Length() - dec - 1, 0);
  int length = text.Length();
  while (length > shortest &&
         (text.GetChar(length - 1) == KTEXT('0') || text.GetChar(length - 1) == KTEXT('.'))) {
    --length;
  }
  if (length < text.Length()) text.resize(length);
  return text;
}

WString StringDaInt(int v) {
  return WString::ValueOf(v);
}

int ArCharDaDouble(char* out, double v, int width, int dec) {
  if (IsNotSet(v)) return FillWithBlanks(out, width);
  return kelp_sprintf(out, "%*.*f", std::max(width, 0), dec, v);
}

int ArCharDaDouble(WChar* out, double v, int width, int dec) {
  if (IsNotSet(v)) return FillWithBlanks(out, width);
  return kelp_swprintf(out, KTEXT("%*.*f"), width, dec, v);
}
