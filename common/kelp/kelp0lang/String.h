// Text: String of 8-bit units (narrow data, UTF-8, file content) and WString of 16-bit units
// (UTF-16, almost everything else).
//
//   kelp::WString point(KTEXT("P1 "));
//   point += KTEXT("trig. station");
//   if (point.StartsWith(KTEXT("P1"))) save(point.ToUtf8());
//
// Both are handles of one pointer on a shared, copy-on-write buffer. Copying, assigning and passing
// by value cost one atomic increment and no allocation, moving not even that much; a write first
// gives the handle a buffer of its own. The capacity is exact: text that grows step by step first
// gets its room, and then appends in place.
//
//   kelp::WString row;
//   row.GetBufferAsCString(200);
//   for (const kelp::WString& field : fields) row += field;
//
// Positions and counts are int, in units. Not found is -1. Text that would be longer than an int
// can say is refused with std::bad_alloc, as one is that there is no memory for; what stood there
// stays. No other error is reported: a position outside the text is a breach of the caller's
// contract. Where an operation takes a range that reaches outside the text (Substring, the
// constructors with a range, Insert), only the part inside is used; GetChar, SetChar and their kin
// don't test.
//
// At home in the standard library: text is a range of its units, gives a string view and is made
// from one, hashes, and prints to a stream of bytes as UTF-8. A formatter for fmt is in FmtText.h.
//
//   for (WChar unit : point) count(unit);
//   std::basic_string_view<WChar> view = point;
//   std::cout << point << "\n";
//
// Text may hold zero units inside its length, but the searches for a text and the comparisons with
// a pointer work on terminated text and stop there.
//
// Threads: two threads may hold handles on one buffer and each copy, destroy or change its own. One
// String object isn't safe for a write beside any other access to that object.
#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kelp0lang/Export.h"
#include "kelptext/WideChar.h"

namespace kelp {

class String;
class WString;

namespace detail {

// Stands directly before the first unit of every buffer.
struct TextHeader {
  std::int32_t capacity;    // units that fit, without the terminator
  std::int32_t length;      // units in use; the unit behind them is 0
  std::int32_t references;  // handles on this buffer; a buffer with several is never written
};
static_assert(sizeof(TextHeader) == 12);

// The buffer of all empty text of one width. Its count starts at 2 and every handle adds to it, so
// it is never freed and never written.
template <class C>
struct EmptyText {
  TextHeader header;
  C terminator;
};

extern KELP0LANG_API EmptyText<char> emptyNarrow;
extern KELP0LANG_API EmptyText<WChar> emptyWide;

template <class C>
inline C* EmptyBuffer() noexcept;
template <>
inline char* EmptyBuffer<char>() noexcept {
  return &emptyNarrow.terminator;
}
template <>
inline WChar* EmptyBuffer<WChar>() noexcept {
  return &emptyWide.terminator;
}

// Text of length units, which needn't be terminated; for the library itself, where it has counted.
WString TextOf(const WChar* units, int length);

// Gives a block back to the heap that it came from.
KELP0LANG_API void FreeText(TextHeader* header) noexcept;

// A number that isn't a unit of the text: where a unit is taken it would become one silently.
template <class T, class C>
concept NumberInsteadOfUnit = (std::is_arithmetic_v<T> || std::is_enum_v<T>)&&!std::is_same_v<T, C>;

// A buffer of its own count of 1, on its way into a handle.
template <class C>
struct FreshText {
  C* text;
};

// What doesn't depend on the width of a unit.
class TextHandle {
 public:
  // Units that fit into the present buffer, without the terminator.
  int Capacity() const noexcept { return Header()->capacity; }
  int Length() const noexcept { return Header()->length; }
  std::size_t length() const noexcept { return static_cast<std::size_t>(Header()->length); }
  bool empty() const noexcept { return Header()->length == 0; }

 protected:
  // Takes over one count of the buffer.
  explicit TextHandle(void* text) noexcept : m_text(text) {}
  TextHandle(const TextHandle& other) noexcept : m_text(Share(other.m_text)) {}
  ~TextHandle() { DropHandle(); }

  TextHandle& operator=(const TextHandle& other) noexcept {
    void* text = Share(other.m_text);
    DropHandle();
    m_text = text;
    return *this;
  }

  TextHeader* Header() const noexcept { return HeaderOf(m_text); }
  bool IsShared() const noexcept { return References(m_text).load(std::memory_order_acquire) > 1; }

  // Leaves the present buffer and takes over one count of another.
  void Reset(void* text) noexcept {
    DropHandle();
    m_text = text;
  }

  // Adds a handle to a buffer and gives it back.
  static void* Share(void* text) noexcept {
    References(text).fetch_add(1, std::memory_order_relaxed);
    return text;
  }

  void* m_text;

 private:
  static TextHeader* HeaderOf(void* text) noexcept { return static_cast<TextHeader*>(text) - 1; }
  static std::atomic_ref<std::int32_t> References(void* text) noexcept {
    return std::atomic_ref(HeaderOf(text)->references);
  }
  void DropHandle() noexcept {
    if (References(m_text).fetch_sub(1, std::memory_order_acq_rel) == 1) FreeText(Header());
  }
};

// What String and WString have in common: S is the class, C its unit.
template <class S, class C>
class KELP0LANG_API BasicText : public TextHandle {
 public:
  using value_type = C;
  using const_iterator = const C*;
  using iterator = const_iterator;

  // The terminated text; valid until the next operation on this string.
  const C* c_str() const noexcept { return Text(); }
  // Size of the text in bytes, without the terminator.
  std::size_t sizeInBytes() const noexcept { return length() * sizeof(C); }

  // The units in use, zeros among them; valid until the next operation on this string.
  const C* begin() const noexcept { return Text(); }
  const C* end() const noexcept { return Text() + Length(); }
  operator std::basic_string_view<C>() const noexcept { return {Text(), length()}; }

  // The unit at a position; not tested.
  C GetChar(int position) const noexcept { return Text()[position]; }
  C ReadChar(int position) const noexcept { return Text()[position]; }
  C at(int position) const noexcept { return Text()[position]; }
  // Stores a unit; the length stays. Not tested.
  void SetChar(int position, C unit);
  void WriteChar(int position, C unit) { SetChar(position, unit); }
  // Copies the units from sourceBegin up to sourceEnd to target + targetBegin, no terminator.
  void GetChars(int sourceBegin, int sourceEnd, C* target, int targetBegin) const;

  // Raw buffer: get it, write, then settle length and terminator with ReleaseBuffer. The pointer is
  // valid until the next operation on this string.
  //
  // A buffer of this handle alone with room for at least capacity units; length and text stay.
  C* GetBufferAsCString(int capacity);
  // The same, with the length set; units gained hold no defined value.
  C* GetBufferSetLength(int length);
  // Settles the length; a negative one means that of the terminated text now in the buffer.
  void ReleaseBuffer(int length);
  // Lets go of the buffer; a string without text keeps it, capacity included.
  void Empty();
  // GetBufferSetLength.
  void resize(int length) { GetBufferSetLength(length); }
  // Units gained hold fill.
  void resize(int length, C fill);

  // Appends, and writes into the present buffer where this handle is alone on it and there is room.
  // The text may be this one or a part of it. A null pointer adds nothing; operator+= of a unit
  // adds even a 0, append of a 0 adds nothing.
  S& operator+=(const S& text) {
    AppendUnits(text.Text(), text.Length());
    return Self();
  }
  S& operator+=(C unit) {
    TextHeader* const header = Header();
    C* const text = Text();
    const int length = header->length;
    if (length < header->capacity && !IsShared()) {
      text[length] = unit;
      text[length + 1] = 0;
      header->length = length + 1;
    } else {
      const C copy = unit;  // else the unit would go through memory in a loop that never grows
      Grow(&copy, 1);
    }
    return Self();
  }
  S& operator+=(const C* text);
  // Refused, as here and in operator+ a number would count as a unit; ValueOf makes text of one.
  template <NumberInsteadOfUnit<C> T>
  S& operator+=(T number) = delete;
  S append(const S& text);
  S append(C unit);
  // Receiver first.
  [[nodiscard]] S Concat(const S& text) const;

  // -1, 0 or 1, unit by unit as unsigned values up to the terminator.
  [[nodiscard]] int Compare(const C* text) const;
  // Negative, 0 or positive, as the C library compares without regard to case (process locale).
  [[nodiscard]] int CompareIgnoreCase(const C* text) const;

  // First position at or behind from; a negative from counts as 0, one at or beyond the length
  // gives -1 even for an empty text.
  [[nodiscard]] int IndexOf(const S& text, int from = 0) const;
  [[nodiscard]] int IndexOf(C unit, int from = 0) const;
  [[nodiscard]] int find(const S& text, int from = 0) const { return IndexOf(text, from); }
  [[nodiscard]] int find(C unit, int from = 0) const { return IndexOf(unit, from); }
  // Last position not above from. A negative from gives -1 for a text and looks at position 0 for a
  // unit; an empty text is found at min(from, length).
  [[nodiscard]] int LastIndexOf(const S& text, int from) const;
  [[nodiscard]] int LastIndexOf(C unit, int from) const;
  // The last position in the whole text; an empty text is found at length - 1.
  [[nodiscard]] int rfind(const S& text) const;
  [[nodiscard]] int rfind(C unit) const;
  // False on an empty receiver and at offset = length, even for an empty text.
  [[nodiscard]] bool StartsWith(const S& text, int offset = 0) const;
  // False for an empty text.
  [[nodiscard]] bool EndsWith(const S& text) const;
  // Compares count units of this text and of another; false where either range leaves its text.
  [[nodiscard]] bool RegionMatches(int offset, const S& other, int otherOffset, int count,
                                   bool ignoreCase) const;

  // Derived text; the receiver stays as it is. Where nothing changes the result shares the
  // receiver's buffer.
  //
  // A negative start or a count below 1 gives empty text.
  [[nodiscard]] S Substring(int start) const;
  [[nodiscard]] S Substring(int start, int count) const;
  // Clamps: count -1, or one that reaches beyond the end, means the rest.
  [[nodiscard]] S substr(int start, int count = -1) const;
  // Without count units from start; -1 means all the rest.
  [[nodiscard]] S Erase(int start, int count = -1) const;
  // With count units of text before position; -1 means all of text, a text that is shorter than
  // count is padded with 0.
  [[nodiscard]] S Insert(int position, const C* text, int count = -1) const;
  [[nodiscard]] S insert(int position, const C* text, int count = -1) const {
    return Insert(position, text, count);
  }
  [[nodiscard]] S insert(int position, C unit) const;
  // Inserts count units of text (all ones: the whole) into the receiver at position and returns it;
  // what stood there before stays around the insertion.
  S& assign(const S& text, int position, std::uint64_t count);
  // With to in place of every from.
  [[nodiscard]] S Replace(C from, C to) const;
  // By the C library's case routines (process locale).
  [[nodiscard]] S ToLowerCase() const;
  [[nodiscard]] S ToUpperCase() const;
  // Without white space (isspace, iswspace), or without runs of a unit, at the ends.
  [[nodiscard]] S TrimLeft() const;
  [[nodiscard]] S TrimRight() const;
  [[nodiscard]] S Trim() const;
  [[nodiscard]] S TrimLeft(C unit) const;
  [[nodiscard]] S TrimRight(C unit) const;

  // The same units, zeros inside the text included.
  friend bool operator==(const S& a, const S& b) noexcept {
    return a.Length() == b.Length() && std::memcmp(a.m_text, b.m_text, a.sizeInBytes()) == 0;
  }
  // The same as a terminated text; null counts as empty.
  friend bool operator==(const S& a, const C* b) noexcept {
    const C* own = a.Text();
    if (b == nullptr) return a.empty();
    for (const C* const end = own + a.Length(); own != end; ++own, ++b) {
      if (*b != *own || *b == 0) return false;
    }
    return *b == 0;
  }
  // The order of the units as unsigned values.
  friend std::strong_ordering operator<=>(const S& a, const S& b) noexcept { return a.Order(b); }
  friend void swap(S& a, S& b) noexcept { std::swap(a.m_text, b.m_text); }

 protected:
  BasicText() noexcept : TextHandle(Share(EmptyBuffer<C>())) {}
  explicit BasicText(FreshText<C> fresh) noexcept : TextHandle(fresh.text) {}
  BasicText(const BasicText&) noexcept = default;
  BasicText(BasicText&& other) noexcept
      : TextHandle(std::exchange(other.m_text, Share(EmptyBuffer<C>()))) {}
  ~BasicText() = default;
  BasicText& operator=(const BasicText&) noexcept = default;
  BasicText& operator=(BasicText&& other) noexcept {
    std::swap(m_text, other.m_text);
    return *this;
  }

  C* Text() const noexcept { return static_cast<C*>(m_text); }

  // A copy of length units; a length below 1 gives the empty buffer.
  static FreshText<C> CopyOf(const C* text, std::int64_t length);
  // The units of [start, start + count) that lie within a text of the given length.
  static FreshText<C> CopyOfRange(const C* text, std::int64_t length, int start, int count);
  static FreshText<C> CopyOfTerminated(const C* text);
  // Two parts in a buffer of exact size.
  static FreshText<C> Join(const C* first, std::int64_t firstLength, const C* second,
                           std::int64_t secondLength);
  void AssignTerminated(const C* text) { Reset(CopyOfTerminated(text).text); }
  void AssignUnit(C unit) { Reset(CopyOf(&unit, 1).text); }

 private:
  S& Self() noexcept { return static_cast<S&>(*this); }
  const S& Self() const noexcept { return static_cast<const S&>(*this); }
  // text may point into this string.
  void AppendUnits(const C* text, std::int64_t count) {
    TextHeader* const header = Header();
    C* const own = Text();
    const std::int64_t length = header->length;
    const std::int64_t newLength = length + count;
    if (newLength > header->capacity || IsShared()) {
      Grow(text, count);
      return;
    }
    std::memmove(own + length, text, static_cast<std::size_t>(count) * sizeof(C));
    own[newLength] = 0;
    header->length = static_cast<std::int32_t>(newLength);
  }
  // Appends into a buffer of its own and of exact size.
  void Grow(const C* text, std::int64_t count);
  // A buffer of this handle alone, with room for capacity units and for the text.
  void MoveToOwn(int capacity);
  void Unshare();
  std::strong_ordering Order(const BasicText& other) const noexcept;
};

}  // namespace detail

// Text of 8-bit units; comparison treats them as unsigned.
class KELP0LANG_API String : public detail::BasicText<String, char> {
 public:
  // Shares the empty buffer.
  String() noexcept = default;
  String(const String&) noexcept = default;
  // Takes the text over and leaves the empty text.
  String(String&&) noexcept = default;
  // count units of text from start.
  String(const String& text, int start, int count)
      : BasicText(CopyOfRange(text.c_str(), text.Length(), start, count)) {}
  // A copy; null gives the empty text.
  String(const char* text) : BasicText(CopyOfTerminated(text)) {}
  // The lesser of count and the length of the whole text, in units from start; text isn't null.
  String(const char* text, int start, int count);
  // A copy of the units; a view that an int can't count is refused with std::bad_alloc.
  explicit String(std::basic_string_view<char> view)
      : BasicText(CopyOf(view.data(), static_cast<std::int64_t>(view.size()))) {}
  ~String() = default;

  String& operator=(const String&) noexcept = default;
  // The two change their texts.
  String& operator=(String&&) noexcept = default;
  // One unit, which may be 0.
  String& operator=(char unit) {
    AssignUnit(unit);
    return *this;
  }
  // A copy, made before the old text goes, so text may point into it; not null.
  String& operator=(const char* text) {
    AssignTerminated(text);
    return *this;
  }
  template <detail::NumberInsteadOfUnit<char> T>
  String& operator=(T number) = delete;

  using BasicText::RegionMatches;
  // The same with a terminated text and no test against the lengths: the end of either text ends
  // the comparison. A count below 1 gives true.
  bool RegionMatches(int offset, const char* other, int otherOffset, int count,
                     bool ignoreCase) const;

  // By the process locale, see ConvertString.
  static String AcceptString(const WChar* text);
  static String AcceptString(const WChar* text, int count);
  // UTF-8, not bound to a locale. A high surrogate is joined with the unit behind it whatever that
  // is, any other unit stands for itself.
  [[nodiscard]] static String ConvertToUtf8(const WChar* text);
  // Decodes this text as UTF-8, by its length, see WString::ConvertFromUtf8.
  [[nodiscard]] WString FromUtf8() const;

  // Values as text, the same under every locale: numbers in decimal, with precision decimals (6
  // where that is beyond an int), and pointers as 16 hexadecimal digits. A double that takes more
  // than 527 units gives empty text.
  static String ValueOf(int value);
  static String ValueOf(unsigned int value);
  static String ValueOf(long value);
  static String ValueOf(unsigned long value);
  static String ValueOf(long long value);
  static String ValueOf(unsigned long long value);
  static String ValueOf(double value, unsigned int precision);
  static String ValueOf(const void* value);
  // "true" or "false".
  static String ValueOf(bool value);
  // One unit; 0 gives the empty text.
  static String ValueOf(char value);

 private:
  friend class detail::BasicText<String, char>;
  friend class WString;
  friend KELP0LANG_API String operator+(const String&, char);
  friend KELP0LANG_API String operator+(const String&, const char*);
  friend KELP0LANG_API String operator+(char, const String&);
  friend KELP0LANG_API String operator+(const char*, const String&);
  explicit String(detail::FreshText<char> fresh) noexcept : BasicText(fresh) {}
};

// Text of 16-bit units, UTF-16.
class KELP0LANG_API WString : public detail::BasicText<WString, WChar> {
 public:
  // Shares the empty buffer.
  WString() noexcept = default;
  WString(const WString&) noexcept = default;
  // Takes the text over and leaves the empty text.
  WString(WString&&) noexcept = default;
  // count units of text from start.
  WString(const WString& text, int start, int count)
      : BasicText(CopyOfRange(text.c_str(), text.Length(), start, count)) {}
  // A copy; null gives the empty text.
  WString(const WChar* text) : BasicText(CopyOfTerminated(text)) {}
  // The lesser of count and the length of the whole text, in units from start; text isn't null.
  WString(const WChar* text, int start, int count);
  // A copy of the units; a view that an int can't count is refused with std::bad_alloc.
  explicit WString(std::basic_string_view<WChar> view)
      : BasicText(CopyOf(view.data(), static_cast<std::int64_t>(view.size()))) {}
  ~WString() = default;

  WString& operator=(const WString&) noexcept = default;
  // The two change their texts.
  WString& operator=(WString&&) noexcept = default;
  // One unit, which may be 0.
  WString& operator=(WChar unit) {
    AssignUnit(unit);
    return *this;
  }
  // A copy, made before the old text goes, so text may point into it; not null.
  WString& operator=(const WChar* text) {
    AssignTerminated(text);
    return *this;
  }
  template <detail::NumberInsteadOfUnit<WChar> T>
  WString& operator=(T number) = delete;

  // Replaces every occurrence of from in place, not looking into replacements, and returns how many
  // there were. A null or empty from gives 0, a null to counts as empty. Zero units inside the text
  // don't stop it.
  int ReplaceInPlace(const WChar* from, const WChar* to);

  // By the process locale, see ConvertString.
  static WString AcceptString(const char* text);
  static WString AcceptString(const char* text, int count);
  // UTF-8, not bound to a locale. Sequences aren't checked: a byte that begins none passes through
  // as its own value, the bytes behind a lead byte are only masked, overlong forms and surrogate
  // values stand. A sequence that the text cuts short is read as if zero bits followed.
  [[nodiscard]] static WString ConvertFromUtf8(const char* text);
  // Encodes this text, by its length, see String::ConvertToUtf8.
  [[nodiscard]] String ToUtf8() const;

  // Values as text, as String::ValueOf gives them.
  static WString ValueOf(int value);
  static WString ValueOf(unsigned int value);
  static WString ValueOf(long value);
  static WString ValueOf(unsigned long value);
  static WString ValueOf(long long value);
  static WString ValueOf(unsigned long long value);
  static WString ValueOf(double value, unsigned int precision);
  static WString ValueOf(const void* value);
  static WString ValueOf(bool value);
  static WString ValueOf(WChar value);

 private:
  friend class detail::BasicText<WString, WChar>;
  friend class String;
  friend WString detail::TextOf(const WChar*, int);
  friend KELP0LANG_API WString operator+(const WString&, WChar);
  friend KELP0LANG_API WString operator+(const WString&, const WChar*);
  friend KELP0LANG_API WString operator+(WChar, const WString&);
  friend KELP0LANG_API WString operator+(const WChar*, const WString&);
  explicit WString(detail::FreshText<WChar> fresh) noexcept : BasicText(fresh) {}
};

// New text of two parts; two strings are joined by Concat. Pointers aren't null.
KELP0LANG_API String operator+(const String& text, char unit);
KELP0LANG_API String operator+(const String& text, const char* tail);
KELP0LANG_API String operator+(char unit, const String& text);
KELP0LANG_API String operator+(const char* head, const String& text);
KELP0LANG_API WString operator+(const WString& text, WChar unit);
KELP0LANG_API WString operator+(const WString& text, const WChar* tail);
KELP0LANG_API WString operator+(WChar unit, const WString& text);
KELP0LANG_API WString operator+(const WChar* head, const WString& text);
template <detail::NumberInsteadOfUnit<char> T>
String operator+(const String& text, T number) = delete;
template <detail::NumberInsteadOfUnit<char> T>
String operator+(T number, const String& text) = delete;
template <detail::NumberInsteadOfUnit<WChar> T>
WString operator+(const WString& text, T number) = delete;
template <detail::NumberInsteadOfUnit<WChar> T>
WString operator+(T number, const WString& text) = delete;

// The bytes as they stand, and wide text as UTF-8, by the stream's width and fill, which count
// bytes.
KELP0LANG_API std::ostream& operator<<(std::ostream& stream, const String& text);
KELP0LANG_API std::ostream& operator<<(std::ostream& stream, const WString& text);

// Between the widths by the LC_CTYPE locale of the process, the whole terminated text (from start)
// whatever count says. Null gives empty text, and so does a text with a character that the locale
// can't express.
KELP0LANG_API String ConvertString(const WChar* text, int count);
KELP0LANG_API WString ConvertString(const char* text, int count);
KELP0LANG_API WString ConvertString(const char* text, int start, int count);

}  // namespace kelp

// By the units, so that equal texts have equal hashes.
template <>
struct std::hash<kelp::String> {
  std::size_t operator()(const kelp::String& text) const noexcept {
    return std::hash<std::string_view>()({text.c_str(), text.length()});
  }
};
template <>
struct std::hash<kelp::WString> {
  std::size_t operator()(const kelp::WString& text) const noexcept {
    using View = std::basic_string_view<WChar>;
    return std::hash<View>()(View(text.c_str(), text.length()));
  }
};
