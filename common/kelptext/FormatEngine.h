// The engine that prints a template, over units of either width and any sink; internal to the
// library. What a template may hold stands in LocaleFree.h.
//
// A sink has the members Put(units, count) and Fill(unit, count), which give false where the text
// must end, and Convert(text, units), which takes one character off terminated text of the other
// width: it gives the number of units, at most kMaxCharacterUnits, or -1 where there is no such
// character.
#pragma once

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "kelptext/Characters.h"
#include "kelptext/Compiler.h"
#include "kelptext/DecimalText.h"
#include "kelptext/Digits.h"
#include "kelptext/WideChar.h"

namespace kelp::detail {

enum class LengthModifier { kNone, kChar, kShort, kLong, kInt32, kInt64, kSize, kDouble, kWide };

// One conversion of a template.
struct FormatSpec {
  bool left = false;
  bool plus = false;
  bool blank = false;
  bool zero = false;
  bool alternate = false;
  int width = 0;
  int precision = -1;  // -1: none given
  LengthModifier length = LengthModifier::kNone;
  char conversion = 0;
};

template <class C, class Sink>
class FormatEngine {
 public:
  FormatEngine(Sink& sink, C point, std::va_list args) : m_sink(sink), m_point(point) {
    va_copy(m_args, args);
  }
  ~FormatEngine() { va_end(m_args); }
  FormatEngine(const FormatEngine&) = delete;
  FormatEngine& operator=(const FormatEngine&) = delete;

  // False for a template that can't be read, a character that can't be converted, and a sink that
  // has no more room.
  bool Run(const C* format) {
    for (;;) {
      const C* literal = format;
      while (*format != 0 && *format != '%') ++format;
      if (format != literal && !m_sink.Put(literal, Distance(literal, format))) return false;
      if (*format == 0) return true;
      ++format;
      if (*format == '%') {
        if (!m_sink.Put(format++, 1)) return false;
        continue;
      }
      m_spec = kPlain;
      if (!ReadSpec(format) || !PutConversion()) return false;
    }
  }

 private:
  // Sign or radix, zeros, digits, zeros, exponent.
  struct Number {
    C prefix[3];
    std::size_t prefixSize = 0;
    std::size_t leadingZeros = 0;
    const C* body = nullptr;
    std::size_t bodySize = 0;
    std::size_t zeros = 0;
    const C* tail = nullptr;
    std::size_t tailSize = 0;

    void AddPrefix(char unit) { prefix[prefixSize++] = static_cast<C>(unit); }
  };

  // What every conversion starts from; a copy of a constant costs less than one of a fresh object.
  static constexpr FormatSpec kPlain{};

  static std::size_t Distance(const C* begin, const C* end) {
    return static_cast<std::size_t>(end - begin);
  }

  // Reads what stands between a percent sign and the end of its conversion.
  bool ReadSpec(const C*& format) {
    ReadFlags(format);
    if (!ReadCount(format, m_spec.width)) return false;
    if (m_spec.width < 0) {
      if (m_spec.width == INT_MIN) return false;
      m_spec.left = true;
      m_spec.width = -m_spec.width;
    }
    if (*format == '.') {
      m_spec.precision = 0;
      if (!ReadCount(++format, m_spec.precision)) return false;
      m_spec.precision = std::max(m_spec.precision, -1);
    }
    ReadLength(format);
    if (*format == 0 || *format > 'z') return false;
    m_spec.conversion = static_cast<char>(*format++);
    return true;
  }

  void ReadFlags(const C*& format) {
    for (;; ++format) {
      switch (*format) {
        case '-':
          m_spec.left = true;
          break;
        case '+':
          m_spec.plus = true;
          break;
        case ' ':
          m_spec.blank = true;
          break;
        case '0':
          m_spec.zero = true;
          break;
        case '#':
          m_spec.alternate = true;
          break;
        default:
          return;
      }
    }
  }

  // A number, or the argument that '*' stands for; nothing leaves count as it is.
  bool ReadCount(const C*& format, int& count) {
    if (*format == '*') {
      ++format;
      count = va_arg(m_args, int);
      return true;
    }
    std::int64_t value = count;
    for (; IsDigit(*format); ++format) {
      value = value * 10 + (*format - '0');
      if (value > INT_MAX) return false;
    }
    count = static_cast<int>(value);
    return true;
  }

  void ReadLength(const C*& format) {
    const C letter = *format;
    const bool twice = letter != 0 && format[1] == letter;
    std::ptrdiff_t size = 1;
    switch (letter) {
      case 'h':
        m_spec.length = twice ? LengthModifier::kChar : LengthModifier::kShort;
        size += twice;
        break;
      case 'l':
        m_spec.length = twice ? LengthModifier::kInt64 : LengthModifier::kLong;
        size += twice;
        break;
      case 'I':
        m_spec.length = LengthModifier::kSize;
        if (format[1] == '6' && format[2] == '4') m_spec.length = LengthModifier::kInt64, size = 3;
        if (format[1] == '3' && format[2] == '2') m_spec.length = LengthModifier::kInt32, size = 3;
        break;
      case 'j':
        m_spec.length = LengthModifier::kInt64;
        break;
      case 'z':
      case 't':
        m_spec.length = LengthModifier::kSize;
        break;
      case 'w':
        m_spec.length = LengthModifier::kWide;
        break;
      case 'L':
        m_spec.length = LengthModifier::kDouble;
        break;
      default:
        return;
    }
    format += size;
  }

  bool PutConversion() {
    switch (m_spec.conversion) {
      case 'd':
      case 'i':
        return PutSigned();
      case 'u':
        return PutUnsigned(10);
      case 'o':
        return PutUnsigned(8);
      case 'x':
      case 'X':
        return PutUnsigned(16);
      case 'p':
        return PutPointer();
      case 'f':
      case 'F':
      case 'e':
      case 'E':
      case 'g':
      case 'G':
      case 'a':
      case 'A':
        return PutFloat();
      case 'c':
      case 'C':
        return IsWideText() ? PutUnit<WChar>() : PutUnit<char>();
      case 's':
      case 'S':
        return IsWideText() ? PutText<WChar>() : PutText<char>();
      default:
        return false;  // %n among them
    }
  }

  bool IsUpper() const { return m_spec.conversion < 'a'; }

  // A modifier decides; without one small letters mean the width of the template, capital ones the
  // other width.
  bool IsWideText() const {
    switch (m_spec.length) {
      case LengthModifier::kShort:
        return false;
      case LengthModifier::kLong:
      case LengthModifier::kWide:
        return true;
      default:
        return std::is_same_v<C, WChar> != IsUpper();
    }
  }

  std::int64_t NextSigned() {
    switch (m_spec.length) {
      case LengthModifier::kChar:
        return static_cast<signed char>(va_arg(m_args, int));
      case LengthModifier::kShort:
        return static_cast<short>(va_arg(m_args, int));
      case LengthModifier::kLong:
        return va_arg(m_args, long);
      case LengthModifier::kInt64:
        return va_arg(m_args, std::int64_t);
      case LengthModifier::kSize:
        return va_arg(m_args, std::ptrdiff_t);
      default:
        return va_arg(m_args, int);
    }
  }

  std::uint64_t NextUnsigned() {
    switch (m_spec.length) {
      case LengthModifier::kChar:
        return static_cast<unsigned char>(va_arg(m_args, int));
      case LengthModifier::kShort:
        return static_cast<unsigned short>(va_arg(m_args, int));
      case LengthModifier::kLong:
        return va_arg(m_args, unsigned long);
      case LengthModifier::kInt64:
        return va_arg(m_args, std::uint64_t);
      case LengthModifier::kSize:
        return va_arg(m_args, std::size_t);
      default:
        return va_arg(m_args, unsigned int);
    }
  }

  bool PutSigned() {
    const std::int64_t value = NextSigned();
    Number number;
    AddSign(number, value < 0);
    const auto bits = static_cast<std::uint64_t>(value);
    return PutInteger(number, value < 0 ? 0 - bits : bits, 10);
  }

  bool PutUnsigned(unsigned base) {
    const std::uint64_t value = NextUnsigned();
    Number number;
    if (base == 16 && m_spec.alternate && value != 0) {
      number.AddPrefix('0');
      number.AddPrefix(m_spec.conversion);
    }
    return PutInteger(number, value, base);
  }

  bool PutPointer() {
    m_spec.conversion = 'X';
    m_spec.precision = 2 * static_cast<int>(sizeof(void*));
    Number number;
    return PutInteger(number, reinterpret_cast<std::uintptr_t>(va_arg(m_args, void*)), 16);
  }

  bool PutInteger(Number& number, std::uint64_t value, unsigned base) {
    const char* const digits = IsUpper() ? "0123456789ABCDEF" : "0123456789abcdef";
    C text[24];
    C* const end = text + std::size(text);
    C* begin = end;
    for (; value != 0; value /= base) *--begin = static_cast<C>(digits[value % base]);
    int wanted = m_spec.precision < 0 ? 1 : m_spec.precision;
    const auto written = static_cast<int>(end - begin);
    if (base == 8 && m_spec.alternate) wanted = std::max(wanted, written + 1);
    number.body = begin;
    number.bodySize = Distance(begin, end);
    number.leadingZeros = static_cast<std::size_t>(std::max(wanted - written, 0));
    return PutNumber(number, m_spec.zero && m_spec.precision < 0);
  }

  void AddSign(Number& number, bool negative) {
    if (negative) {
      number.AddPrefix('-');
    } else if (m_spec.plus) {
      number.AddPrefix('+');
    } else if (m_spec.blank) {
      number.AddPrefix(' ');
    }
  }

  bool PutFloat() {
    const double value = m_spec.length == LengthModifier::kDouble
                             ? static_cast<double>(va_arg(m_args, long double))
                             : va_arg(m_args, double);
    Number number;
    AddSign(number, std::signbit(value));
    if (!std::isfinite(value)) return PutNotFinite(number, std::isnan(value));
    if ((m_spec.conversion | 0x20) == 'f' && !m_spec.alternate) {
      C text[kFixedRoom];
      const int decimals = m_spec.precision < 0 ? 6 : m_spec.precision;
      const int size = WriteFixed(text, std::fabs(value), decimals, m_point);
      if (size >= 0) {
        number.body = text;
        number.bodySize = static_cast<std::size_t>(size);
        return PutNumber(number, m_spec.zero);
      }
    }
    return PutSpelled(number, std::fabs(value));
  }

  bool PutNotFinite(Number& number, bool isNan) {
    const char* const name = isNan ? (IsUpper() ? "NAN" : "nan") : (IsUpper() ? "INF" : "inf");
    const C text[3] = {static_cast<C>(name[0]), static_cast<C>(name[1]), static_cast<C>(name[2])};
    number.body = text;
    number.bodySize = 3;
    return PutNumber(number, false);
  }

  // Apart from PutFloat, so that the short texts don't pay for its work area.
  KELP_NOINLINE bool PutSpelled(Number& number, double magnitude) {
    const char conversion = static_cast<char>(m_spec.conversion | 0x20);
    if (conversion == 'a') {
      number.AddPrefix('0');
      number.AddPrefix(IsUpper() ? 'X' : 'x');
    }
    FloatText spelled;
    SpellFloat(spelled, magnitude, conversion, m_spec.precision, m_spec.alternate);
    C body[sizeof(spelled.body)];
    C tail[sizeof(spelled.tail)];
    const auto widen = [this](char unit) {
      if (unit == '.') return m_point;
      return static_cast<C>(IsUpper() && unit >= 'a' ? unit - 0x20 : unit);
    };
    std::transform(spelled.body, spelled.body + spelled.bodySize, body, widen);
    std::transform(spelled.tail, spelled.tail + spelled.tailSize, tail, widen);
    number.body = body;
    number.bodySize = spelled.bodySize;
    number.zeros = spelled.zeros;
    number.tail = tail;
    number.tailSize = spelled.tailSize;
    return PutNumber(number, m_spec.zero);
  }

  bool PutNumber(const Number& number, bool zeroPad) {
    const std::size_t pad = PadFor(number.prefixSize + number.leadingZeros + number.bodySize +
                                   number.zeros + number.tailSize);
    if (!m_spec.left && !zeroPad && !Fill(' ', pad)) return false;
    if (!Put(number.prefix, number.prefixSize)) return false;
    if (!m_spec.left && zeroPad && !Fill('0', pad)) return false;
    return Fill('0', number.leadingZeros) && Put(number.body, number.bodySize) &&
           Fill('0', number.zeros) && Put(number.tail, number.tailSize) &&
           (!m_spec.left || Fill(' ', pad));
  }

  // One character; a 0 is a unit like any other.
  template <class From>
  bool PutUnit() {
    const From text[2] = {static_cast<From>(va_arg(m_args, int)), 0};
    if constexpr (std::is_same_v<From, C>) {
      return PutPadded(1, [&] { return Put(text, 1); });
    } else {
      C units[kMaxCharacterUnits] = {};
      const From* next = text;
      const int size = *text == 0 ? 1 : m_sink.Convert(next, units);
      if (size < 0) return false;
      const auto count = static_cast<std::size_t>(size);
      return PutPadded(count, [&] { return Put(units, count); });
    }
  }

  // Terminated text, no more of it than the precision allows; null stands for "(null)".
  template <class From>
  bool PutText() {
    static constexpr From kNull[] = {'(', 'n', 'u', 'l', 'l', ')', 0};
    const From* text = va_arg(m_args, const From*);
    if (text == nullptr) text = kNull;
    const std::size_t limit =
        m_spec.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(m_spec.precision);
    if constexpr (std::is_same_v<From, C>) {
      std::size_t size = 0;
      while (size < limit && text[size] != 0) ++size;
      return PutPadded(size, [&] { return Put(text, size); });
    } else {
      std::size_t size = 0;
      const auto measure = [&size](const C*, std::size_t count) {
        size += count;
        return true;
      };
      if (!ConvertText(text, limit, measure)) return false;
      return PutPadded(size, [&] {
        return ConvertText(text, limit, [this](const C* units, std::size_t count) {
          return m_sink.Put(units, count);
        });
      });
    }
  }

  // Passes text of the other width on, character by character, as far as whole ones fit.
  template <class From, class Pass>
  bool ConvertText(const From* text, std::size_t limit, Pass pass) {
    while (limit > 0 && *text != 0) {
      C units[kMaxCharacterUnits];
      const int size = m_sink.Convert(text, units);
      if (size < 0) return false;
      const auto count = static_cast<std::size_t>(size);
      if (count > limit) return true;
      if (!pass(units, count)) return false;
      limit -= count;
    }
    return true;
  }

  template <class PutBody>
  bool PutPadded(std::size_t size, PutBody putBody) {
    const std::size_t pad = PadFor(size);
    if (!m_spec.left && !Fill(m_spec.zero ? '0' : ' ', pad)) return false;
    return putBody() && (!m_spec.left || Fill(' ', pad));
  }

  std::size_t PadFor(std::size_t size) const {
    const auto width = static_cast<std::size_t>(m_spec.width);
    return width > size ? width - size : 0;
  }

  bool Put(const C* units, std::size_t count) { return count == 0 || m_sink.Put(units, count); }
  bool Fill(char unit, std::size_t count) {
    return count == 0 || m_sink.Fill(static_cast<C>(unit), count);
  }

  Sink& m_sink;
  const C m_point;
  std::va_list m_args;
  FormatSpec m_spec;
};

}  // namespace kelp::detail
