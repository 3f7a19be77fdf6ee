// Writes an XML file, element by element.
//
//   XmlWriter writer(KTEXT("C:\\Ribbon\\layout.xml"), KTEXT("Settings"), nullptr);
//   if (!writer.openFile()) return false;
//   writer.writeStartTagWithAttrib(KTEXT("Settings"), KTEXT("version"), KTEXT("1.0"), false);
//   writer.writeReqXmlStringElement(KTEXT("Name"), name);
//   return writer.closeFile();
//
// UTF-8 with an XML declaration, an element a line, indented by two blanks a level (from the 33rd
// on no further). A parser gives back exactly the values and texts that were written: line feeds,
// tabs and carriage returns are written as references where a parser would turn them into something
// else. A lone surrogate becomes U+FFFD. What XML can't hold is left out: control characters, and
// an attribute whose name is none. An element with such a name makes closeFile fail.
//
// The file is written beside its target, under a name of its own, and takes the target's place in
// closeFile. Until then the old file stays: a full disk, a crash or a writer that is never closed
// leave it as it was. What a writer that was killed has left beside it goes when the target is next
// written, an hour later or more (BesideFile.h).
//
// Threads: an object belongs to one thread at a time.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"
#include "sarnutils/XmlLogger.h"

namespace sarn::detail {

// Bytes on their way out.
class SARNUTILS_API XmlBytes {
 public:
  void Append(char byte) { *Reserve(1) = byte, ++m_size; }
  void Append(const char* bytes, std::size_t count);
  // A name as it stands; false, and nothing, where it is none.
  bool AppendName(const WChar* name);
  // Text with references for what can't stand for itself, in the content of an element or in the
  // value of an attribute.
  void AppendContent(const WChar* text);
  void AppendValue(const WChar* text);
  void AppendAttrib(const WChar* name, const WChar* value);
  const char* Data() const { return m_bytes.get(); }
  std::size_t Size() const { return m_size; }
  void Clear() { m_size = 0; }

 private:
  // Where room for so many more bytes is.
  char* Reserve(std::size_t count) {
    if (m_capacity - m_size < count) Grow(count);
    return m_bytes.get() + m_size;
  }
  void Grow(std::size_t count);
  template <bool isValue>
  void AppendText(const WChar* text);

  std::unique_ptr<char[]> m_bytes;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
};

}  // namespace sarn::detail

// A start tag in the making.
class SARNUTILS_API XmlStartTag {
 public:
  explicit XmlStartTag(const WChar* tag);

 private:
  friend class XmlWriter;
  sarn::detail::XmlBytes m_bytes;  // up to the ">"
  bool m_isName;
};

class SARNUTILS_API XmlWriter {
 public:
  // The logger, which may be null, hears why openFile or closeFile fails.
  XmlWriter(const WChar* path, const WChar* rootTag, sarn::IXmlLogger* logger);
  // A file that isn't closed goes.
  virtual ~XmlWriter();
  XmlWriter(const XmlWriter&) = delete;
  XmlWriter& operator=(const XmlWriter&) = delete;

  // False where no file can be made there, or the old one mustn't be written. The caller writes the
  // root with its attributes.
  bool openFile();
  // Ends the root if it is still open, and puts the file in its place. False, and the old file
  // stays, where anything went wrong since openFile: the disk, a name, an element without its end.
  bool closeFile();

  void writeStartTag(const WChar* tag);
  void writeEndTag(const WChar* tag);
  // An empty element is closed at once and gets no end tag.
  void writeStartTagWithAttrib(const WChar* tag, const WChar* name, const WChar* value, bool empty);
  void appendReqAttrib(XmlStartTag& startTag, const WChar* name, const WChar* value);
  void writeStartTagWithAttribs(const XmlStartTag& startTag, bool empty);

  // An element with text.
  void writeReqXmlStringElement(const WChar* tag, const WChar* text);
  // Nothing where the text is the default.
  void writeOptXmlStringElement(const WChar* tag, const WChar* text, const WChar* def);

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  void BeginElement(const XmlStartTag& startTag);
  void Indent();
  void EndTag(const WChar* tag);
  void EndLine();
  void Flush();
  bool Finish();
  void Discard();
  void Log(const WChar* what) const;

  std::basic_string<WChar> m_path;
  std::basic_string<WChar> m_rootTag;
  sarn::IXmlLogger* m_logger;
  std::basic_string<WChar> m_writtenPath;  // while it is there
  std::unique_ptr<std::FILE, CloseFile> m_file;
  sarn::detail::XmlBytes m_bytes;
  int m_depth = 0;
  bool m_failed = false;
  bool m_hasRoot = false;
};
