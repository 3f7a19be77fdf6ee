#include "kelp0lang/LocaleFree.h"

#include <tchar.h>
#if __has_include(<langinfo.h>)
#include <langinfo.h>
#endif

#include <algorithm>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <type_traits>
#include <utility>

#include "kelptext/FormatEngine.h"
#include "sarnutils/CharacterWidth.h"

namespace kelp::detail {

namespace {

// A caller's buffer of at least one unit; it keeps room for the terminator.
template <class C>
class BufferSink {
 public:
  BufferSink(C* buffer, std::size_t size) : m_buffer(buffer), m_room(size - 1) {}

  bool Put(const C* units, std::size_t count) {
    if (count > m_room - m_length) return false;
    std::memcpy(m_buffer + m_length, units, count * sizeof(C));
    m_length += count;
    return true;
  }
  bool Fill(C unit, std::size_t count) {
    if (count > m_room - m_length) return false;
    std::fill_n(m_buffer + m_length, count, unit);
    m_length += count;
    return true;
  }
  template <class Other>
  int Convert(const Other*& text, C* units) {
    return sarn_text::ConvertCharacter(text, units);
  }

  // The length of the text, which is empty where printing failed.
  int Finish(bool ok) {
    ok = ok && m_length <= INT_MAX;
    m_buffer[ok ? m_length : 0] = 0;
    return ok ? static_cast<int>(m_length) : -1;
  }

 private:
  C* const m_buffer;
  const std::size_t m_room;
  std::size_t m_length = 0;
};

// Both give false where the stream takes no more; whole becomes false where it lacks a character.
// The unit behind the text is lent for a terminator.
bool Write(char* text, std::size_t size, std::FILE* file, bool&) {
  return std::fwrite(text, 1, size, file) == size;
}

// The end of what is written in one call: ASCII, which every stream has, in one piece, anything
// else character by character, so that what a stream lacks takes nothing else along.
WChar* EndOfRun(WChar* text, WChar* end) {
  const auto isAscii = [](WChar unit) { return unit > 0 && unit < 0x80; };
  if (isAscii(*text)) return std::find_if_not(text, end, isAscii);
  const bool isPair = end - text > 1 && IsHighSurrogate(*text) && IsLowSurrogate(text[1]);
  return text + (isPair ? 2 : 1);
}

bool WriteRun(const WChar* text, std::FILE* file) {
  constexpr auto kFailed = static_cast<std::wint_t>(WEOF);
  return *text == 0 ? fputwc(WChar{0}, file) != kFailed
                    : static_cast<std::wint_t>(fputws(text, file)) != kFailed;
}

bool Write(WChar* text, std::size_t size, std::FILE* file, bool& whole) {
  for (WChar* const end = text + size; text < end;) {
    WChar* const runEnd = EndOfRun(text, end);
    const WChar behind = std::exchange(*runEnd, WChar{0});
    if (!WriteRun(text, file)) {
      if (errno != EILSEQ || !WriteRun(KTEXT("?"), file)) return false;
      whole = false;
    }
    *runEnd = behind;
    text = runEnd;
  }
  return true;
}

// A stream, reached in pieces that end between characters.
template <class C>
class StreamSink {
 public:
  explicit StreamSink(std::FILE* file) : m_file(file) { _lock_file(file); }
  ~StreamSink() { _unlock_file(m_file); }
  StreamSink(const StreamSink&) = delete;
  StreamSink& operator=(const StreamSink&) = delete;

  bool Put(const C* units, std::size_t count) {
    while (count > 0) {
      const std::size_t taken = std::min(count, Room());
      std::copy_n(units, taken, m_piece + m_size);
      if (!Took(taken)) return false;
      units += taken;
      count -= taken;
    }
    return true;
  }
  bool Fill(C unit, std::size_t count) {
    while (count > 0) {
      const std::size_t taken = std::min(count, Room());
      std::fill_n(m_piece + m_size, taken, unit);
      if (!Took(taken)) return false;
      count -= taken;
    }
    return true;
  }
  template <class Other>
  int Convert(const Other*& text, C* units) {
    return sarn_text::ConvertCharacter(text, units);
  }

  // Writes the rest, even of a text that failed; gives the number of units.
  int Finish(bool ok) {
    ok = Write(m_piece, m_size, m_file, m_whole) && m_whole && ok && m_total <= INT_MAX;
    return ok ? static_cast<int>(m_total) : -1;
  }

 private:
  static constexpr std::size_t kPiece = 512;

  std::size_t Room() const { return kPiece - m_size; }

  bool Took(std::size_t count) {
    m_size += count;
    m_total += count;
    return m_size < kPiece || Flush();
  }

  // The first half of a surrogate pair waits for the second.
  bool Flush() {
    const C last = m_piece[m_size - 1];
    const bool waits = std::is_same_v<C, WChar> && IsHighSurrogate(static_cast<WChar>(last));
    const std::size_t size = waits ? m_size - 1 : m_size;
    if (!Write(m_piece, size, m_file, m_whole)) {
      m_size = 0;
      return false;
    }
    m_piece[0] = last;
    m_size = waits ? 1 : 0;
    return true;
  }

  std::FILE* const m_file;
  C m_piece[kPiece + 1];
  std::size_t m_size = 0;
  std::size_t m_total = 0;
  bool m_whole = true;
};

template <class C>
int FormatToStream(std::FILE* file, const C* format, std::va_list args) {
  if (file == nullptr || format == nullptr) return -1;
  StreamSink<C> sink(file);
  FormatEngine<C, StreamSink<C>> engine(sink, C{'.'}, args);
  return sink.Finish(engine.Run(format));
}

constinit _locale_t cLocale = nullptr;

template <class C>
int FormatToBuffer(C* buffer, std::size_t size, C point, const C* format, std::va_list args) {
  if (buffer == nullptr || size == 0) return -1;
  BufferSink<C> sink(buffer, size);
  if (format == nullptr) return sink.Finish(false);
  FormatEngine<C, BufferSink<C>> engine(sink, point, args);
  return sink.Finish(engine.Run(format));
}

// Some C libraries fill the whole record of localeconv at each call, and have a way to ask for the
// one text that takes a sixth of the time.
const char* DecimalPointText() {
#ifdef RADIXCHAR
  return nl_langinfo(RADIXCHAR);
#else
  return std::localeconv()->decimal_point;
#endif
}

}  // namespace

int FormatV(char* buffer, std::size_t size, char point, const char* format, std::va_list args) {
  return FormatToBuffer(buffer, size, point, format, args);
}

int FormatV(WChar* buffer, std::size_t size, WChar point, const WChar* format, std::va_list args) {
  return FormatToBuffer(buffer, size, point, format, args);
}

int Format(char* buffer, std::size_t size, char point, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = FormatV(buffer, size, point, format, args);
  va_end(args);
  return length;
}

int Format(WChar* buffer, std::size_t size, WChar point, const WChar* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = FormatV(buffer, size, point, format, args);
  va_end(args);
  return length;
}

int FormatFixed(WChar* buffer, double value, int decimals, WChar point) {
  static_assert(kFixedRoom < kFixedBuffer);
  const int length = WriteFixed(buffer, value, decimals, point);
  if (length >= 0) buffer[length] = 0;
  return length;
}

WChar ProcessDecimalPoint() {
  const char* text = DecimalPointText();
  WChar units[kMaxCharacterUnits];
  return sarn_text::ConvertCharacter(text, units) == 1 ? units[0] : WChar{'.'};
}

void CreateCLocale() {
  cLocale = _create_locale(LC_ALL, "C");
}

void FreeCLocale() {
  if (cLocale != nullptr) _free_locale(cLocale);
  cLocale = nullptr;
}

}  // namespace kelp::detail

using kelp::detail::FormatToStream;
using kelp::detail::FormatV;

double kelp_atof(const char* text) {
  return kelp::detail::ParseDecimal(text);
}

double kelp_wtof(const WChar* text) {
  return kelp::detail::ParseDecimal(text);
}

int kelp_sprintf(char* buffer, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = kelp_vsprintf(buffer, format, args);
  va_end(args);
  return length;
}

int kelp_vsprintf(char* buffer, const char* format, std::va_list args) {
  return FormatV(buffer, SIZE_MAX, '.', format, args);
}

int kelp_swprintf(WChar* buffer, const WChar* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = kelp_vswprintf(buffer, format, args);
  va_end(args);
  return length;
}

int kelp_vswprintf(WChar* buffer, const WChar* format, std::va_list args) {
  return FormatV(buffer, SIZE_MAX, WChar{'.'}, format, args);
}

int kelp_sprintf_s(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = FormatV(buffer, size, '.', format, args);
  va_end(args);
  return length;
}

int kelp_snwprintf(WChar* buffer, std::size_t size, const WChar* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = kelp_vsnwprintf(buffer, size, format, args);
  va_end(args);
  return length;
}

int kelp_swprintf_s(WChar* buffer, std::size_t size, const WChar* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = kelp_vsnwprintf(buffer, size, format, args);
  va_end(args);
  return length;
}

int kelp_vsnwprintf(WChar* buffer, std::size_t size, const WChar* format, std::va_list args) {
  return FormatV(buffer, size, WChar{'.'}, format, args);
}

int kelp_printf(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = kelp_vprintf(format, args);
  va_end(args);
  return length;
}

int kelp_vprintf(const char* format, std::va_list args) {
  return FormatToStream(stdout, format, args);
}

int kelp_fprintf(std::FILE* file, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = kelp_vfprintf(file, format, args);
  va_end(args);
  return length;
}

int kelp_vfprintf(std::FILE* file, const char* format, std::va_list args) {
  return FormatToStream(file, format, args);
}

int kelp_wprintf(const WChar* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = FormatToStream(stdout, format, args);
  va_end(args);
  return length;
}

int kelp_fwprintf(std::FILE* file, const WChar* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = FormatToStream(file, format, args);
  va_end(args);
  return length;
}

_locale_t kelp_get_c_locale() {
  return kelp::detail::cLocale;
}
