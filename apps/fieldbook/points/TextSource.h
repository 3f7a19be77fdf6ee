// The lines of a text file, in UTF-8, with no more of it in memory than the line at hand needs.
//
//   TextSource source(file);
//   std::string_view line;
//   while (source.Next(line)) ...
//
// The file is UTF-8, UTF-16 with its byte order mark, or Latin-1 where its bytes aren't UTF-8 from
// end to end; for that they are all looked at first. Lines end in LF, CR LF or CR. A Ctrl-Z at the
// end is that of DOS and doesn't count. Zero characters become replacement characters, since a zero
// ends a text for the library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "console/Console.h"
#include "fieldbook/points/ByteSource.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

enum class TextEncoding { Utf8, Utf8WithMark, Utf16Little, Utf16Big, Latin1 };

class TextSource {
 public:
  // The watch hears how far the first look at the bytes is.
  explicit TextSource(ByteSource& bytes, const Watch& watch = {});

  // Before the first line again.
  void Rewind();
  // A line without its end, valid until the next call; false behind the last. One that is longer
  // than kLongestLine comes as that many bytes and one more.
  bool Next(std::string_view& line);
  // That of the line that Next gave, from 1.
  int LineNumber() const { return m_number; }
  // How much of the bytes has been read, 0 to 1.
  double Fraction() const;

  TextEncoding Encoding() const { return m_encoding; }
  // How the first line ends, for writing the file as it was; LF where it doesn't.
  bool EndsLinesInCrLf() const { return m_hasCrLf; }
  bool HoldsZeros() const { return m_hasZeros; }

 private:
  void LookAtAll(const Watch& watch);
  // Reads a block and appends it to the text, as UTF-8.
  void Fill();
  void AppendBlock();
  void AppendUtf16();
  std::size_t FindLineEnd(std::size_t from) const;

  ByteSource& m_bytes;
  TextEncoding m_encoding = TextEncoding::Utf8;
  bool m_hasCrLf = false;
  bool m_hasZeros = false;
  bool m_endsInDosMark = false;
  std::uintmax_t m_size = 0;  // of all bytes
  std::uintmax_t m_read = 0;
  std::string m_block;      // raw bytes; what is left of a UTF-16 character stays at its front
  std::string m_text;       // what has been read, without the zero characters
  std::size_t m_begin = 0;  // of what hasn't been given yet
  bool m_atEnd = false;
  int m_number = 0;
};

}  // namespace fieldbook
