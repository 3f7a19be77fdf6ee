// Wide text from streams.
#include <langinfo.h>
#include <tchar.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "crt/Multibyte.h"
#include "crt/OpenStreams.h"
#include "crt/TextStream.h"

namespace {

// Has a stream for as long as one call reads from it.
class ByteSource {
 public:
  explicit ByteSource(std::FILE* file) : m_file(file) {
    flockfile(file);
    m_text = Describe(file);
  }
  ~ByteSource() { funlockfile(m_file); }
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  bool IsOfUnits() const { return m_text.kind == StreamKind::kUnits; }
  bool HasFailed() const { return ferror_unlocked(m_file) != 0; }

  // The next byte or EOF, which the stream then knows too.
  int Get() {
    if (m_text.inner == nullptr || IsAhead()) return getc_unlocked(m_file);
    const int byte = GetTextByte(m_text.inner);
    return byte != EOF ? byte : getc_unlocked(m_file);
  }

  void PutBack(const char* bytes, int count) {
    for (int i = count; i > 0; --i) std::ungetc(static_cast<unsigned char>(bytes[i - 1]), m_file);
  }

 private:
  // The stream itself holds something: bytes put back, or its end.
  bool IsAhead() const {
    return m_file->_IO_read_ptr != m_file->_IO_read_end || feof_unlocked(m_file) != 0;
  }

  std::FILE* const m_file;
  OpenStream m_text;
};

// Up to which byte the bytes of the locale are the units of the same number, wherever a character
// begins with them.
int LastPlainByte() {
  if (IsCLocale()) return 0xFF;
  return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 ? 0x7F : 0;
}

// The bytes of the character that begins with first, terminated. Gives their number, or -1 for
// bytes that are none.
int GetCharacter(ByteSource& source, int first, char (&bytes)[MB_LEN_MAX + 1]) {
  std::mbstate_t state{};
  for (int count = 0; count < MB_LEN_MAX && first != EOF; first = source.Get()) {
    bytes[count++] = static_cast<char>(first);
    bytes[count] = 0;
    const std::size_t size = std::mbrlen(&bytes[count - 1], 1, &state);
    if (size == static_cast<std::size_t>(-1)) return -1;
    if (size != static_cast<std::size_t>(-2)) return count;
  }
  return -1;
}

// Where a line ends: no room, a line feed, the end of the stream, or bytes that are no character.
enum class LineEnd { kGood, kStreamEnd, kNoCharacter };

LineEnd ReadUnits(ByteSource& source, char16_t* buffer, int room, int& length) {
  while (length < room) {
    const int low = source.Get();
    const int high = low == EOF ? EOF : source.Get();
    if (high == EOF) return LineEnd::kStreamEnd;  // half a unit is none
    buffer[length++] = static_cast<char16_t>(low | high << 8);
    if (buffer[length - 1] == '\n') break;
  }
  return LineEnd::kGood;
}

LineEnd ReadMultibyte(ByteSource& source, char16_t* buffer, int room, int& length) {
  const int lastPlain = LastPlainByte();
  while (length < room) {
    const int first = source.Get();
    if (first == EOF) return LineEnd::kStreamEnd;
    if (first <= lastPlain) {
      buffer[length++] = static_cast<char16_t>(first);
      if (first == '\n') break;
      continue;
    }
    char bytes[MB_LEN_MAX + 1];
    char16_t units[2] = {};
    const int count = GetCharacter(source, first, bytes);
    const std::size_t taken = count < 0 ? SIZE_MAX : mbstowcs(units, bytes, 2);
    if (taken > 2) return LineEnd::kNoCharacter;
    if (taken == 2 && length + 2 > room) {
      // A pair isn't torn apart: it stays for the next call.
      source.PutBack(bytes, count);
      return length > 0 ? LineEnd::kGood : LineEnd::kNoCharacter;
    }
    for (std::size_t i = 0; i < taken; ++i) buffer[length++] = units[i];
    if (units[0] == '\n') break;
  }
  return LineEnd::kGood;
}

}  // namespace

char16_t* fgetws(char16_t* buffer, int size, std::FILE* stream) {
  if (buffer == nullptr || stream == nullptr || size < 1) {
    errno = EINVAL;
    return nullptr;
  }
  ByteSource source(stream);
  int length = 0;
  const auto read = source.IsOfUnits() ? ReadUnits : ReadMultibyte;
  const LineEnd end = read(source, buffer, size - 1, length);
  if (end == LineEnd::kNoCharacter) errno = EILSEQ;
  if (end == LineEnd::kNoCharacter ||
      (end == LineEnd::kStreamEnd && (length == 0 || source.HasFailed()))) {
    return nullptr;
  }
  buffer[length] = 0;
  return buffer;
}
