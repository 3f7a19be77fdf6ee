#include <string>
#include <utility>
#include <vector>

#include "kelp0lang/XmlGeneric.h"
#include "tests/TestText.h"

using kelp::WString;

namespace {

constexpr const char* kHeader = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

class Stream : public kelp::XmlWriter::IStream {
 public:
  bool Write(const void* data, std::size_t size, std::size_t* written) override {
    sizes.push_back(size);
    text.append(static_cast<const char*>(data), size);
    if (!lie) *written = size;
    return !fail;
  }
  std::string text;
  std::vector<std::size_t> sizes;
  bool fail = false;
  bool lie = false;
};

class Writer : public kelp::XmlWriter {
 public:
  using XmlWriter::append;
  using XmlWriter::XmlWriter;
};

// What a document becomes behind the header.
template <class Work>
std::string Written(Work work, bool indent = false) {
  Stream stream;
  {
    Writer writer(stream, indent, false);
    work(writer);
  }
  EXPECT_EQ(kHeader, stream.text.substr(0, std::string(kHeader).size()));
  return stream.text.substr(std::string(kHeader).size());
}

}  // namespace

TEST(XmlStreamWriter, WritesElementsInTheirForm) {
  EXPECT_EQ("<root/>\n", Written([](Writer& w) {
              w.writeStartElement("root");
              w.writeEndElement("root");
            }));
  const auto document = [](Writer& w) {
    w.writeStartElement("r");
    w.writeAttr("a", KTEXT("1"));
    w.writeAttr("b", KTEXT(""));
    w.writeStartElement("c");
    w.writeElement("d", KTEXT("x<y"));
    w.writeElement("e", KTEXT(""));
    w.writeStartElement("f");
    w.writeEndElement("f");
    w.writeEndElement("c");
    w.writeAttr("late", KTEXT("1"));
    w.writeEndElement("r");
  };
  EXPECT_EQ("<r a=\"1\" b=\"\">\n<c>\n<d>x&lt;y</d>\n<e></e>\n<f/>\n</c>\n</r>\n",
            Written(document));
  EXPECT_EQ("<r a=\"1\" b=\"\">\n <c>\n  <d>x&lt;y</d>\n  <e></e>\n  <f/>\n </c>\n</r>\n",
            Written(document, true));
}

TEST(XmlStreamWriter, EncodesText) {
  const struct {
    std::basic_string<WChar> text;
    std::string bytes;
  } kTexts[] = {{KTEXT("<>&'\""), "&lt;&gt;&amp;&apos;&quot;"},
                {KTEXT("\u00E9\u07FF\u0800\uFFFF\u0080"), "\u00E9\u07FF\u0800\uFFFF\u0080"},
                {KTEXT("\U0001F4D0\U0010FFFF"), "\U0001F4D0\U0010FFFF"},
                {KTEXT("tab\t line\n\x7F"), "tab\t line\n\x7F"},
                {{0xD83D}, "\uFFFD"},
                {{'a', 0xDCD0, 'b'}, "a\uFFFDb"},
                {{0xD83D, 'x', 0xD83D, 0xD83D, 0xDCD0}, "\uFFFDx\uFFFD\U0001F4D0"},
                {KTEXT("sixteen units ok & sixteen more of them\u00E9 and more plain text"),
                 "sixteen units ok &amp; sixteen more of them\u00E9 and more plain text"}};
  for (const auto& text : kTexts) {
    EXPECT_EQ(text.bytes, Written([&](Writer& w) { w.append(text.text.c_str()); }));
  }
  EXPECT_EQ("&lt;\u00E9\u00FFx&apos;", Written([](Writer& w) { w.append("<\xE9\xFFx'"); }));
  EXPECT_EQ("<![CDATA[&lt;]]><![CDATA[<]]>]]><&\u00E9", Written([](Writer& w) {
              w.writeCDataText(KTEXT("<"));
              w.setEnableReferenceSubstitution(false);
              w.writeCDataText(KTEXT("<]]>"));
              w.append(KTEXT("<&"));
              w.append("\xE9");
            }));
}

TEST(XmlStreamWriter, TextEndsAtItsTerminator) {
  WString cut(KTEXT("abxcd"));
  cut.SetChar(2, 0);
  EXPECT_EQ("<r a=\"ab\">ab</r>\n", Written([&](Writer& w) {
              w.writeStartElement("r");
              w.writeAttr("a", cut);
              w.writeText(cut);
              w.writeEndElement("r");
            }));
}

TEST(XmlStreamWriter, BeginsWithTheMarkWhereWanted) {
  Stream stream;
  kelp::XmlWriter writer(stream, false, true);
  EXPECT_TRUE(stream.sizes.empty());
  writer.flush();
  EXPECT_EQ(std::string("\xEF\xBB\xBF") + kHeader, stream.text);
}

// The writes are those of a writer that looks before each unit whether six bytes are free.
TEST(XmlStreamWriter, KeepsPiecesWholeAtTheEndOfTheBuffer) {
  const struct {
    const WChar* piece;
    std::size_t size;
  } kPieces[] = {{KTEXT("&"), 5}, {KTEXT("'"), 6}, {KTEXT("\U0001F4D0"), 4}, {KTEXT("x"), 1}};
  for (const auto& [piece, size] : kPieces) {
    for (std::size_t plain = 4030; plain < 4070; ++plain) {
      std::basic_string<WChar> text(plain, KTEXT('p'));
      for (int i = 0; i < 9; ++i) text += piece;
      std::vector<std::size_t> sizes;
      std::size_t used = std::string(kHeader).size();
      for (std::size_t i = 0; i < plain + 9; ++i) {
        if (used + 6 > 4096) sizes.push_back(std::exchange(used, 0));
        used += i < plain ? 1 : size;
      }
      // A name fills the buffer to its end.
      for (used += 5001; used > 4096; used -= 4096) sizes.push_back(4096);
      sizes.push_back(used);
      Stream stream;
      {
        Writer writer(stream, false, false);
        writer.append(text.c_str());
        writer.writeStartElement(std::string(5000, 'n').c_str());
      }
      EXPECT_EQ(sizes, stream.sizes) << plain << ' ' << size;
    }
  }
}

TEST(XmlStreamWriter, ToldFailuresStay) {
  for (const bool lie : {false, true}) {
    Stream stream;
    stream.lie = lie;
    stream.fail = !lie;
    Writer writer(stream, false, false);
    EXPECT_FALSE(writer.fail());
    writer.flush();
    EXPECT_TRUE(writer.fail());
    stream.lie = stream.fail = false;
    writer.writeElement("late", WString(std::basic_string<WChar>(9000, KTEXT('x')).c_str()));
    writer.flush();
    EXPECT_TRUE(writer.fail());
    EXPECT_EQ(1u, stream.sizes.size());
  }
}
