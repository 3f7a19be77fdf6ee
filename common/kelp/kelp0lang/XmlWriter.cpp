#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "kelp0lang/XmlGeneric.h"
#include "kelptext/Utf8.h"
#include "kelptext/XmlText.h"

namespace kelp {
namespace {

// The longest piece that is written whole: "&apos;". No character takes as many bytes.
constexpr std::size_t kMaxPiece = 6;

constexpr auto kReferences = [] {
  std::array<const char*, 128> references{};
  references['<'] = "&lt;";
  references['>'] = "&gt;";
  references['&'] = "&amp;";
  references['\''] = "&apos;";
  references['"'] = "&quot;";
  return references;
}();

}  // namespace

XmlWriter::XmlWriter(IStream& stream, bool indent, bool byteOrderMark)
    : m_pStream(&stream), m_bIndent(indent) {
  writeHeader(byteOrderMark);
}

XmlWriter::~XmlWriter() {
  flush();
}

void XmlWriter::writeHeader(bool byteOrderMark) {
  if (byteOrderMark) appendAnsi7f("\xEF\xBB\xBF");
  appendAnsi7f("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n");
}

void XmlWriter::writeStartElement(const char* name) {
  if (!m_bTagClosed) {
    closeOpenElement();
    appendAnsi7f('\n');
  }
  insertHeadingSpacing();
  ++m_nDepth;
  appendAnsi7f('<').appendAnsi7f(name);
  m_bTagClosed = false;
}

void XmlWriter::writeEndElement(const char* name) {
  --m_nDepth;
  if (!m_bTagClosed) {
    appendAnsi7f("/>\n");
    m_bTagClosed = true;
    return;
  }
  if (!m_bTextWritten) insertHeadingSpacing();
  m_bTextWritten = false;
  appendAnsi7f("</").appendAnsi7f(name).appendAnsi7f(">\n");
}

void XmlWriter::writeAttr(const char* name, const WString& value) {
  if (m_bTagClosed) return;
  appendAnsi7f(' ').appendAnsi7f(name).appendAnsi7f("=\"");
  AppendUnits(value.c_str(), value.c_str() + value.Length());
  appendAnsi7f('"');
}

void XmlWriter::writeText(const WString& text) {
  closeOpenElement();
  AppendUnits(text.c_str(), text.c_str() + text.Length());
  m_bTextWritten = true;
}

void XmlWriter::writeCDataText(const WString& text) {
  closeOpenElement();
  appendAnsi7f("<![CDATA[").append(text.c_str()).appendAnsi7f("]]>");
  m_bTextWritten = true;
}

void XmlWriter::writeElement(const char* name, const WString& text) {
  writeStartElement(name);
  writeText(text);
  writeEndElement(name);
}

void XmlWriter::setEnableReferenceSubstitution(bool enable) {
  m_bSubstitute = enable;
}

void XmlWriter::flush() {
  if (!m_bFail && m_nUsed > 0) {
    std::size_t written = 0;
    if (!m_pStream->Write(m_Buffer, m_nUsed, &written) || written != m_nUsed) m_bFail = true;
  }
  m_nUsed = 0;
}

void XmlWriter::checkFlush() {
  if (m_nUsed == kBufferSize) flush();
}

void XmlWriter::EnsureRoomForPiece() {
  if (m_nUsed + kMaxPiece > kBufferSize) flush();
}

void XmlWriter::closeOpenElement() {
  if (m_bTagClosed) return;
  appendAnsi7f('>');
  m_bTagClosed = true;
}

void XmlWriter::insertHeadingSpacing() {
  if (!m_bIndent) return;
  for (int level = 0; level < m_nDepth; ++level) appendAnsi7f(' ');
}

XmlWriter& XmlWriter::appendAnsi7f(char byte) {
  checkFlush();
  m_Buffer[m_nUsed++] = byte;
  return *this;
}

XmlWriter& XmlWriter::appendAnsi7f(const char* text) {
  for (std::size_t rest = std::strlen(text); rest > 0;) {
    const std::size_t count = std::min(rest, kBufferSize - m_nUsed);
    std::memcpy(m_Buffer + m_nUsed, text, count);
    m_nUsed += count;
    text += count;
    rest -= count;
    checkFlush();
  }
  return *this;
}

// Where the unit has a reference, and room for it is there.
bool XmlWriter::AppendReference(WChar unit) {
  if (!m_bSubstitute || unit >= kReferences.size() || kReferences[unit] == nullptr) return false;
  for (const char* byte = kReferences[unit]; *byte != 0; ++byte) m_Buffer[m_nUsed++] = *byte;
  return true;
}

XmlWriter& XmlWriter::append(const WChar* text) {
  AppendUnits(text, text + std::char_traits<WChar>::length(text));
  return *this;
}

// Up to the end or a terminator, which isn't plain.
void XmlWriter::AppendUnits(const WChar* unit, const WChar* end) {
  while (unit != end) {
    EnsureRoomForPiece();
    // As many plain units as can follow before room for a piece is lacking.
    const std::size_t count =
        std::min(static_cast<std::size_t>(end - unit), kBufferSize - kMaxPiece + 1 - m_nUsed);
    const std::size_t plain = detail::NarrowPlainXml(unit, count, m_Buffer + m_nUsed);
    m_nUsed += plain;
    unit += plain;
    if (plain == count) continue;
    if (*unit == 0) return;
    if (AppendReference(*unit)) {
      ++unit;
    } else {
      const char* const behind =
          detail::PutUtf8(detail::TakeXmlCodePoint(unit, end), m_Buffer + m_nUsed);
      m_nUsed = static_cast<std::size_t>(behind - m_Buffer);
    }
  }
}

XmlWriter& XmlWriter::append(const char* text) {
  for (; *text != 0; ++text) {
    EnsureRoomForPiece();
    const auto byte = static_cast<unsigned char>(*text);
    if (AppendReference(static_cast<WChar>(byte))) continue;
    m_nUsed = static_cast<std::size_t>(detail::PutUtf8(byte, m_Buffer + m_nUsed) - m_Buffer);
  }
  return *this;
}

}  // namespace kelp
