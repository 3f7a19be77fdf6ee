// Values as text under stream-like formatting state, the same under every locale.
//
//   kelp::CIOState state;
//   state.SetPrecision(3);
//   state.SetWidth(12);
//   kelp::WString text = kelp::CWValueConverter::ToString(state, northing);
//
// Beside the converters stand the test for a double that was never given a value, and plain integer
// parsers.
//
// Threads: the functions are reentrant; a CIOState belongs to one caller.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp {

// How a value is printed: flags, precision, least width and the unit that fills it.
class CIOState {
 public:
  enum EFmtFlags : std::int32_t {
    skipws = 0x0001,      // no effect here
    unitbuf = 0x0002,     // no effect here
    uppercase = 0x0004,   // capital X, E and G
    showbase = 0x0008,    // "#" of an integer template
    showpoint = 0x0010,   // "#" of a floating template
    showpos = 0x0020,     // "+" of both
    left = 0x0040,        // text, then fill
    right = 0x0080,       // fill, then text
    internal = 0x0100,    // sign or radix prefix, fill, rest
    dec = 0x0200,         // decimal
    oct = 0x0400,         // octal
    hex = 0x0800,         // hexadecimal
    scientific = 0x1000,  // "e" form
    fixed = 0x2000,       // "f" form; neither or both: "g" form
    boolalpha = 0x4000,   // "true" and "false" instead of "1" and "0"
  };
  // The groups of which a set bit counts only alone, and the bits that can be set.
  static constexpr EFmtFlags kAdjustGroup = EFmtFlags{0x01C0};
  static constexpr EFmtFlags kBaseGroup = EFmtFlags{0x0E00};
  static constexpr EFmtFlags kFloatGroup = EFmtFlags{0x3000};
  static constexpr EFmtFlags kSettable = EFmtFlags{0x7FFF};

  friend constexpr EFmtFlags operator|(EFmtFlags a, EFmtFlags b) {
    return static_cast<EFmtFlags>(static_cast<std::int32_t>(a) | static_cast<std::int32_t>(b));
  }
  friend constexpr EFmtFlags operator&(EFmtFlags a, EFmtFlags b) {
    return static_cast<EFmtFlags>(static_cast<std::int32_t>(a) & static_cast<std::int32_t>(b));
  }
  friend constexpr EFmtFlags operator~(EFmtFlags flags) {
    return static_cast<EFmtFlags>(~static_cast<std::int32_t>(flags));
  }

  // dec and fixed, 6 digits, no width, blanks.
  CIOState() = default;

  EFmtFlags GetFlags() const { return m_flags; }
  int GetPrecision() const { return m_precision; }
  int GetWidth() const { return m_width; }
  char GetFill() const { return m_fill; }

  // The setters give what stood before, and never set a bit outside kSettable.
  int SetFlags(EFmtFlags flags) { return Replace(m_flags, flags & kSettable); }
  int SetBits(EFmtFlags flags) { return Replace(m_flags, m_flags | (flags & kSettable)); }
  // Replaces the bits under mask.
  int SetBits(EFmtFlags flags, EFmtFlags mask) {
    return Replace(m_flags, (m_flags & ~mask) | (flags & mask & kSettable));
  }
  void Clear(EFmtFlags flags) { m_flags = m_flags & ~flags; }
  int SetPrecision(int precision) { return Replace(m_precision, precision); }
  int SetWidth(int width) { return Replace(m_width, width); }
  char SetFill(char fill) { return Replace(m_fill, fill); }

 private:
  template <class T>
  static T Replace(T& member, T value) {
    const T old = member;
    member = value;
    return old;
  }

  EFmtFlags m_flags = EFmtFlags{dec | fixed};
  std::int32_t m_precision = 6;
  std::int32_t m_width = 0;
  char m_fill = ' ';
};

namespace detail {

// Both converters: S is the class of the text, C its unit.
template <class S, class C>
class KELP0LANG_API BasicValueConverter {
 public:
  // Each conversion fills up to the state's width and resets it to 0; the rest of the state stays.
  static S ToString(CIOState& state, C value);
  static S ToString(CIOState& state, int value);
  static S ToString(CIOState& state, unsigned int value);
  static S ToString(CIOState& state, long value);
  static S ToString(CIOState& state, unsigned long value);
  static S ToString(CIOState& state, long long value);
  static S ToString(CIOState& state, unsigned long long value);
  // A precision below 1 means 6 unless the form is fixed, where 0 means no decimals. A text of more
  // than 527 units comes out empty.
  static S ToString(CIOState& state, double value);
  static S ToString(CIOState& state, long double value);
  // The text unchanged; not null.
  static S ToString(CIOState& state, const C* value);
  // 16 hexadecimal digits; the flags don't apply.
  static S ToString(CIOState& state, const void* value);
  static S ToString(CIOState& state, bool value);

 protected:
  // Printf templates for the state, into at least 8 units; they give the buffer. A lengthLetter of
  // 0 is left out; a conversion of d or u gives way to o, x and X.
  static C* ComposeFormatDouble(CIOState& state, C* const buffer, C lengthLetter);
  static C* ComposeFormatInt32(CIOState& state, C* const buffer, C conversion);
  static C* ComposeFormatInt64(CIOState& state, C* const buffer, C conversion);
  // length units of text and the fill into out; the state's width becomes 0.
  static void CreateString(CIOState& state, const C* text, int length, S& out);
  // count units of fill; none for a count below 1.
  static void DrawFill(int count, C fill, C* buffer);

 private:
  static C* ComposeFormatInteger(CIOState& state, C* buffer, const char* length, C conversion);
  // Both take the number in the type that the template reads.
  template <class T>
  static S FormatDouble(CIOState& state, C lengthLetter, T value);
  template <class T>
  static S FormatInteger(CIOState& state, const C* format, T value);
};

extern template class BasicValueConverter<String, char>;
extern template class BasicValueConverter<WString, WChar>;

}  // namespace detail

class KELP0LANG_API CAValueConverter : public detail::BasicValueConverter<String, char> {};
class KELP0LANG_API CWValueConverter : public detail::BasicValueConverter<WString, WChar> {};

// Throws CVariableNotInitializedException for a value that no measurement has: a magnitude above
// 1e50, or below 1e-50 and not 0. A NaN passes.
KELP0LANG_API void TestValue(double value);

// The decimal integer that a text begins with, behind white space (isspace) and a sign; reading
// stops at the first other character, and text without a number gives 0. Numbers wrap at 32 bits.
KELP0LANG_API long vc6_atol(const char* text);
KELP0LANG_API int vc6_atoi(const char* text);
KELP0LANG_API unsigned atoui(const char* text);

}  // namespace kelp
