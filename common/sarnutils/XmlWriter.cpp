#include "sarnutils/XmlWriter.h"

#include <tchar.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "kelptext/Utf8.h"
#include "kelptext/XmlText.h"
#include "sarnutils/BesideFile.h"
#include "sarnutils/XmlName.h"

using WideText = std::basic_string<WChar>;

namespace {

constexpr std::size_t kFlushSize = 64 * 1024;
// An indented line of a deep element would be longer than all that stands in it.
constexpr int kMaxIndent = 32;
constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
// What the longest reference takes for one unit, "&quot;".
constexpr std::size_t kMaxUnitBytes = 6;
// Units that are looked at before more room is asked for.
constexpr std::size_t kPiece = 1024;

bool IsXmlCharacter(char32_t codePoint) {
  return codePoint >= 0x20 && codePoint != 0xFFFE && codePoint != 0xFFFF;
}

// The reference that stands for a unit, empty where the unit stands for itself. A parser takes a
// carriage return for a line feed, and in a value every white space for a blank.
template <bool isValue>
std::string_view ReferenceOf(char32_t codePoint) {
  switch (codePoint) {
    case '<':
      return "&lt;";
    case '>':
      return isValue ? "" : "&gt;";  // "]]>" can't stand in content
    case '&':
      return "&amp;";
    case '"':
      return isValue ? "&quot;" : "";
    case '\r':
      return "&#13;";
    case '\n':
      return isValue ? "&#10;" : "";
    case '\t':
      return isValue ? "&#9;" : "";
    default:
      return "";
  }
}

// What can't be replaced is better known before than after the writing.
bool IsWritable(const WideText& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes == INVALID_FILE_ATTRIBUTES ||
         (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0;
}

}  // namespace

namespace sarn::detail {

void XmlBytes::Grow(std::size_t count) {
  constexpr std::size_t kFirst = 256;
  const std::size_t capacity = std::max({kFirst, 2 * m_capacity, m_size + count});
  std::unique_ptr<char[]> bytes(new char[capacity]);
  if (m_size > 0) std::memcpy(bytes.get(), m_bytes.get(), m_size);
  m_bytes = std::move(bytes);
  m_capacity = capacity;
}

void XmlBytes::Append(const char* bytes, std::size_t count) {
  if (count == 0) return;
  std::memcpy(Reserve(count), bytes, count);
  m_size += count;
}

bool XmlBytes::AppendName(const WChar* name) {
  const std::size_t length = std::char_traits<WChar>::length(name);
  char* const begin = Reserve(3 * length);
  const std::size_t size = kelp::detail::EncodeUtf8(name, length, begin, 3 * length);
  if (!IsXmlName({begin, size})) return false;
  m_size += size;
  return true;
}

template <bool isValue>
void XmlBytes::AppendText(const WChar* text) {
  const WChar* unit = text;
  const WChar* const end = text + std::char_traits<WChar>::length(text);
  while (unit != end) {
    const std::size_t count = std::min(static_cast<std::size_t>(end - unit), kPiece);
    const std::size_t plain = kelp::detail::NarrowPlainXml(unit, count, Reserve(count));
    m_size += plain;
    unit += plain;
    if (plain == count) continue;
    const char32_t codePoint = kelp::detail::TakeXmlCodePoint(unit, end);
    const std::string_view reference = ReferenceOf<isValue>(codePoint);
    if (!reference.empty()) {
      Append(reference.data(), reference.size());
    } else if (IsXmlCharacter(codePoint) || codePoint == '\n' || codePoint == '\t') {
      m_size = static_cast<std::size_t>(kelp::detail::PutUtf8(codePoint, Reserve(kMaxUnitBytes)) -
                                        m_bytes.get());
    }
  }
}

void XmlBytes::AppendContent(const WChar* text) {
  AppendText<false>(text);
}

void XmlBytes::AppendValue(const WChar* text) {
  AppendText<true>(text);
}

void XmlBytes::AppendAttrib(const WChar* name, const WChar* value) {
  const std::size_t before = m_size;
  Append(' ');
  if (!AppendName(name)) {
    m_size = before;
    return;
  }
  Append("=\"", 2);
  AppendValue(value);
  Append('"');
}

}  // namespace sarn::detail

XmlStartTag::XmlStartTag(const WChar* tag) {
  m_bytes.Append('<');
  m_isName = m_bytes.AppendName(tag);
}

XmlWriter::XmlWriter(const WChar* path, const WChar* rootTag, sarn::IXmlLogger* logger)
    : m_path(path), m_rootTag(rootTag), m_logger(logger) {}

XmlWriter::~XmlWriter() {
  Discard();
}

bool XmlWriter::openFile() {
  Discard();
  m_bytes.Clear();
  m_depth = 0;
  m_failed = m_hasRoot = false;
  if (!IsWritable(m_path)) {
    Log(KTEXT("the file can't be written"));
    return false;
  }
  sarn::detail::ClearAwayDead(m_path);
  m_writtenPath = sarn::detail::BesideName(m_path);
  m_file.reset(_wfopen(m_writtenPath.c_str(), KTEXT("wb")));
  if (m_file == nullptr) {
    m_writtenPath.clear();
    Log(KTEXT("no file can be made there"));
    return false;
  }
  std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
  m_bytes.Append(kDeclaration.data(), kDeclaration.size());
  return true;
}

bool XmlWriter::closeFile() {
  if (m_file == nullptr) return false;
  if (m_depth == 1) writeEndTag(m_rootTag.c_str());
  const bool done = Finish();
  if (!done) Log(KTEXT("the file couldn't be written; the old one is as it was"));
  Discard();
  return done;
}

bool XmlWriter::Finish() {
  Flush();
  if (m_depth != 0 || !m_hasRoot) m_failed = true;
  if (std::fclose(m_file.release()) != 0 || m_failed) return false;
  if (!MoveFileExW(m_writtenPath.c_str(), m_path.c_str(), MOVEFILE_REPLACE_EXISTING)) return false;
  m_writtenPath.clear();
  return true;
}

void XmlWriter::Discard() {
  m_file.reset();
  if (!m_writtenPath.empty()) DeleteFileW(m_writtenPath.c_str());
  m_writtenPath.clear();
}

// "path: what"
void XmlWriter::Log(const WChar* what) const {
  if (m_logger != nullptr) m_logger->Log((m_path + KTEXT(": ") + what).c_str());
}

void XmlWriter::Flush() {
  if (m_file == nullptr) return;
  const std::size_t size = m_bytes.Size();
  if (std::fwrite(m_bytes.Data(), 1, size, m_file.get()) != size) m_failed = true;
  m_bytes.Clear();
}

// All of a start tag but its end.
void XmlWriter::BeginElement(const XmlStartTag& startTag) {
  if ((m_depth == 0 && m_hasRoot) || !startTag.m_isName) m_failed = true;
  m_hasRoot = true;
  Indent();
  m_bytes.Append(startTag.m_bytes.Data(), startTag.m_bytes.Size());
}

void XmlWriter::Indent() {
  static constexpr auto kBlanks = [] {
    std::array<char, 2 * kMaxIndent> blanks{};
    blanks.fill(' ');
    return blanks;
  }();
  const int level = std::clamp(m_depth, 0, kMaxIndent);
  m_bytes.Append(kBlanks.data(), 2 * static_cast<std::size_t>(level));
}

void XmlWriter::EndLine() {
  m_bytes.Append('\n');
  if (m_bytes.Size() >= kFlushSize) Flush();
}

void XmlWriter::writeStartTag(const WChar* tag) {
  writeStartTagWithAttribs(XmlStartTag(tag), false);
}

void XmlWriter::writeEndTag(const WChar* tag) {
  if (--m_depth < 0) m_failed = true;
  Indent();
  EndTag(tag);
}

void XmlWriter::EndTag(const WChar* tag) {
  m_bytes.Append("</", 2);
  if (!m_bytes.AppendName(tag)) m_failed = true;
  m_bytes.Append('>');
  EndLine();
}

void XmlWriter::writeStartTagWithAttrib(const WChar* tag, const WChar* name, const WChar* value,
                                        bool empty) {
  XmlStartTag startTag(tag);
  appendReqAttrib(startTag, name, value);
  writeStartTagWithAttribs(startTag, empty);
}

void XmlWriter::appendReqAttrib(XmlStartTag& startTag, const WChar* name, const WChar* value) {
  startTag.m_bytes.AppendAttrib(name, value);
}

void XmlWriter::writeStartTagWithAttribs(const XmlStartTag& startTag, bool empty) {
  BeginElement(startTag);
  if (empty) {
    m_bytes.Append("/>", 2);
  } else {
    m_bytes.Append('>');
    ++m_depth;
  }
  EndLine();
}

void XmlWriter::writeReqXmlStringElement(const WChar* tag, const WChar* text) {
  BeginElement(XmlStartTag(tag));
  m_bytes.Append('>');
  m_bytes.AppendContent(text);
  EndTag(tag);
}

void XmlWriter::writeOptXmlStringElement(const WChar* tag, const WChar* text, const WChar* def) {
  if (std::basic_string_view<WChar>(text) != def) writeReqXmlStringElement(tag, text);
}
