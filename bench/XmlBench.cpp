// XML of 10 MB: written element by element, read into a tree, and a tree written; layouts that
// differ.
#include <libxml/parser.h>
#include <libxml/xmlwriter.h>
#include <malloc.h>

#include <QByteArray>
#include <QXmlStreamWriter>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "bench/BenchTable.h"
#include "kelp0lang/XmlDiffManager.h"

namespace bench {
namespace {

using kelp::WString;

struct Row {
  std::string id, class_, caption, text;
};

// Some 10 MB of controls in bars of 50, as a layout has them.
const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = [] {
    std::vector<Row> made;
    for (int i = 0; i < 70000; ++i) {
      made.push_back({std::to_string(40000 + i), i % 7 == 0 ? "CXTPControlPopupEx" : "Button",
                      "Draw & measure \xC3\xA8 " + std::to_string(i),
                      "Shows the <selected> points of layer " + std::to_string(i % 90)});
    }
    return made;
  }();
  return rows;
}

// Writes the rows through a writer of any kind.
template <class Writer, class Text>
void WriteRows(Writer& writer, const std::vector<Text>& rows) {
  writer.Start("Settings");
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i % 50 == 0) writer.Start("CommandBar");
    writer.Start("Control");
    writer.Attr("Id", rows[i].id);
    writer.Attr("Class", rows[i].class_);
    writer.Attr("Caption", rows[i].caption);
    writer.Text(rows[i].text);
    writer.End("Control");
    if (i % 50 == 49 || i + 1 == rows.size()) writer.End("CommandBar");
  }
  writer.End("Settings");
}

struct WideRow {
  WString id, class_, caption, text;
};
struct QtRow {
  QString id, class_, caption, text;
};

template <class To, class Convert>
std::vector<To> ConvertRows(Convert convert) {
  std::vector<To> rows;
  for (const Row& row : Rows()) {
    rows.push_back({convert(row.id), convert(row.class_), convert(row.caption), convert(row.text)});
  }
  return rows;
}

class CountingStream : public kelp::XmlWriter::IStream {
 public:
  bool Write(const void* data, std::size_t size, std::size_t* written) override {
    m_bytes.append(static_cast<const char*>(data), size);
    *written = size;
    return true;
  }
  std::string m_bytes;
};

struct OurWriter {
  kelp::XmlWriter& writer;
  void Start(const char* name) { writer.writeStartElement(name); }
  void Attr(const char* name, const WString& value) { writer.writeAttr(name, value); }
  void Text(const WString& text) { writer.writeText(text); }
  void End(const char* name) { writer.writeEndElement(name); }
};

struct XmlLibWriter {
  xmlTextWriterPtr writer;
  static const xmlChar* As(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
  void Start(const char* name) { xmlTextWriterStartElement(writer, As(name)); }
  void Attr(const char* name, const std::string& value) {
    xmlTextWriterWriteAttribute(writer, As(name), As(value.c_str()));
  }
  void Text(const std::string& text) { xmlTextWriterWriteString(writer, As(text.c_str())); }
  void End(const char*) { xmlTextWriterEndElement(writer); }
};

struct QtWriter {
  QXmlStreamWriter& writer;
  void Start(const char* name) { writer.writeStartElement(QLatin1String(name)); }
  void Attr(const char* name, const QString& value) {
    writer.writeAttribute(QLatin1String(name), value);
  }
  void Text(const QString& text) { writer.writeCharacters(text); }
  void End(const char*) { writer.writeEndElement(); }
};

template <class Call>
Measure Repeated(Call call) {
  return [call](benchmark::State& state) mutable {
    for (auto _ : state) {
      if (call()) continue;
      state.SkipWithError("the work failed");
      break;
    }
    state.SetItemsProcessed(state.iterations());
  };
}

void AddWriting() {
  const auto wide = ConvertRows<WideRow>(
      [](const std::string& text) { return WString::ConvertFromUtf8(text.c_str()); });
  const auto qt =
      ConvertRows<QtRow>([](const std::string& text) { return QString::fromStdString(text); });
  // Into memory that is there already.
  const auto ours = [wide, stream = CountingStream()]() mutable {
    stream.m_bytes.clear();
    kelp::XmlWriter writer(stream, true, false);
    OurWriter to{writer};
    WriteRows(to, wide);
    writer.flush();
    return !writer.fail() && stream.m_bytes.size() > 9000000;
  };
  const auto xmlLib = [buffer = std::shared_ptr<xmlBuffer>(xmlBufferCreate(), xmlBufferFree)] {
    xmlBufferEmpty(buffer.get());
    const xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer.get(), 0);
    xmlTextWriterSetIndent(writer, 1);
    xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
    XmlLibWriter to{writer};
    WriteRows(to, Rows());
    xmlTextWriterEndDocument(writer);
    xmlFreeTextWriter(writer);
    return xmlBufferLength(buffer.get()) > 9000000;
  };
  const auto qtWriter = [qt, bytes = QByteArray()]() mutable {
    bytes.resize(0);
    QXmlStreamWriter writer(&bytes);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    QtWriter to{writer};
    WriteRows(to, qt);
    writer.writeEndDocument();
    return bytes.size() > 9000000;
  };
  Compare("write XML of 10 MB", Repeated(ours),
          {{"libxml2", 0.3, Repeated(xmlLib)}, {"QXmlStreamWriter", 0.3, Repeated(qtWriter)}});
}

void AddTrees(const std::filesystem::path& folder) {
  const std::string path = (folder / "layout.xml").string();
  {
    std::ofstream file(path, std::ios::binary);
    CountingStream stream;
    kelp::XmlWriter writer(stream, true, false);
    OurWriter to{writer};
    WriteRows(to, ConvertRows<WideRow>([](const std::string& text) {
                return WString::ConvertFromUtf8(text.c_str());
              }));
    writer.flush();
    file << stream.m_bytes;
  }
  const WString widePath = WString::ConvertFromUtf8(path.c_str());
  const auto import = [widePath] {
    boost::shared_ptr<const sarn::XmlElement> root;
    return kelp::CXmlRootDomImporter().Import(widePath, KTEXT("Settings"), root) && root != nullptr;
  };
  const auto xmlLib = [path] {
    const xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, XML_PARSE_HUGE);
    xmlFreeDoc(document);
    return document != nullptr;
  };
  const auto pugi = [path] {
    pugi::xml_document document;
    return static_cast<bool>(document.load_file(path.c_str()));
  };
  Compare("import a layout of 10 MB", Repeated(import),
          {{"libxml2", 1.0, Repeated(xmlLib)}, {"pugixml", 2.5, Repeated(pugi)}});

  boost::shared_ptr<const sarn::XmlElement> root;
  kelp::CXmlRootDomImporter().Import(widePath, KTEXT("Settings"), root);
  const auto tree = std::make_shared<kelp::CGenericXmlElement>(*root);
  const auto document = std::make_shared<pugi::xml_document>();
  document->load_file(path.c_str());
  const std::string output = (folder / "written.xml").string();
  const WString wideOutput = WString::ConvertFromUtf8(output.c_str());
  Compare("export a layout of 10 MB",
          Repeated([=] { return kelp::CXmlGenericExporter(wideOutput, *tree).Export(); }),
          {{"pugixml", 1.5, Repeated([=] { return document->save_file(output.c_str()); })}});
}

// A layout of one bar whose controls are in another order in each variant, some of them others.
WString WriteBar(const std::filesystem::path& folder, int count, int variant) {
  const std::string path =
      (folder / ("bar" + std::to_string(count) + '_' + std::to_string(variant))).string();
  std::ofstream file(path, std::ios::binary);
  file << "<Settings><CommandBar BarID=\"7\">";
  for (int i = 0; i < count; ++i) {
    const std::int64_t place = variant == 0 ? i : std::int64_t{i} * 7919 % count;
    if (variant != 0 && place % 10 == 3) continue;
    file << "<Control Id=\"" << place << "\" Class=\"Button\" Flags=\""
         << (variant != 0 && place % 5 == 0 ? 1 : 0) << "\"/>";
    if (variant != 0 && place % 10 == 4) file << "<Group Id=\"n" << place << "\"/>";
  }
  file << "</CommandBar></Settings>";
  return WString::ConvertFromUtf8(path.c_str());
}

Measure GenerateAndApply(const std::filesystem::path& folder, int count) {
  const WString first = WriteBar(folder, count, 0);
  const WString second = WriteBar(folder, count, 1);
  const WString diff = WString::ConvertFromUtf8((folder / "diff.xml").string().c_str());
  const WString output = WString::ConvertFromUtf8((folder / "output.xml").string().c_str());
  return Repeated([=] {
    return kelp::CXmlDiffManager().GenerateDiffFile(first, second, diff) &&
           kelp::CXmlDiffManager().ApplyDiffFile(first, diff, output);
  });
}

}  // namespace

void AddXmlWorks(const std::filesystem::path& folder) {
  AddWriting();
  AddTrees(folder);
  Compare("diff of 100,000 controls", GenerateAndApply(folder, 100000),
          {{"of 10,000", 15.0, GenerateAndApply(folder, 10000)}});
}

void PrintTreeMemory(const std::filesystem::path& folder) {
  const std::string path = (folder / "layout.xml").string();
  const auto used = [] {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
  };
  const std::size_t before = used();
  boost::shared_ptr<const sarn::XmlElement> root;
  kelp::CXmlRootDomImporter().Import(WString::ConvertFromUtf8(path.c_str()), KTEXT("Settings"),
                                     root);
  const std::size_t ours = used() - before;
  root.reset();
  const std::size_t beforePeer = used();
  const xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, XML_PARSE_HUGE);
  const std::size_t peer = used() - beforePeer;
  xmlFreeDoc(document);
  std::printf(
      "memory of the tree of a layout of %zu bytes: ours %zu, libxml2 %zu, ratio %.2f (1.0 "
      "asked)\n",
      static_cast<std::size_t>(std::filesystem::file_size(path)), ours, peer,
      static_cast<double>(ours) / static_cast<double>(peer));
}

}  // namespace bench
