// Reads XML files, as a stream of tags (SAX) and as trees of elements (DOM) in one run.
//
//   class RuleReader : public sarn::XmlExpatHybridParser {
//    public:
//     RuleReader() : XmlExpatHybridParser(nullptr, false) { InitParser(nullptr); }
//     bool Read(const WChar* path) {
//       registerXmlDomCallback(&RuleReader::OnRule, 2, KTEXT("Rules"), KTEXT("Rule"));
//       return ProcessXmlFile(path, 4096, nullptr, nullptr);
//     }
//    private:
//     void OnRule(const boost::shared_ptr<const sarn::XmlElement>& rule);
//     ...
//   };
//
// Only elements on a registered path become trees, and a tree is kept only as long as somebody
// holds it: a file of any length with small elements takes little memory.
//
// Expat parses. The encodings are UTF-8, UTF-16, ISO-8859-1 and US-ASCII. Entities that the file
// itself declares are put in, up to 1000 of them; nothing outside the file is ever opened, and a
// reference to it is an error. So are entities that make a file more than five times as long and
// longer than 256 KB, and a depth of more than 10,000 elements.
//
// Threads: an object belongs to one thread at a time.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <initializer_list>
#include <string>
#include <vector>

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"
#include "sarnutils/SarnString.h"
#include "sarnutils/XmlElement.h"
#include "sarnutils/XmlException.h"
#include "sarnutils/XmlLogger.h"

namespace sarn {

class SARNUTILS_API XmlExpatHybridParser {
 public:
  using Exception = XmlException;

  virtual ~XmlExpatHybridParser();

  // Raises an Exception in the name of a source file.
  [[noreturn]] static void riseError(const WChar* file, int line, int code, const WChar* text);

 protected:
  // The logger, which may be null, hears of each failure. With skipBlankText elements don't keep
  // text that is blanks alone.
  XmlExpatHybridParser(IXmlLogger* logger, bool skipBlankText);
  XmlExpatHybridParser(const XmlExpatHybridParser&);
  XmlExpatHybridParser& operator=(const XmlExpatHybridParser&);

  // Makes ready for reading, without callbacks. An encoding, unless null, stands above that which a
  // file names.
  void InitParser(const WChar* encoding);
  // The deepest level that an element may have; the root has 1.
  void setMaxDepth(int depth) { m_maxDepth = depth; }

  // Has a member function called with each element on a path of tags from the root, when it is
  // finished. Counts for the next file only.
  template <class Parser, class... Tags>
  void registerXmlDomCallback(void (Parser::*function)(const boost::shared_ptr<const XmlElement>&),
                              int count, const Tags*... tags) {
    AddCallback(static_cast<DomCallback>(function), count, {tags...});
  }

  // Reads a file, first in a block of bufferSize bytes. False where it can't be opened or read, or
  // the subclass has ended the reading; raises Exception for what is wrong within, and passes on
  // what callbacks throw. Unless null, error and line receive what went wrong, and where (0: in the
  // file as a whole).
  bool ProcessXmlFile(const WChar* path, int bufferSize, sarn_text::CSarnStringT<WChar>* error,
                      int* line);

  // Where the reading is, from 1: the line of the tag whose call this is. 0 outside of a reading.
  int getCurrentLine() const;

  // Called at each tag of the file. True ends the reading.
  virtual bool processXmlSaxElementStart(const sarn_text::CSarnStringT<WChar>& tag);
  // The element has its tag; if it is in a tree, all else too.
  virtual bool processXmlSaxElementEnd(const XmlElement& element);

 private:
  class Reading;
  using DomCallback = void (XmlExpatHybridParser::*)(const boost::shared_ptr<const XmlElement>&);
  struct Callback {
    DomCallback function;
    std::vector<std::string> path;  // UTF-8
  };
  // Of this object alone: a copy reads nothing.
  struct Current {
    Current() = default;
    Current(const Current&) {}
    Current& operator=(const Current&) { return *this; }
    const Reading* reading = nullptr;
  };
  void AddCallback(DomCallback function, int count, std::initializer_list<const WChar*> tags);
  void Report(const WChar* path, const Exception& failure, sarn_text::CSarnStringT<WChar>* error,
              int* line) const;

  IXmlLogger* m_logger;
  bool m_skipBlankText;
  int m_maxDepth;
  std::string m_encoding;  // empty: what a file names
  std::vector<Callback> m_callbacks;
  Current m_current;
};

}  // namespace sarn
