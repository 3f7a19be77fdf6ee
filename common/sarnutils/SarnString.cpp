#include "sarnutils/SarnString.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <type_traits>

#include "kelptext/FormatEngine.h"
#include "sarnutils/CharacterWidth.h"

namespace sarn_text {
namespace {

// Takes what the engine prints.
template <class C>
class TextSink {
 public:
  bool Put(const C* units, std::size_t count) {
    m_text.append(units, count);
    return true;
  }
  bool Fill(C unit, std::size_t count) {
    m_text.append(count, unit);
    return true;
  }
  template <class Other>
  int Convert(const Other*& text, C* units) {
    return ConvertCharacter(text, units);
  }
  const std::basic_string<C>& Text() const { return m_text; }

 private:
  std::basic_string<C> m_text;
};

}  // namespace

template <class C>
CSarnStringT<C>::CSarnStringT(const C* text)
    : CSarnStringT(text,
                   text == nullptr ? 0 : static_cast<int>(std::char_traits<C>::length(text))) {}

template <class C>
CSarnStringT<C>::CSarnStringT(const C* text, int length) : CSarnStringT() {
  if (length < 1) return;
  C* copy = new C[static_cast<std::size_t>(length) + 1];
  std::copy_n(text, length, copy);
  copy[length] = 0;
  m_text = copy;
  m_length = length;
}

template <class C>
CSarnStringT<C>::~CSarnStringT() {
  if (m_length != 0) delete[] m_text;
}

template <class C>
int CSarnStringT<C>::Compare(const C* text) const noexcept {
  using Unit = std::make_unsigned_t<C>;
  const C* own = m_text;
  while (*own == *text && *own != 0) ++own, ++text;
  return int{static_cast<Unit>(*own)} - int{static_cast<Unit>(*text)};
}

template <class C>
void CSarnStringT<C>::FormatV(const C* format, std::va_list args) {
  TextSink<C> sink;
  kelp::detail::FormatEngine<C, TextSink<C>> engine(sink, '.', args);
  // Through the terminated text, so that a "%c" of 0 ends it.
  *this = engine.Run(format) ? CSarnStringT(sink.Text().c_str()) : CSarnStringT();
}

template <class C>
CSarnStringT<C> CSarnStringT<C>::Tokenize(const C* delimiters, int& position,
                                          bool keepEmpty) const {
  const C* const delimitersEnd = delimiters + std::char_traits<C>::length(delimiters);
  const auto isDelimiter = [=](C unit) {
    return std::find(delimiters, delimitersEnd, unit) != delimitersEnd;
  };
  // A position behind the end is that of a text whose last token has been given.
  const C* const end = m_text + m_length;
  const C* begin = end;
  const bool given = position < 0 || position > m_length;
  if (!given) begin = m_text + position;
  if (!keepEmpty) begin = std::find_if_not(begin, end, isDelimiter);
  if (given || (!keepEmpty && begin == end)) {
    position = -1;
    return CSarnStringT();
  }
  const C* const tokenEnd = std::find_if(begin, end, isDelimiter);
  position = static_cast<int>(tokenEnd - m_text) + 1;
  return CSarnStringT(begin, static_cast<int>(tokenEnd - begin));
}

template class CSarnStringT<WChar>;

}  // namespace sarn_text
