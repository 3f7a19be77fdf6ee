#include "fieldbook/points/TextSource.h"

#include <algorithm>
#include <cstring>

namespace fieldbook {
namespace {

constexpr std::size_t kBlock = 1 << 18;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr char kDosEnd = '\x1A';

TextEncoding EncodingOfMark(std::string_view bytes) {
  if (bytes.starts_with(kUtf8Mark)) return TextEncoding::Utf8WithMark;
  if (bytes.starts_with("\xFF\xFE")) return TextEncoding::Utf16Little;
  if (bytes.starts_with("\xFE\xFF")) return TextEncoding::Utf16Big;
  return TextEncoding::Utf8;
}

std::size_t MarkSize(TextEncoding encoding) {
  switch (encoding) {
    case TextEncoding::Utf8WithMark:
      return kUtf8Mark.size();
    case TextEncoding::Utf16Little:
    case TextEncoding::Utf16Big:
      return 2;
    default:
      return 0;
  }
}

void AppendCode(std::string& text, char32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  char bytes[4];
  int size = 0;
  if (code >= 0x10000) {
    bytes[size++] = static_cast<char>(0xF0 | code >> 18);
    bytes[size++] = static_cast<char>(0x80 | (code >> 12 & 0x3F));
    bytes[size++] = static_cast<char>(0x80 | (code >> 6 & 0x3F));
  } else if (code >= 0x800) {
    bytes[size++] = static_cast<char>(0xE0 | code >> 12);
    bytes[size++] = static_cast<char>(0x80 | (code >> 6 & 0x3F));
  } else {
    bytes[size++] = static_cast<char>(0xC0 | code >> 6);
  }
  bytes[size++] = static_cast<char>(0x80 | (code & 0x3F));
  text.append(bytes, static_cast<std::size_t>(size));
}

bool IsAscii(std::string_view bytes) {
  return std::none_of(bytes.begin(), bytes.end(), [](char byte) { return byte < 0; });
}

// Zero characters from a place of the text on become replacement characters.
void ReplaceZeros(std::string& text, std::size_t from) {
  if (text.find('\0', from) == text.npos) return;
  std::string replaced;
  for (const char byte : std::string_view(text).substr(from)) {
    if (byte == 0) {
      replaced += kReplacement;
    } else {
      replaced += byte;
    }
  }
  text.replace(from, text.npos, replaced);
}

}  // namespace

TextSource::TextSource(ByteSource& bytes, const Watch& watch) : m_bytes(bytes) {
  LookAtAll(watch);
  Rewind();
}

// Finds the encoding, the first line's end and whether there are zeros.
void TextSource::LookAtAll(const Watch& watch) {
  m_bytes.Rewind();
  m_block.resize(kBlock);
  std::size_t kept = 0;  // of the block before: the beginning of a character
  bool isUtf8 = true;
  char last = 0;
  bool hasLineEnd = false;
  while (const std::size_t count = m_bytes.Read(m_block.data() + kept, kBlock - kept)) {
    const std::string_view block(m_block.data(), kept + count);
    if (m_size == 0) m_encoding = EncodingOfMark(block);
    m_size += count;
    const std::string_view fresh = block.substr(kept);
    m_hasZeros = m_hasZeros || fresh.find('\0') != fresh.npos;
    if (!hasLineEnd) {
      const std::size_t end = fresh.find_first_of("\r\n");
      hasLineEnd = end != fresh.npos && (fresh[end] == '\n' || end + 1 < fresh.size());
      m_hasCrLf = hasLineEnd && fresh.substr(end, 2) == "\r\n";
    }
    last = block.back();
    if (isUtf8) {
      const std::size_t whole = WholeUtf8(block);
      kept = block.size() - whole;
      // The longest character has four bytes.
      isUtf8 = kept < 4;
      if (isUtf8) std::memmove(m_block.data(), m_block.data() + whole, kept);
    }
    if (!isUtf8) kept = 0;
    if (watch) watch(m_bytes.Size() == 0 ? 0 : static_cast<double>(m_size) / m_bytes.Size());
  }
  const bool isUtf16 =
      m_encoding == TextEncoding::Utf16Little || m_encoding == TextEncoding::Utf16Big;
  if (!isUtf16 && (!isUtf8 || kept > 0)) m_encoding = TextEncoding::Latin1;
  // The zeros of UTF-16 are halves of its units.
  if (isUtf16) m_hasZeros = m_hasCrLf = false;
  m_endsInDosMark = last == kDosEnd;
}

void TextSource::Rewind() {
  m_bytes.Rewind();
  m_read = 0;
  m_block.clear();
  m_text.clear();
  m_begin = 0;
  m_atEnd = false;
  m_number = 0;
}

double TextSource::Fraction() const {
  return m_size == 0 ? 1 : static_cast<double>(m_read) / static_cast<double>(m_size);
}

bool TextSource::Next(std::string_view& line) {
  std::size_t looked = m_begin;
  std::size_t end = FindLineEnd(looked);
  // A CR that ends what is there may be the first half of a line's end.
  while (!m_atEnd && (end == m_text.npos || end + 1 == m_text.size())) {
    if (end == m_text.npos && m_text.size() - m_begin > kLongestLine) {
      // The line is too long to be kept; its end is still looked for.
      m_text.resize(m_begin + kLongestLine + 1);
    }
    looked = end == m_text.npos ? m_text.size() : end;
    looked -= m_begin;
    Fill();
    looked += m_begin;
    end = FindLineEnd(looked);
  }
  if (m_begin == m_text.size()) return false;
  const std::size_t size = std::min(end, m_text.size()) - m_begin;
  line = std::string_view(m_text).substr(m_begin, std::min(size, kLongestLine + 1));
  m_begin += size;
  if (m_begin < m_text.size()) {
    const bool isPair = m_text[m_begin] == '\r' && m_text[m_begin + 1] == '\n';
    m_begin += isPair ? 2 : 1;
  }
  ++m_number;
  return true;
}

std::size_t TextSource::FindLineEnd(std::size_t from) const {
  // Where there are no lone CR, the search for LF alone is what takes the time.
  const char* const text = m_text.data();
  const auto* lf = static_cast<const char*>(std::memchr(text + from, '\n', m_text.size() - from));
  const std::size_t end = lf == nullptr ? m_text.size() : static_cast<std::size_t>(lf - text);
  const auto* cr = static_cast<const char*>(std::memchr(text + from, '\r', end - from));
  if (cr != nullptr) return static_cast<std::size_t>(cr - text);
  return lf == nullptr ? m_text.npos : end;
}

void TextSource::Fill() {
  m_text.erase(0, m_begin);
  m_begin = 0;
  const std::size_t kept = m_block.size();
  m_block.resize(kept + kBlock);
  const std::size_t count = m_bytes.Read(m_block.data() + kept, kBlock);
  m_block.resize(kept + count);
  const bool isFirst = m_read == 0;
  m_read += count;
  m_atEnd = count == 0 || m_read >= m_size;
  if (isFirst) m_block.erase(0, std::min(MarkSize(m_encoding), m_block.size()));
  if (m_atEnd && m_endsInDosMark && !m_block.empty() && m_block.back() == kDosEnd) {
    m_block.pop_back();
  }
  AppendBlock();
}

void TextSource::AppendBlock() {
  const std::size_t before = m_text.size();
  switch (m_encoding) {
    case TextEncoding::Utf16Little:
    case TextEncoding::Utf16Big:
      AppendUtf16();
      ReplaceZeros(m_text, before);
      return;
    case TextEncoding::Latin1:
      if (IsAscii(m_block)) {
        m_text += m_block;
      } else {
        for (const char byte : m_block) AppendCode(m_text, static_cast<unsigned char>(byte));
      }
      break;
    default:
      m_text += m_block;
  }
  m_block.clear();
  if (m_hasZeros) ReplaceZeros(m_text, before);
}

// Half a surrogate pair becomes a replacement character; a pair, or a unit, that isn't all there
// waits for the next block.
void TextSource::AppendUtf16() {
  const bool isLittle = m_encoding == TextEncoding::Utf16Little;
  const auto unitAt = [this, isLittle](std::size_t at) {
    const auto first = static_cast<unsigned char>(m_block[at]);
    const auto second = static_cast<unsigned char>(m_block[at + 1]);
    return static_cast<char32_t>(isLittle ? second << 8 | first : first << 8 | second);
  };
  std::size_t at = 0;
  for (; at + 1 < m_block.size(); at += 2) {
    const char32_t unit = unitAt(at);
    if (unit < 0xD800 || unit > 0xDFFF) {
      AppendCode(m_text, unit);
      continue;
    }
    if (unit < 0xDC00 && at + 3 >= m_block.size() && !m_atEnd) break;
    const char32_t low = unit < 0xDC00 && at + 3 < m_block.size() ? unitAt(at + 2) : 0;
    if (low < 0xDC00 || low > 0xDFFF) {
      m_text += kReplacement;
      continue;
    }
    AppendCode(m_text, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
    at += 2;
  }
  m_block.erase(0, at);
}

}  // namespace fieldbook
