// Text on its way in and out: bytes into UTF-16, sentences into the user's language, and UTF-16
// into what a terminal can show.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kelp0lang/String.h"

namespace console {

using kelp::WString;
using WideView = std::basic_string_view<WChar>;

inline WideView ViewOf(const WString& text) {
  return {text.c_str(), text.length()};
}
WString ToWString(WideView text);
void AppendUtf8(std::string& bytes, const WString& text);

// A sentence of the program with the values that stand in it. It is translated when it is shown, so
// that one made before the language is loaded is shown in it too.
struct Message {
  const WChar* source = nullptr;  // null: there is nothing to say
  std::vector<WString> values;    // for {1} and so on of the source

  explicit operator bool() const { return source != nullptr; }
  // In the user's language. A translation that can't be filled gives the English text.
  WString Text() const;
};

// Hears now and then how far a piece of work is, 0 to 1. It may throw to end it.
using Watch = std::function<void(double fraction)>;
// Without the byte order mark that some programs put before UTF-8.
std::string_view WithoutMark(std::string_view bytes);
// Whether the bytes are UTF-8 through and through: no stray bytes, overlong forms or surrogates.
bool IsUtf8(std::string_view bytes);
// How many bytes at the front are.
std::size_t WholeUtf8(std::string_view bytes);
// UTF-8 or Latin-1 into UTF-16. Zero bytes become replacement characters, since a zero ends a text
// for the library's searches.
WString Decode(std::string_view bytes, bool utf8);
// By what the bytes are themselves.
WString Decode(std::string_view bytes);

// Without what would move the cursor or turn the writing direction of a terminal: a tab becomes a
// blank, any other control character and half a surrogate pair the replacement character.
WString Shown(const WString& text);
// The text as a message quotes it: shown, and cut where it is long.
WString Quoted(const WString& text);
// Columns that a text takes on a terminal: combining characters take none, wide ones two.
int DisplayColumns(const WString& text);

// Of text of either width.
template <class C>
constexpr bool IsBlank(C unit) {
  return unit == ' ' || unit == '\t' || unit == '\r';
}
template <class C>
constexpr bool IsDigit(C unit) {
  return unit >= '0' && unit <= '9';
}
WideView Trimmed(WideView text);

}  // namespace console
