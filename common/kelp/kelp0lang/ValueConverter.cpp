#include "kelp0lang/ValueConverter.h"

#include <tchar.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <cwchar>
#include <limits>
#include <type_traits>

#include "kelp0lang/Exception.h"
#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/TextScan.h"
#include "kelptext/Digits.h"

namespace kelp {

namespace detail {

namespace {

// Room for a template, and for the text of a number of each kind.
template <class C>
struct WorkArea {
  static constexpr bool kIsWide = std::is_same_v<C, WChar>;
  static constexpr std::size_t kFormat = 8;
  static constexpr std::size_t kDouble = kIsWide ? 528 : 544;
  static constexpr std::size_t kInteger = kIsWide ? 72 : 80;
  static constexpr std::size_t kPointer = kIsWide ? 40 : 48;
};

bool Has(const CIOState& state, CIOState::EFmtFlags flag) {
  return (state.GetFlags() & flag) != 0;
}

// What "internal" leaves before the fill: a sign, or "0x".
template <class C>
int PrefixLength(const C* text, int length) {
  if (length > 0 && (text[0] == '+' || text[0] == '-')) return 1;
  return length > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') ? 2 : 0;
}

}  // namespace

template <class S, class C>
C* BasicValueConverter<S, C>::ComposeFormatDouble(CIOState& state, C* const buffer,
                                                  C lengthLetter) {
  C* end = buffer;
  *end++ = '%';
  if (Has(state, CIOState::showpos)) *end++ = '+';
  if (Has(state, CIOState::showpoint)) *end++ = '#';
  *end++ = '.';
  *end++ = '*';
  if (lengthLetter != 0) *end++ = lengthLetter;
  const bool upper = Has(state, CIOState::uppercase);
  switch (state.GetFlags() & CIOState::kFloatGroup) {
    case CIOState::fixed:
      *end++ = 'f';
      break;
    case CIOState::scientific:
      *end++ = upper ? 'E' : 'e';
      break;
    default:
      *end++ = upper ? 'G' : 'g';
      break;
  }
  *end = 0;
  return buffer;
}

template <class S, class C>
C* BasicValueConverter<S, C>::ComposeFormatInteger(CIOState& state, C* buffer, const char* length,
                                                   C conversion) {
  C* end = buffer;
  *end++ = '%';
  if (Has(state, CIOState::showpos)) *end++ = '+';
  if (Has(state, CIOState::showbase)) *end++ = '#';
  while (*length != 0) *end++ = static_cast<C>(*length++);
  switch (state.GetFlags() & CIOState::kBaseGroup) {
    case CIOState::oct:
      *end++ = 'o';
      break;
    case CIOState::hex:
      *end++ = Has(state, CIOState::uppercase) ? 'X' : 'x';
      break;
    default:
      *end++ = conversion;
      break;
  }
  *end = 0;
  return buffer;
}

template <class S, class C>
C* BasicValueConverter<S, C>::ComposeFormatInt32(CIOState& state, C* const buffer, C conversion) {
  return ComposeFormatInteger(state, buffer, "l", conversion);
}

template <class S, class C>
C* BasicValueConverter<S, C>::ComposeFormatInt64(CIOState& state, C* const buffer, C conversion) {
  return ComposeFormatInteger(state, buffer, "I64", conversion);
}

template <class S, class C>
void BasicValueConverter<S, C>::DrawFill(int count, C fill, C* buffer) {
  if (count > 0) std::fill_n(buffer, count, fill);
}

template <class S, class C>
void BasicValueConverter<S, C>::CreateString(CIOState& state, const C* text, int length, S& out) {
  const int pad = std::max(state.GetWidth() - length, 0);
  int before = length;
  switch (state.GetFlags() & CIOState::kAdjustGroup) {
    case CIOState::right:
      before = 0;
      break;
    case CIOState::internal:
      before = PrefixLength(text, length);
      break;
    default:
      break;
  }
  C* target = out.GetBufferSetLength(pad + length);
  target = std::copy_n(text, before, target);
  DrawFill(pad, static_cast<C>(static_cast<signed char>(state.GetFill())), target);
  std::copy_n(text + before, length - before, target + pad);
  state.SetWidth(0);
}

template <class S, class C>
template <class T>
S BasicValueConverter<S, C>::FormatDouble(CIOState& state, C lengthLetter, T value) {
  int precision = state.GetPrecision();
  if (precision < 1 && !Has(state, CIOState::fixed)) precision = 6;
  C format[WorkArea<C>::kFormat];
  C text[WorkArea<C>::kDouble];
  const int length = Format(text, WorkArea<C>::kDouble, C{'.'},
                            ComposeFormatDouble(state, format, lengthLetter), precision, value);
  S result;
  CreateString(state, text, std::max(length, 0), result);
  return result;
}

template <class S, class C>
template <class T>
S BasicValueConverter<S, C>::FormatInteger(CIOState& state, const C* format, T value) {
  C text[WorkArea<C>::kInteger];
  const int length = Format(text, WorkArea<C>::kInteger, C{'.'}, format, value);
  S result;
  CreateString(state, text, length, result);
  return result;
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, C value) {
  S result;
  CreateString(state, &value, 1, result);
  return result;
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, int value) {
  C format[WorkArea<C>::kFormat];
  ComposeFormatInt32(state, format, 'd');
  // A long may have more than 32 bits; only a decimal text shows the sign.
  const auto base = state.GetFlags() & CIOState::kBaseGroup;
  if (base == CIOState::oct || base == CIOState::hex) {
    return FormatInteger(state, format, static_cast<unsigned long>(static_cast<unsigned>(value)));
  }
  return FormatInteger(state, format, static_cast<long>(value));
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, unsigned int value) {
  C format[WorkArea<C>::kFormat];
  ComposeFormatInt32(state, format, 'u');
  return FormatInteger(state, format, static_cast<unsigned long>(value));
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, long value) {
  using Same = std::conditional_t<sizeof(long) == sizeof(int), int, long long>;
  return ToString(state, Same{value});
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, unsigned long value) {
  using Same = std::conditional_t<sizeof(long) == sizeof(int), unsigned int, unsigned long long>;
  return ToString(state, Same{value});
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, long long value) {
  C format[WorkArea<C>::kFormat];
  return FormatInteger(state, ComposeFormatInt64(state, format, 'd'), std::int64_t{value});
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, unsigned long long value) {
  C format[WorkArea<C>::kFormat];
  return FormatInteger(state, ComposeFormatInt64(state, format, 'u'), std::uint64_t{value});
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, double value) {
  return FormatDouble(state, C{0}, value);
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, long double value) {
  return FormatDouble(state, C{'L'}, value);
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, const C* value) {
  S result;
  CreateString(state, value, FittingLength(TerminatedLength(value)), result);
  return result;
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, const void* value) {
  static constexpr C kFormat[] = {'%', 'p', 0};
  C text[WorkArea<C>::kPointer];
  const int length = Format(text, WorkArea<C>::kPointer, C{'.'}, kFormat, value);
  S result;
  CreateString(state, text, length, result);
  return result;
}

template <class S, class C>
S BasicValueConverter<S, C>::ToString(CIOState& state, bool value) {
  static constexpr C kTrue[] = {'t', 'r', 'u', 'e', 0};
  static constexpr C kFalse[] = {'f', 'a', 'l', 's', 'e', 0};
  static constexpr C kOne[] = {'1', 0};
  static constexpr C kZero[] = {'0', 0};
  if (Has(state, CIOState::boolalpha)) return ToString(state, value ? kTrue : kFalse);
  return ToString(state, value ? kOne : kZero);
}

template class BasicValueConverter<String, char>;
template class BasicValueConverter<WString, WChar>;

}  // namespace detail

namespace {

template <class Converter, class T>
auto PlainText(T value, int precision = CIOState().GetPrecision()) {
  CIOState state;
  state.SetPrecision(precision);
  return Converter::ToString(state, value);
}

// A plain whole number is its digits.
template <class T>
WString WholeText(T value) {
  WChar text[1 + std::numeric_limits<std::uint64_t>::digits10 + 1];
  const bool negative = value < 0;
  text[0] = KTEXT('-');
  const auto bits = static_cast<std::uint64_t>(value);
  const std::uint64_t magnitude = negative ? 0 - bits : bits;
  const int digits = detail::CountDigits(magnitude);
  detail::WriteDigits(text + negative, magnitude, digits);
  return detail::TextOf(text, digits + negative);
}

}  // namespace

String String::ValueOf(int value) {
  return PlainText<CAValueConverter>(value);
}
String String::ValueOf(unsigned int value) {
  return PlainText<CAValueConverter>(value);
}
String String::ValueOf(long value) {
  return PlainText<CAValueConverter>(value);
}
String String::ValueOf(unsigned long value) {
  return PlainText<CAValueConverter>(value);
}
String String::ValueOf(long long value) {
  return PlainText<CAValueConverter>(value);
}
String String::ValueOf(unsigned long long value) {
  return PlainText<CAValueConverter>(value);
}
String String::ValueOf(double value, unsigned int precision) {
  return PlainText<CAValueConverter>(value, static_cast<int>(precision));
}
String String::ValueOf(const void* value) {
  return PlainText<CAValueConverter>(value);
}
String String::ValueOf(bool value) {
  return value ? "true" : "false";
}
String String::ValueOf(char value) {
  const char text[2] = {value, 0};
  return text;
}

WString WString::ValueOf(int value) {
  return WholeText(value);
}
WString WString::ValueOf(unsigned int value) {
  return WholeText(value);
}
WString WString::ValueOf(long value) {
  return WholeText(value);
}
WString WString::ValueOf(unsigned long value) {
  return WholeText(value);
}
WString WString::ValueOf(long long value) {
  return WholeText(value);
}
WString WString::ValueOf(unsigned long long value) {
  return WholeText(value);
}
WString WString::ValueOf(double value, unsigned int precision) {
  return PlainText<CWValueConverter>(value, static_cast<int>(precision));
}
WString WString::ValueOf(const void* value) {
  return PlainText<CWValueConverter>(value);
}
WString WString::ValueOf(bool value) {
  return value ? KTEXT("true") : KTEXT("false");
}
WString WString::ValueOf(WChar value) {
  const WChar text[2] = {value, 0};
  return text;
}

void TestValue(double value) {
  constexpr double kLargest = 1e50;
  constexpr double kSmallest = 1e-50;
  if (value > kLargest || value < -kLargest) throw CVariableNotInitializedException();
  if ((value > 0 && value < kSmallest) || (value < 0 && value > -kSmallest)) {
    throw CVariableNotInitializedException();
  }
}

namespace {

std::int32_t ReadInteger(const char* text) {
  while (std::isspace(static_cast<unsigned char>(*text)) != 0) ++text;
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  std::uint32_t value = 0;
  for (; detail::IsDigit(*text); ++text) {
    value = value * 10 + static_cast<std::uint32_t>(*text - '0');
  }
  return static_cast<std::int32_t>(negative ? 0 - value : value);
}

}  // namespace

long vc6_atol(const char* text) {
  return ReadInteger(text);
}
int vc6_atoi(const char* text) {
  return ReadInteger(text);
}
unsigned atoui(const char* text) {
  return static_cast<unsigned>(ReadInteger(text));
}

}  // namespace kelp
