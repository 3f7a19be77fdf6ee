// Text as this library takes it and gives it.
//
//   sarn_text::CSarnStringT<WChar> tags(KTEXT("Tab Group Button"));
//   int position = 0;
//   for (auto tag = tags.Tokenize(KTEXT(" "), position, false); position != -1;
//        tag = tags.Tokenize(KTEXT(" "), position, false)) { ... }
//
// A value of its own: each object owns its characters. Text holds no zero unit; lengths and
// positions are int, in units. The empty text needs no memory.
#pragma once

#include <cstdarg>
#include <utility>

#include "kelptext/Compiler.h"
#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"

namespace sarn_text {

// What is defined here is inlined even where nothing is optimised: gcc exports from a DLL no inline
// function of a template.
template <class C>
class SARNUTILS_API CSarnStringT {
 public:
  KELP_ALWAYS_INLINE constexpr CSarnStringT() noexcept : m_text(&kEmpty), m_length(0) {}
  // A copy; null gives the empty text.
  CSarnStringT(const C* text);
  // The first length units of text.
  CSarnStringT(const C* text, int length);
  KELP_ALWAYS_INLINE CSarnStringT(const CSarnStringT& other)
      : CSarnStringT(other.m_text, other.m_length) {}
  KELP_ALWAYS_INLINE CSarnStringT(CSarnStringT&& other) noexcept : CSarnStringT() { swap(other); }
  ~CSarnStringT();
  KELP_ALWAYS_INLINE CSarnStringT& operator=(CSarnStringT other) noexcept {
    swap(other);
    return *this;
  }
  KELP_ALWAYS_INLINE void swap(CSarnStringT& other) noexcept {
    std::swap(m_text, other.m_text);
    std::swap(m_length, other.m_length);
  }

  // The terminated text; valid until this object is assigned to or goes.
  KELP_ALWAYS_INLINE const C* c_str() const noexcept { return m_text; }
  KELP_ALWAYS_INLINE int GetLength() const noexcept { return m_length; }
  KELP_ALWAYS_INLINE bool IsEmpty() const noexcept { return m_length == 0; }

  // Negative, 0 or positive, by the units as unsigned values; text isn't null.
  int Compare(const C* text) const noexcept;

  // The text of a printf template, as the kelp_ functions print it: the decimal point is "."
  // whatever the locale. A template that can't be read gives the empty text.
  void FormatV(const C* format, std::va_list args);

  // The next token from position on, and the position behind it. Where there is no further token it
  // gives the empty text and the position becomes -1; from -1 on it stays so. Each unit of
  // delimiters ends a token. With keepEmpty every delimiter ends one, so that a text with n
  // delimiters has n + 1 tokens, some of which may be empty; without it a run of delimiters counts
  // as one, and those at the ends of the text as none.
  CSarnStringT Tokenize(const C* delimiters, int& position, bool keepEmpty) const;

 private:
  static constexpr C kEmpty = 0;

  const C* m_text;  // this object's own, except for the empty text
  int m_length;
};

extern template class CSarnStringT<WChar>;

}  // namespace sarn_text
