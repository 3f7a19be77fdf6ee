#include "sarnutils/XmlParser.h"

#include <expat.h>
#include <tchar.h>

#include <algorithm>
#include <boost/smart_ptr/make_shared_object.hpp>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "kelptext/Utf8.h"
#include "sarnutils/XmlTreeBuilder.h"

namespace sarn {

using sarn_text::CSarnStringT;
using WideText = std::basic_string<WChar>;

namespace {

constexpr int kMaxDepth = 10000;
// Expat calls itself for an entity within an entity.
constexpr int kMaxEntities = 1000;
// What entities may make of a file: so many times its bytes, and so many bytes anyhow. Expat's own
// limits, 100 times and 8 MB, let a file of a few lines take many megabytes.
constexpr float kMaxGrowth = 5;
constexpr unsigned long long kFreeGrowth = 256 * 1024;
// Of a file that is no longer, Expat need not count the lines.
constexpr std::size_t kMaxBlock = 64 * 1024 * 1024;

std::string ToUtf8(const WChar* text) {
  const std::size_t length = std::char_traits<WChar>::length(text);
  std::string bytes(3 * length, 0);
  bytes.resize(kelp::detail::EncodeUtf8(text, length, bytes.data(), bytes.size()));
  return bytes;
}

WideText Widen(const char* ascii) {
  return WideText(ascii, ascii + std::char_traits<char>::length(ascii));
}

struct FreeParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// The bytes of a file, block by block. A block is as long as the file; where that isn't known, as
// for a pipe, it begins with a size and grows while the file goes on.
class BlockReader {
 public:
  BlockReader(std::FILE* file, int firstSize)
      : m_file(file), m_capacity(static_cast<std::size_t>(std::clamp(firstSize, 1, 1 << 20))) {
    if (std::fseek(file, 0, SEEK_END) == 0) {
      const long length = std::ftell(file);
      std::rewind(file);
      // One byte more, so that the end is seen with the first block.
      if (length > 0) m_capacity = std::min(static_cast<std::size_t>(length) + 1, kMaxBlock);
    }
    m_block = std::make_unique_for_overwrite<char[]>(m_capacity);
  }

  // False where the file can't be read.
  bool Read() {
    m_size = 0;
    for (;;) {
      m_size += std::fread(m_block.get() + m_size, 1, m_capacity - m_size, m_file);
      m_last = m_size < m_capacity;
      if (m_last) return std::ferror(m_file) == 0;
      if (m_capacity == kMaxBlock) return true;
      Grow();
    }
  }
  const char* Bytes() const { return m_block.get(); }
  int Size() const { return static_cast<int>(m_size); }
  bool IsLast() const { return m_last; }

 private:
  void Grow() {
    const std::size_t capacity = std::min(2 * m_capacity, kMaxBlock);
    auto block = std::make_unique_for_overwrite<char[]>(capacity);
    std::memcpy(block.get(), m_block.get(), m_size);
    m_block = std::move(block);
    m_capacity = capacity;
  }

  std::FILE* m_file;
  std::size_t m_capacity;
  std::unique_ptr<char[]> m_block;
  std::size_t m_size = 0;
  bool m_last = false;
};

// A pointer to what is read, as long as it is.
template <class T>
class CurrentScope {
 public:
  CurrentScope(T*& current, T* value)
      : m_current(current), m_former(std::exchange(current, value)) {}
  ~CurrentScope() { m_current = m_former; }
  CurrentScope(const CurrentScope&) = delete;
  CurrentScope& operator=(const CurrentScope&) = delete;

 private:
  T*& m_current;
  T* m_former;
};

}  // namespace

// One run over a file. Exceptions don't pass through Expat: the first one waits until it returns.
class XmlExpatHybridParser::Reading {
 public:
  Reading(XmlExpatHybridParser& owner, std::vector<Callback> callbacks)
      : m_owner(owner),
        m_expat(XML_ParserCreate(owner.m_encoding.empty() ? nullptr : owner.m_encoding.c_str())),
        m_names(boost::make_shared<detail::XmlNames>()),
        m_builder(m_names, owner.m_skipBlankText) {
    if (m_expat == nullptr) throw std::bad_alloc();
    for (Callback& callback : callbacks) m_paths.push_back({std::move(callback), 0});
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(m_expat.get(), kMaxGrowth);
    XML_SetBillionLaughsAttackProtectionActivationThreshold(m_expat.get(), kFreeGrowth);
    XML_SetUserData(m_expat.get(), this);
    XML_SetElementHandler(m_expat.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(m_expat.get(), OnText);
    XML_SetEntityDeclHandler(m_expat.get(), OnEntityDeclared);
    XML_SetSkippedEntityHandler(m_expat.get(), OnSkippedEntity);
    XML_SetExternalEntityRefHandler(m_expat.get(), OnExternalEntity);
  }

  // False where the subclass has ended the reading.
  bool Parse(const char* bytes, int size, bool isLast) {
    const XML_Status status = XML_Parse(m_expat.get(), bytes, size, isLast);
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
    if (m_ended) return false;
    if (status == XML_STATUS_OK) return true;
    const WideText text = Widen(XML_ErrorString(XML_GetErrorCode(m_expat.get())));
    throw Exception(KTEXT(""), Line(), eXmlMalformed, text.c_str());
  }
  int Line() const { return static_cast<int>(XML_GetCurrentLineNumber(m_expat.get())); }

 private:
  struct Path {
    Callback callback;
    std::size_t matched;  // tags of the path, as far as the elements now open agree with it
  };

  // Runs what a handler has to do. Expat calls handlers a little further behind a stop.
  template <class Work>
  static void Guard(void* reading, Work work) {
    auto& self = *static_cast<Reading*>(reading);
    if (self.m_failure != nullptr || self.m_ended) return;
    try {
      work(self);
    } catch (...) {
      self.m_failure = std::current_exception();
    }
    if (self.m_failure != nullptr || self.m_ended) XML_StopParser(self.m_expat.get(), XML_FALSE);
  }

  [[noreturn]] void RiseLimit(const WChar* text) const {
    throw Exception(KTEXT(""), Line(), eXmlLimit, text);
  }

  static void OnStart(void* reading, const char* tag, const char** attribs) {
    Guard(reading, [=](Reading& self) { self.Start(tag, attribs); });
  }
  static void OnEnd(void* reading, const char* tag) {
    Guard(reading, [=](Reading& self) { self.End(tag); });
  }
  static void OnText(void* reading, const char* bytes, int size) {
    auto& self = *static_cast<Reading*>(reading);
    if (!self.m_builder.IsOpen()) return;
    Guard(reading, [=](Reading& open) {
      open.m_builder.AddText({bytes, static_cast<std::size_t>(size)});
    });
  }
  static void OnEntityDeclared(void* reading, const char*, int, const char*, int, const char*,
                               const char*, const char*, const char*) {
    Guard(reading, [](Reading& self) {
      if (++self.m_entityCount > kMaxEntities) self.RiseLimit(KTEXT("too many entities"));
    });
  }
  static void OnSkippedEntity(void* reading, const char*, int isParameter) {
    if (isParameter != 0) return;
    Guard(reading, [](Reading& self) { self.RiseLimit(KTEXT("an entity isn't declared here")); });
  }
  static int OnExternalEntity(XML_Parser expat, const char*, const char*, const char*,
                              const char*) {
    Guard(XML_GetUserData(expat),
          [](Reading& self) { self.RiseLimit(KTEXT("an entity is outside the file")); });
    return XML_STATUS_ERROR;
  }

  void Start(const char* tag, const char** attribs) {
    if (++m_depth > m_owner.m_maxDepth) RiseLimit(KTEXT("elements are nested too deep"));
    const detail::XmlName* const name = m_names->Find(tag);
    if (Match(tag) || m_builder.IsOpen()) m_builder.Start(name, attribs);
    m_ended = m_owner.processXmlSaxElementStart(*name);
  }

  // Takes a tag into the paths that it goes on with; whether one of them ends with it.
  bool Match(const char* tag) {
    bool isEnd = false;
    const auto depth = static_cast<std::size_t>(m_depth);
    for (auto& [callback, matched] : m_paths) {
      const std::vector<std::string>& path = callback.path;
      if (matched != depth - 1 || depth > path.size() || path[depth - 1] != tag) continue;
      matched = depth;
      isEnd = isEnd || depth == path.size();
    }
    return isEnd;
  }

  void End(const char* tag) {
    if (m_builder.IsOpen()) {
      const boost::shared_ptr<const XmlElement> element = m_builder.End();
      CallBack(element);
      m_ended = m_owner.processXmlSaxElementEnd(*element);
    } else {
      m_ended = m_owner.processXmlSaxElementEnd(m_builder.Bare(m_names->Find(tag)));
    }
    const auto depth = static_cast<std::size_t>(m_depth--);
    for (Path& path : m_paths) path.matched = std::min(path.matched, depth - 1);
  }

  void CallBack(const boost::shared_ptr<const XmlElement>& element) {
    const auto depth = static_cast<std::size_t>(m_depth);
    for (const auto& [callback, matched] : m_paths) {
      if (matched == depth && depth == callback.path.size()) (m_owner.*callback.function)(element);
    }
  }

  XmlExpatHybridParser& m_owner;
  std::unique_ptr<XML_ParserStruct, FreeParser> m_expat;
  boost::shared_ptr<detail::XmlNames> m_names;
  detail::XmlTreeBuilder m_builder;
  std::vector<Path> m_paths;
  int m_depth = 0;
  int m_entityCount = 0;
  std::exception_ptr m_failure;
  bool m_ended = false;
};

XmlExpatHybridParser::XmlExpatHybridParser(IXmlLogger* logger, bool skipBlankText)
    : m_logger(logger), m_skipBlankText(skipBlankText), m_maxDepth(kMaxDepth) {}

XmlExpatHybridParser::XmlExpatHybridParser(const XmlExpatHybridParser&) = default;
XmlExpatHybridParser& XmlExpatHybridParser::operator=(const XmlExpatHybridParser&) = default;
XmlExpatHybridParser::~XmlExpatHybridParser() = default;

bool XmlExpatHybridParser::processXmlSaxElementStart(const CSarnStringT<WChar>&) {
  return false;
}

bool XmlExpatHybridParser::processXmlSaxElementEnd(const XmlElement&) {
  return false;
}

void XmlExpatHybridParser::riseError(const WChar* file, int line, int code, const WChar* text) {
  throw Exception(file, line, code, text);
}

void XmlExpatHybridParser::InitParser(const WChar* encoding) {
  m_encoding = encoding == nullptr ? std::string() : ToUtf8(encoding);
  m_callbacks.clear();
}

void XmlExpatHybridParser::AddCallback(DomCallback function, int count,
                                       std::initializer_list<const WChar*> tags) {
  Callback& callback = m_callbacks.emplace_back(Callback{function, {}});
  for (const WChar* tag : tags) {
    if (count-- > 0) callback.path.push_back(ToUtf8(tag));
  }
}

int XmlExpatHybridParser::getCurrentLine() const {
  return m_current.reading == nullptr ? 0 : m_current.reading->Line();
}

bool XmlExpatHybridParser::ProcessXmlFile(const WChar* path, int bufferSize,
                                          CSarnStringT<WChar>* error, int* line) {
  Reading reading(*this, std::exchange(m_callbacks, {}));
  const CurrentScope<const Reading> current(m_current.reading, &reading);
  try {
    const std::unique_ptr<std::FILE, CloseFile> file(_wfopen(path, KTEXT("rb")));
    if (file == nullptr) {
      Report(path, Exception(path, 0, 0, KTEXT("the file can't be opened")), error, line);
      return false;
    }
    BlockReader blocks(file.get(), bufferSize);
    do {
      if (!blocks.Read()) {
        Report(path, Exception(path, 0, 0, KTEXT("the file can't be read")), error, line);
        return false;
      }
      if (!reading.Parse(blocks.Bytes(), blocks.Size(), blocks.IsLast())) return false;
    } while (!blocks.IsLast());
    return true;
  } catch (const Exception& failure) {
    // What an element lacks is known where the file isn't.
    const bool isHere = failure.getFile().IsEmpty();
    const Exception whole(isHere ? path : failure.getFile().c_str(),
                          isHere && failure.getLine() == 0 ? reading.Line() : failure.getLine(),
                          failure.getCode(), failure.getText().c_str());
    Report(path, whole, error, line);
    throw whole;
  }
}

// "path:12: what"
void XmlExpatHybridParser::Report(const WChar* path, const Exception& failure,
                                  CSarnStringT<WChar>* error, int* line) const {
  if (error != nullptr) *error = failure.getText();
  if (line != nullptr) *line = failure.getLine();
  if (m_logger == nullptr) return;
  WideText message(path);
  if (failure.getLine() != 0)
    message += KTEXT(':') + Widen(std::to_string(failure.getLine()).c_str());
  m_logger->Log((message + KTEXT(": ") + failure.getText().c_str()).c_str());
}

}  // namespace sarn
