// XML: a writer to any sink of bytes, and elements that can be changed.
//
//   kelp::XmlWriter writer(stream, true, false);
//   writer.writeStartElement("Point");
//   writer.writeAttr("name", KTEXT("P1"));
//   writer.writeElement("Height", height);
//   writer.writeEndElement("Point");
//   writer.flush();
//   if (writer.fail()) ...
//
//   kelp::CXmlRootDomImporter importer;
//   boost::shared_ptr<const sarn::XmlElement> root;
//   if (!importer.Import(path, KTEXT("Settings"), root) || root == nullptr) return false;
//   kelp::CGenericXmlElement settings(*root);
//   settings.m_Attribs[KTEXT("version")] = KTEXT("2");
//   kelp::CXmlGenericExporter exporter(path, settings);
//   return exporter.Export();
//
// Threads: each object belongs to one thread at a time.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <map>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"
#include "sarnutils/Memory.h"
#include "sarnutils/XmlElement.h"
#include "sarnutils/XmlParser.h"
#include "sarnutils/XmlWriter.h"

namespace kelp {

// Writes XML as UTF-8 through a fixed buffer, without building a tree and without any allocation.
// Names are 7-bit text and are written as they stand; the caller names the right element at its
// end. Nothing throws: once the stream has failed, all that follows is dropped, and fail() tells.
//
// An empty element is written as <name/>. Each element ends with a line feed; one that holds others
// has them on lines of their own, with indent one blank deeper for each level.
//
// Text ends at its terminator. A surrogate without its other half becomes U+FFFD.
class KELP0LANG_API XmlWriter {
 public:
  // Takes the bytes, at most 4096 a call. It outlives the writer.
  class IStream {
   public:
    // True, and how many bytes were written, where the call worked.
    virtual bool Write(const void* data, std::size_t size, std::size_t* written) = 0;

   protected:
    ~IStream() = default;
  };

  // Begins with the XML declaration, before it the byte-order mark where that is wanted.
  XmlWriter(IStream& stream, bool indent, bool byteOrderMark);
  // Flushes, but can't tell how that went.
  ~XmlWriter();
  XmlWriter(const XmlWriter&) = delete;
  XmlWriter& operator=(const XmlWriter&) = delete;

  void writeStartElement(const char* name);
  void writeEndElement(const char* name);
  // Ignored behind the first text or child of the element.
  void writeAttr(const char* name, const WString& value);
  // Text of the element that is open; even an empty one puts the end tag directly behind.
  void writeText(const WString& text);
  // The text as a CDATA section. References are put in as in any text unless they are switched off,
  // and a "]]>" is the caller's to avoid.
  void writeCDataText(const WString& text);
  // An element with nothing but text.
  void writeElement(const char* name, const WString& text);
  // Whether < > & ' " are written as references, which they are at first.
  void setEnableReferenceSubstitution(bool enable);

  // Hands the buffer to the stream. After a failure what is pending is dropped.
  void flush();
  // Whether the stream has failed.
  bool fail() const { return m_bFail; }

 protected:
  void writeHeader(bool byteOrderMark);
  // Text with references; narrow text is Latin-1.
  XmlWriter& append(const char* text);
  XmlWriter& append(const WChar* text);
  // 7-bit text as it stands.
  XmlWriter& appendAnsi7f(char byte);
  XmlWriter& appendAnsi7f(const char* text);
  // Flushes a full buffer.
  void checkFlush();
  // Writes the ">" that the start tag still wants.
  void closeOpenElement();
  // With indent, a blank for each level.
  void insertHeadingSpacing();

 private:
  static constexpr std::size_t kBufferSize = 4096;
  void EnsureRoomForPiece();
  void AppendUnits(const WChar* unit, const WChar* end);
  bool AppendReference(WChar unit);

  IStream* m_pStream;
  bool m_bIndent;
  char m_Buffer[kBufferSize];
  std::size_t m_nUsed = 0;
  bool m_bFail = false;
  bool m_bTagClosed = true;
  int m_nDepth = 0;
  bool m_bTextWritten = false;
  bool m_bSubstitute = true;
};

namespace detail {

// Takes memory from the allocator that is shared with sarnutils.
template <class T>
struct SarnAllocator {
  using value_type = T;
  SarnAllocator() = default;
  template <class U>
  SarnAllocator(const SarnAllocator<U>&) {}
  T* allocate(std::size_t count) { return static_cast<T*>(sarn_operator_new(count * sizeof(T))); }
  void deallocate(T* block, std::size_t) noexcept { sarn_operator_delete(block); }
  friend bool operator==(const SarnAllocator&, const SarnAllocator&) { return true; }
};

}  // namespace detail

// An element with all that it holds, as a copy of its own that can be changed. Elements of any
// depth are copied and freed without recursion.
class KELP0LANG_API CGenericXmlElement {
 public:
  CGenericXmlElement() = default;
  // Deep copies.
  CGenericXmlElement(const CGenericXmlElement& other);
  explicit CGenericXmlElement(const sarn::XmlElement& element);
  // A deep copy, which may be of one of this element's own descendants.
  CGenericXmlElement& operator=(const CGenericXmlElement& other);
  ~CGenericXmlElement();

  // The value, which may be empty, or def where the attribute is missing.
  WString GetOptAttribValue(const WString& name, const WString& def) const;

  // By name, in the order of the units. A file's own order is lost.
  std::map<WString, WString> m_Attribs;
  // Its name, and its own text.
  WString m_sTag;
  WString m_sContent;
  // In document order, made by new and owned.
  std::vector<CGenericXmlElement*, detail::SarnAllocator<CGenericXmlElement*>> m_Children;

 private:
  void CopyFrom(const sarn::XmlElement& element);
  void CopyFrom(const CGenericXmlElement& other);
  // Frees attributes and children; tag and content stay.
  void Clear() noexcept;
};

// Writes elements to a file: tags, attributes in the order of their names, structure. Text content
// isn't written.
class KELP0LANG_API CXmlGenericExporter : public ::XmlWriter {
 public:
  // The root outlives the exporter.
  CXmlGenericExporter(const WString& path, const CGenericXmlElement& root);
  ~CXmlGenericExporter() override;

  // False where the file can't be opened for writing. What goes wrong behind that isn't told; the
  // file then is as it was before.
  bool Export();

 private:
  void WriteXmlElement(const CGenericXmlElement& element, bool writeEndTag);

  const CGenericXmlElement* m_pRoot;
};

namespace detail {

// Writes an element with its children; with writeEndTag the end tag of an element that has any.
void WriteXmlElementTo(::XmlWriter& writer, const CGenericXmlElement& element, bool writeEndTag);

}  // namespace detail

// Reads a whole file into a tree.
class KELP0LANG_API CXmlRootDomImporter : public sarn::XmlExpatHybridParser {
 public:
  CXmlRootDomImporter();
  CXmlRootDomImporter(const CXmlRootDomImporter&);
  CXmlRootDomImporter& operator=(const CXmlRootDomImporter&);
  ~CXmlRootDomImporter() override;

  // The root, if its tag is rootTag. A file with another root gives that which this importer read
  // last, null if there was none, and true. False, and result as it was, where the file can't be
  // read, isn't well-formed, or is deeper than the parser goes.
  bool Import(const WString& path, const WString& rootTag,
              boost::shared_ptr<const sarn::XmlElement>& result);

  using XmlExpatHybridParser::setMaxDepth;

 protected:
  bool processXmlSaxElementStart(const sarn_text::CSarnStringT<WChar>& tag) override;
  bool processXmlSaxElementEnd(const sarn::XmlElement& element) override;

 private:
  void ImportRootDom(const boost::shared_ptr<const sarn::XmlElement>& element);

  boost::shared_ptr<const sarn::XmlElement> m_pRootDom;
};

}  // namespace kelp
