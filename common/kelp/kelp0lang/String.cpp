#include "kelp0lang/String.h"

#include <tchar.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <ostream>
#include <string>
#include <type_traits>

#include "kelp0lang/TextScan.h"
#include "kelptext/Utf8.h"

namespace kelp {
namespace detail {

constinit EmptyText<char> emptyNarrow = {{0, 0, 2}, 0};
constinit EmptyText<WChar> emptyWide = {{0, 0, 2}, 0};

static_assert(offsetof(EmptyText<char>, terminator) == sizeof(TextHeader));
static_assert(offsetof(EmptyText<WChar>, terminator) == sizeof(TextHeader));

void FreeText(TextHeader* header) noexcept {
  delete[] reinterpret_cast<char*>(header);
}

namespace {

// A block with room for capacity units, the length set to it and terminated.
template <class C>
C* NewText(std::int64_t capacity) {
  const int units = FittingLength(static_cast<std::uint64_t>(capacity));
  char* block = new char[sizeof(TextHeader) + (static_cast<std::size_t>(units) + 1) * sizeof(C)];
  auto* header = reinterpret_cast<TextHeader*>(block);
  *header = {units, units, 1};
  C* text = reinterpret_cast<C*>(header + 1);
  text[units] = 0;
  return text;
}

template <class C>
void CopyUnits(C* target, const C* source, std::size_t count) {
  if (count != 0) std::memcpy(target, source, count * sizeof(C));
}

// Up to the first zero unit, then zeros to the full count.
template <class C>
void CopyPadded(C* target, const C* source, std::size_t count) {
  C* const end = target + count;
  while (target < end && *source != 0) *target++ = *source++;
  std::fill(target, end, C{0});
}

// The C library's routines under one name for both widths.
int CompareWithoutCase(const char* a, const char* b) {
  return _stricmp(a, b);
}
int CompareWithoutCase(const WChar* a, const WChar* b) {
  return _wcsicmp(a, b);
}
int CompareUpTo(const char* a, const char* b, std::size_t n) {
  return std::strncmp(a, b, n);
}
int CompareUpTo(const WChar* a, const WChar* b, std::size_t n) {
  return wcsncmp(a, b, n);
}
int CompareUpToWithoutCase(const char* a, const char* b, std::size_t n) {
  return _strnicmp(a, b, n);
}
int CompareUpToWithoutCase(const WChar* a, const WChar* b, std::size_t n) {
  return _wcsnicmp(a, b, n);
}
void LowerInPlace(char* text) {
  _strlwr(text);
}
void LowerInPlace(WChar* text) {
  _wcslwr(text);
}
void UpperInPlace(char* text) {
  _strupr(text);
}
void UpperInPlace(WChar* text) {
  _wcsupr(text);
}
bool IsSpace(char unit) {
  return std::isspace(static_cast<unsigned char>(unit)) != 0;
}
bool IsSpace(WChar unit) {
  return std::iswspace(unit) != 0;
}

// How many units at either end satisfy the test.
template <class C, class Test>
int CountLeading(const C* text, int length, Test test) {
  int count = 0;
  while (count < length && test(text[count])) ++count;
  return count;
}
template <class C, class Test>
int CountTrailing(const C* text, int length, Test test) {
  int count = 0;
  while (count < length && test(text[length - 1 - count])) ++count;
  return count;
}

}  // namespace

template <class S, class C>
FreshText<C> BasicText<S, C>::CopyOf(const C* text, std::int64_t length) {
  if (length < 1) return {static_cast<C*>(Share(EmptyBuffer<C>()))};
  C* copy = NewText<C>(length);
  CopyUnits(copy, text, static_cast<std::size_t>(length));
  return {copy};
}

template <class S, class C>
FreshText<C> BasicText<S, C>::CopyOfRange(const C* text, std::int64_t length, int start,
                                          int count) {
  const std::int64_t begin = std::clamp<std::int64_t>(start, 0, length);
  return CopyOf(text + begin, std::min<std::int64_t>(count, length - begin));
}

template <class S, class C>
FreshText<C> BasicText<S, C>::CopyOfTerminated(const C* text) {
  return CopyOf(text, text == nullptr ? 0 : static_cast<std::int64_t>(TerminatedLength(text)));
}

template <class S, class C>
FreshText<C> BasicText<S, C>::Join(const C* first, std::int64_t firstLength, const C* second,
                                   std::int64_t secondLength) {
  if (firstLength + secondLength < 1) return CopyOf(first, 0);
  C* text = NewText<C>(firstLength + secondLength);
  CopyUnits(text, first, static_cast<std::size_t>(firstLength));
  CopyUnits(text + firstLength, second, static_cast<std::size_t>(secondLength));
  return {text};
}

template <class S, class C>
void BasicText<S, C>::MoveToOwn(int capacity) {
  C* own = NewText<C>(std::max(capacity, Length()));
  CopyUnits(own, Text(), length() + 1);
  reinterpret_cast<TextHeader*>(own)[-1].length = Length();
  Reset(own);
}

template <class S, class C>
void BasicText<S, C>::Unshare() {
  if (IsShared()) MoveToOwn(Capacity());
}

template <class S, class C>
C* BasicText<S, C>::GetBufferAsCString(int capacity) {
  if (capacity > Capacity() || IsShared()) MoveToOwn(capacity);
  return Text();
}

template <class S, class C>
C* BasicText<S, C>::GetBufferSetLength(int length) {
  C* text = GetBufferAsCString(length);
  Header()->length = length;
  text[length] = 0;
  return text;
}

template <class S, class C>
void BasicText<S, C>::ReleaseBuffer(int length) {
  Unshare();
  if (length < 0) length = static_cast<int>(TerminatedLength(Text()));
  Header()->length = length;
  Text()[length] = 0;
}

template <class S, class C>
void BasicText<S, C>::Empty() {
  if (!empty()) Reset(Share(EmptyBuffer<C>()));
}

template <class S, class C>
void BasicText<S, C>::resize(int length, C fill) {
  const int oldLength = Length();
  C* text = GetBufferSetLength(length);
  if (length > oldLength) std::fill(text + oldLength, text + length, fill);
}

template <class S, class C>
void BasicText<S, C>::SetChar(int position, C unit) {
  Unshare();
  Text()[position] = unit;
}

template <class S, class C>
void BasicText<S, C>::GetChars(int sourceBegin, int sourceEnd, C* target, int targetBegin) const {
  if (sourceEnd <= sourceBegin) return;
  CopyUnits(target + targetBegin, Text() + sourceBegin,
            static_cast<std::size_t>(sourceEnd - sourceBegin));
}

// text may point into this string, whose buffer stays until the units are copied.
template <class S, class C>
void BasicText<S, C>::Grow(const C* text, std::int64_t count) {
  if (count > 0) Reset(Join(Text(), Length(), text, count).text);
}

template <class S, class C>
S& BasicText<S, C>::operator+=(const C* text) {
  if (text != nullptr) AppendUnits(text, static_cast<std::int64_t>(TerminatedLength(text)));
  return Self();
}

template <class S, class C>
S BasicText<S, C>::append(const S& text) {
  return *this += text;
}

template <class S, class C>
S BasicText<S, C>::append(C unit) {
  return unit == 0 ? Self() : *this += unit;
}

template <class S, class C>
S BasicText<S, C>::Concat(const S& text) const {
  return S(Join(Text(), Length(), text.Text(), text.Length()));
}

template <class S, class C>
int BasicText<S, C>::Compare(const C* text) const {
  using Unit = std::make_unsigned_t<C>;
  const C* own = Text();
  while (*own == *text && *own != 0) ++own, ++text;
  const Unit a = static_cast<Unit>(*own);
  const Unit b = static_cast<Unit>(*text);
  return a < b ? -1 : a > b ? 1 : 0;
}

template <class S, class C>
std::strong_ordering BasicText<S, C>::Order(const BasicText& other) const noexcept {
  const int common = CompareUnits(Text(), other.Text(), std::min(length(), other.length()));
  if (common != 0) return common <=> 0;
  return length() <=> other.length();
}

template <class S, class C>
int BasicText<S, C>::CompareIgnoreCase(const C* text) const {
  return CompareWithoutCase(Text(), text);
}

template <class S, class C>
int BasicText<S, C>::IndexOf(const S& text, int from) const {
  from = std::max(from, 0);
  if (from >= Length()) return -1;
  const C* found = FindText(Text() + from, Text() + Length(), text.Text());
  return found == nullptr ? -1 : static_cast<int>(found - Text());
}

template <class S, class C>
int BasicText<S, C>::IndexOf(C unit, int from) const {
  from = std::max(from, 0);
  if (from >= Length()) return -1;
  const C* found = FindUnit(Text() + from, Text() + Length(), unit);
  return found == Text() + Length() ? -1 : static_cast<int>(found - Text());
}

template <class S, class C>
int BasicText<S, C>::LastIndexOf(const S& text, int from) const {
  if (from < 0) return -1;
  int position = std::min(from, Length() - text.Length());
  if (text.empty()) return position;
  const int last = text.Length() - 1;
  const C* wanted = text.Text();
  for (; position >= 0; --position) {
    if (Text()[position + last] == wanted[last] &&
        std::memcmp(Text() + position, wanted, static_cast<std::size_t>(last) * sizeof(C)) == 0) {
      return position;
    }
  }
  return -1;
}

template <class S, class C>
int BasicText<S, C>::LastIndexOf(C unit, int from) const {
  int position = from >= Length() ? Length() - 1 : std::max(from, 0);
  while (position >= 0 && Text()[position] != unit) --position;
  return position;
}

template <class S, class C>
int BasicText<S, C>::rfind(const S& text) const {
  return LastIndexOf(text, Length() - 1);
}

template <class S, class C>
int BasicText<S, C>::rfind(C unit) const {
  return LastIndexOf(unit, INT_MAX);
}

template <class S, class C>
bool BasicText<S, C>::StartsWith(const S& text, int offset) const {
  if (offset < 0 || offset >= Length()) return false;
  const std::size_t count = TerminatedLength(text.Text());
  return CompareUpTo(Text() + offset, text.Text(), count) == 0;
}

template <class S, class C>
bool BasicText<S, C>::EndsWith(const S& text) const {
  return text.Length() <= Length() && StartsWith(text, Length() - text.Length());
}

template <class S, class C>
bool BasicText<S, C>::RegionMatches(int offset, const S& other, int otherOffset, int count,
                                    bool ignoreCase) const {
  if (offset < 0 || otherOffset < 0) return false;
  if (offset > Length() - count || otherOffset > other.Length() - count) return false;
  const auto units = static_cast<std::size_t>(count);
  const C* own = Text() + offset;
  const C* theirs = other.Text() + otherOffset;
  return (ignoreCase ? CompareUpToWithoutCase(own, theirs, units)
                     : CompareUpTo(own, theirs, units)) == 0;
}

template <class S, class C>
S BasicText<S, C>::Substring(int start) const {
  return Substring(start, Length() - std::max(start, 0));
}

template <class S, class C>
S BasicText<S, C>::Substring(int start, int count) const {
  if (start < 0 || count < 1) return S();
  if (start == 0 && count == Length()) return Self();
  return S(CopyOfRange(Text(), Length(), start, count));
}

template <class S, class C>
S BasicText<S, C>::substr(int start, int count) const {
  if (count == -1 || std::int64_t{start} + count > Length()) count = Length() - std::max(start, 0);
  return Substring(start, count);
}

template <class S, class C>
S BasicText<S, C>::Erase(int start, int count) const {
  start = std::max(start, 0);
  if (count == -1) count = Length();
  if (std::int64_t{start} + count > Length()) count = Length() - start;
  if (count <= 0) return Self();
  const C* tail = Text() + start + count;
  C* text = NewText<C>(Length() - count);
  CopyUnits(text, Text(), static_cast<std::size_t>(start));
  CopyPadded(text + start, tail, static_cast<std::size_t>(Length() - count - start));
  return S(FreshText<C>{text});
}

template <class S, class C>
S BasicText<S, C>::Insert(int position, const C* inserted, int count) const {
  const std::int64_t gained =
      count == -1 ? static_cast<std::int64_t>(TerminatedLength(inserted)) : std::max(count, 0);
  position = std::clamp(position, 0, Length());
  if (Length() + gained < 1) return S();
  C* text = NewText<C>(Length() + gained);
  CopyUnits(text, Text(), static_cast<std::size_t>(position));
  CopyPadded(text + position, inserted, static_cast<std::size_t>(gained));
  CopyPadded(text + position + gained, Text() + position,
             static_cast<std::size_t>(Length() - position));
  return S(FreshText<C>{text});
}

template <class S, class C>
S BasicText<S, C>::insert(int position, C unit) const {
  return Insert(position, &unit, 1);
}

template <class S, class C>
S& BasicText<S, C>::assign(const S& text, int position, std::uint64_t count) {
  const int units = count > INT_MAX ? -1 : static_cast<int>(count);
  return Self() = Insert(position, text.Text(), units == -1 ? text.Length() : units);
}

template <class S, class C>
S BasicText<S, C>::Replace(C from, C to) const {
  S result(Self());
  C* text = result.GetBufferAsCString(Length());
  std::replace(text, text + Length(), from, to);
  return result;
}

template <class S, class C>
S BasicText<S, C>::ToLowerCase() const {
  S result(Self());
  LowerInPlace(result.GetBufferAsCString(Length()));
  return result;
}

template <class S, class C>
S BasicText<S, C>::ToUpperCase() const {
  S result(Self());
  UpperInPlace(result.GetBufferAsCString(Length()));
  return result;
}

template <class S, class C>
S BasicText<S, C>::TrimLeft() const {
  return Substring(CountLeading(Text(), Length(), [](C unit) { return IsSpace(unit); }));
}

template <class S, class C>
S BasicText<S, C>::TrimRight() const {
  return Substring(0, Length() - CountTrailing(Text(), Length(), [](C u) { return IsSpace(u); }));
}

template <class S, class C>
S BasicText<S, C>::Trim() const {
  return TrimLeft().TrimRight();
}

template <class S, class C>
S BasicText<S, C>::TrimLeft(C unit) const {
  return Substring(CountLeading(Text(), Length(), [unit](C u) { return u == unit; }));
}

template <class S, class C>
S BasicText<S, C>::TrimRight(C unit) const {
  return Substring(0,
                   Length() - CountTrailing(Text(), Length(), [unit](C u) { return u == unit; }));
}

template class BasicText<String, char>;
template class BasicText<WString, WChar>;

}  // namespace detail

namespace {

using detail::FreshText;

// Text of up to this many units is converted on the stack in one pass, longer text in two.
constexpr std::size_t kStackUnits = 2048;

FreshText<WChar> Decode(const char* bytes, std::size_t size) {
  WChar onStack[kStackUnits];
  const bool small = size <= kStackUnits;
  const std::size_t length = small ? detail::DecodeUtf8(bytes, size, onStack, kStackUnits)
                                   : detail::DecodedUtf8Length(bytes, size);
  FreshText<WChar> text{detail::NewText<WChar>(static_cast<std::int64_t>(length))};
  if (small) {
    detail::CopyUnits(text.text, onStack, length);
  } else {
    detail::DecodeUtf8(bytes, size, text.text, length);
  }
  return text;
}

FreshText<char> Encode(const WChar* units, std::size_t size) {
  constexpr std::size_t kBytesPerUnit = 3;
  char onStack[kBytesPerUnit * kStackUnits];
  const bool small = size <= kStackUnits;
  const std::size_t length = small ? detail::EncodeUtf8(units, size, onStack, sizeof(onStack))
                                   : detail::EncodedUtf8Length(units, size);
  FreshText<char> text{detail::NewText<char>(static_cast<std::int64_t>(length))};
  if (small) {
    detail::CopyUnits(text.text, onStack, length);
  } else {
    detail::EncodeUtf8(units, size, text.text, length);
  }
  return text;
}

template <class C>
std::int64_t UnitsOf(const C* text) {
  return static_cast<std::int64_t>(detail::TerminatedLength(text));
}

// Both directions of ConvertString; convert is wcstombs or mbstowcs.
template <class S, class Target, class Source>
S ConvertByLocale(const Source* text, std::size_t (*convert)(Target*, const Source*, std::size_t)) {
  if (text == nullptr) return S();
  constexpr auto kFailed = static_cast<std::size_t>(-1);
  const std::size_t size = convert(nullptr, text, 0);
  if (size == kFailed || size == 0) return S();
  S result;
  Target* buffer = result.GetBufferSetLength(detail::FittingLength(size));
  // Room for the terminator too: the buffer holds one unit more than its length.
  if (convert(buffer, text, size + 1) == kFailed) return S();
  return result;
}

}  // namespace

String::String(const char* text, int start, int count)
    : BasicText(CopyOfRange(text, UnitsOf(text), start, count)) {}

bool String::RegionMatches(int offset, const char* other, int otherOffset, int count,
                           bool ignoreCase) const {
  if (offset < 0 || otherOffset < 0) return false;
  if (count < 1) return true;
  const auto units = static_cast<std::size_t>(count);
  const char* own = c_str() + offset;
  const char* theirs = other + otherOffset;
  return (ignoreCase ? _strnicmp(own, theirs, units) : std::strncmp(own, theirs, units)) == 0;
}

String String::AcceptString(const WChar* text) {
  return ConvertString(text, 0);
}

String String::AcceptString(const WChar* text, int count) {
  return ConvertString(text, count);
}

String String::ConvertToUtf8(const WChar* text) {
  if (text == nullptr || *text == 0) return String();
  return String(Encode(text, wcslen(text)));
}

WString String::FromUtf8() const {
  return empty() ? WString() : WString(Decode(c_str(), length()));
}

WString::WString(const WChar* text, int start, int count)
    : BasicText(CopyOfRange(text, UnitsOf(text), start, count)) {}

WString WString::AcceptString(const char* text) {
  return ConvertString(text, 0);
}

WString WString::AcceptString(const char* text, int count) {
  return ConvertString(text, count);
}

WString WString::ConvertFromUtf8(const char* text) {
  if (text == nullptr || *text == 0) return WString();
  return WString(Decode(text, std::strlen(text)));
}

String WString::ToUtf8() const {
  return empty() ? String() : String(Encode(c_str(), length()));
}

namespace {

// Calls visit(match) for every place of wanted in [begin, end), searching on behind each match and
// behind each zero unit.
template <class Visit>
void ForEachMatch(const WChar* begin, const WChar* end, const WChar* wanted, std::size_t length,
                  Visit visit) {
  while (begin < end) {
    const WChar* match = detail::FindText(begin, end, wanted);
    if (match != nullptr) {
      visit(match);
      begin = match + length;
    } else {
      begin = detail::FindUnit(begin, end, WChar{0}) + 1;
    }
  }
}

}  // namespace

int WString::ReplaceInPlace(const WChar* from, const WChar* to) {
  if (from == nullptr || *from == 0) return 0;
  if (to == nullptr) to = KTEXT("");
  const std::size_t fromLength = detail::TerminatedLength(from);
  const std::size_t toLength = detail::TerminatedLength(to);
  const WChar* begin = c_str();
  const WChar* end = begin + Length();
  int count = 0;
  ForEachMatch(begin, end, from, fromLength, [&count](const WChar*) { ++count; });
  if (count == 0) return 0;

  // What is replaced lay within the text, so only the replacements can be too many or too long.
  const std::int64_t rest = Length() - count * static_cast<std::int64_t>(fromLength);
  const int newLength = detail::FittingLength(
      static_cast<std::uint64_t>(rest + count * std::int64_t{detail::FittingLength(toLength)}));
  const int capacity = std::max({Length(), newLength, IsShared() ? 0 : Capacity()});
  WString result(FreshText<WChar>{detail::NewText<WChar>(capacity)});
  WChar* out = result.Text();
  ForEachMatch(begin, end, from, fromLength, [&](const WChar* match) {
    out = std::copy(begin, match, out);
    out = std::copy(to, to + toLength, out);
    begin = match + fromLength;
  });
  std::copy(begin, end, out);
  result.ReleaseBuffer(newLength);
  *this = std::move(result);
  return count;
}

WString detail::TextOf(const WChar* units, int length) {
  return WString(WString::CopyOf(units, length));
}

String operator+(const String& text, char unit) {
  return String(String::Join(text.c_str(), text.Length(), &unit, 1));
}

String operator+(const String& text, const char* tail) {
  return String(String::Join(text.c_str(), text.Length(), tail, UnitsOf(tail)));
}

String operator+(char unit, const String& text) {
  return String(String::Join(&unit, 1, text.c_str(), text.Length()));
}

String operator+(const char* head, const String& text) {
  return String(String::Join(head, UnitsOf(head), text.c_str(), text.Length()));
}

WString operator+(const WString& text, WChar unit) {
  return WString(WString::Join(text.c_str(), text.Length(), &unit, 1));
}

WString operator+(const WString& text, const WChar* tail) {
  return WString(WString::Join(text.c_str(), text.Length(), tail, UnitsOf(tail)));
}

WString operator+(WChar unit, const WString& text) {
  return WString(WString::Join(&unit, 1, text.c_str(), text.Length()));
}

WString operator+(const WChar* head, const WString& text) {
  return WString(WString::Join(head, UnitsOf(head), text.c_str(), text.Length()));
}

std::ostream& operator<<(std::ostream& stream, const String& text) {
  return stream << std::string_view(text);
}

std::ostream& operator<<(std::ostream& stream, const WString& text) {
  return stream << text.ToUtf8();
}

String ConvertString(const WChar* text, int) {
  return ConvertByLocale<String, char, WChar>(text, wcstombs);
}

WString ConvertString(const char* text, int) {
  return ConvertByLocale<WString, WChar, char>(text, mbstowcs);
}

WString ConvertString(const char* text, int start, int) {
  return ConvertByLocale<WString, WChar, char>(text == nullptr ? nullptr : text + start, mbstowcs);
}

}  // namespace kelp
