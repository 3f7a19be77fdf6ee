// Wide text from streams.
#include <langinfo.h>
#include <tchar.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "Utf16.h"
#include "crt/Multibyte.h"
#include "crt/OpenStreams.h"
#include "crt/TextStream.h"
#include "kelptext/Compiler.h"

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
    if (Beneath() == m_file) return getc_unlocked(m_file);
    const int byte = GetTextByte(m_text.inner);
    return byte != EOF ? byte : getc_unlocked(m_file);
  }

  // Takes ASCII without control characters, as far as it stands in the buffer and in whole blocks
  // in target; gives the number of units.
  int TakePrintable(char16_t* target, int room) {
    std::FILE* const file = Beneath();
    int count = 0;
    for (int taken = kBlock; taken == kBlock; count += taken) {
      if (file->_IO_read_end - file->_IO_read_ptr < kBlock || room - count < kBlock) break;
      std::copy_n(file->_IO_read_ptr, kBlock, target + count);
      taken = CountPrintable(file->_IO_read_ptr);
      file->_IO_read_ptr += taken;
    }
    return count;
  }

  void PutBack(const char* bytes, int count) {
    for (int i = count; i > 0; --i) std::ungetc(static_cast<unsigned char>(bytes[i - 1]), m_file);
  }

 private:
  static constexpr int kBlock = 8;

  // Of a block, how many bytes stand before the first one that isn't ASCII from the blank on.
  static int CountPrintable(const char* block) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    std::uint64_t bytes;
    std::memcpy(&bytes, block, sizeof(bytes));
    if constexpr (std::endian::native == std::endian::big)
      bytes = kelp::detail::ReversedBytes(bytes);
    // The top bit of each byte that ends it; above the first one a borrow may set more.
    const std::uint64_t others = (bytes | (bytes - kOnes * ' ')) & (kOnes * 0x80);
    return std::countr_zero(others) / 8;
  }

  // The stream that has the next byte: this one, if it holds bytes that were put back or has seen
  // its end, or the one beneath it.
  std::FILE* Beneath() const {
    const bool holds = m_file->_IO_read_ptr != m_file->_IO_read_end || feof_unlocked(m_file) != 0;
    return m_text.inner == nullptr || holds ? m_file : m_text.inner;
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

// The character that begins with the byte first, and its bytes. Gives their number, or -1 for bytes
// that are none.
int GetCharacter(ByteSource& source, int first, char (&bytes)[MB_LEN_MAX], wchar_t& character) {
  std::mbstate_t state{};
  for (int count = 0; count < MB_LEN_MAX && first != EOF; first = source.Get()) {
    bytes[count++] = static_cast<char>(first);
    const std::size_t size = std::mbrtowc(&character, &bytes[count - 1], 1, &state);
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
    if (lastPlain > 0) length += source.TakePrintable(buffer + length, room - length);
    if (length == room) break;
    const int first = source.Get();
    if (first == EOF) return LineEnd::kStreamEnd;
    if (first <= lastPlain) {
      buffer[length++] = static_cast<char16_t>(first);
      if (first == '\n') break;
      continue;
    }
    char bytes[MB_LEN_MAX];
    wchar_t character = 0;
    const int count = GetCharacter(source, first, bytes, character);
    if (count < 0) return LineEnd::kNoCharacter;
    if (character >= 0x10000 && room - length < 2) {
      // A pair isn't torn apart: it stays for the next call.
      source.PutBack(bytes, count);
      return length > 0 ? LineEnd::kGood : LineEnd::kNoCharacter;
    }
    length += ToUtf16(static_cast<char32_t>(character), buffer + length);
    if (character == '\n') break;
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
