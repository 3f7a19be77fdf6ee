#include "sarnutils/XmlParser.h"

#include <vector>

#include "tests/XmlTest.h"

using sarn::XmlElement;
using sarn::XmlException;
using sarn::XmlExpatHybridParser;
using ElementPtr = boost::shared_ptr<const XmlElement>;

namespace {

class Logger : public sarn::IXmlLogger {
 public:
  void Log(const WChar* message) override { text = Utf8(message); }
  std::string text;
};

// Collects what the paths "r" and "r/b" give, and all tags in the order of the file.
class Reader : public XmlExpatHybridParser {
 public:
  explicit Reader(sarn::IXmlLogger* logger = nullptr, bool skipBlankText = false,
                  const WChar* encoding = nullptr)
      : XmlExpatHybridParser(logger, skipBlankText) {
    InitParser(encoding);
  }
  bool Run(const kelp::WString& path) { return ProcessXmlFile(path.c_str(), 16, &error, &line); }
  bool RunWithRoot(const kelp::WString& path) {
    registerXmlDomCallback(&Reader::OnRoot, 1, KTEXT("r"));
    return Run(path);
  }
  bool RunWithBoth(const kelp::WString& path) {
    registerXmlDomCallback(&Reader::OnPart, 2, KTEXT("r"), KTEXT("b"));
    return RunWithRoot(path);
  }
  // What is wrong with a file, "line code text".
  std::string FailureOf(const kelp::WString& path) {
    try {
      RunWithRoot(path);
    } catch (const XmlException& failure) {
      EXPECT_EQ(line, failure.getLine());
      EXPECT_EQ(0, error.Compare(failure.getText().c_str()));
      return std::to_string(failure.getLine()) + ' ' + std::to_string(failure.getCode()) + ' ' +
             Utf8(failure.getText().c_str());
    }
    return "";
  }
  using XmlExpatHybridParser::setMaxDepth;

  std::vector<ElementPtr> roots;
  std::vector<ElementPtr> parts;
  std::string tags;
  std::string endAt;
  bool askForMore = false;
  sarn_text::CSarnStringT<WChar> error;
  int line = -1;

 protected:
  bool processXmlSaxElementStart(const sarn_text::CSarnStringT<WChar>& tag) override {
    tags += Utf8(tag.c_str());
    return Utf8(tag.c_str()) == endAt;
  }
  bool processXmlSaxElementEnd(const XmlElement& element) override {
    tags += '/' + Utf8(element.getTag().c_str());
    return '/' + Utf8(element.getTag().c_str()) == endAt;
  }

 private:
  void OnRoot(const ElementPtr& element) { roots.push_back(element); }
  void OnPart(const ElementPtr& element) {
    if (askForMore) element->getReqAttribValue(KTEXT("more"));
    parts.push_back(element);
  }
};

}  // namespace

class XmlParser : public XmlTest {};

TEST_F(XmlParser, GivesElementsAttributesAndContent) {
  Reader reader;
  const auto path = File("a.xml",
                         "<?xml version='1.0'?>\n<r z='1' a='x&#10;&lt;\xC3\xA8' e=''>one"
                         "<b n='1'/>two<!-- no --><c>in<b>deep</b></c><b n='2'><![CDATA[<&]]></b>\n"
                         "</r>");
  ASSERT_TRUE(reader.RunWithBoth(path));
  ASSERT_EQ(1u, reader.roots.size());
  ASSERT_EQ(2u, reader.parts.size());  // the deep one is on another path
  EXPECT_EQ("rb/bcb/b/cb/b/r", reader.tags);
  const XmlElement& root = *reader.roots[0];
  EXPECT_EQ("onetwo\n", Utf8(root.getReqContent()));
  std::string attribs;
  XmlElement::AttribEnumerator enumerator(root);
  for (const WChar *name, *value; enumerator.getNext(name, value);) {
    attribs += Utf8(name) + '=' + Utf8(value) + ';';
  }
  EXPECT_EQ("z=1;a=x\n<\xC3\xA8;e=;", attribs);
  EXPECT_EQ(3, root.getChildCount());
  EXPECT_EQ("c", Utf8(root.getChildAt(1)->getTag().c_str()));
  EXPECT_EQ(nullptr, root.getChildAt(3));
  EXPECT_EQ(nullptr, root.getChildAt(-1));
  EXPECT_EQ(nullptr, root.getChildAt(1)->getReqChildByTag(KTEXT("b"))->getChildAt(0));
  std::string numbers;
  XmlElement::ChildEnumerator children(root, KTEXT("b"));
  ElementPtr child;
  while (children.getNext(child)) numbers += Utf8(child->getReqAttribValue(KTEXT("n")));
  EXPECT_EQ("12", numbers);
  EXPECT_EQ(nullptr, child);
  EXPECT_EQ("<&", Utf8(reader.parts[1]->getReqContent()));
}

TEST_F(XmlParser, TellsRequiredFromOptional) {
  Reader reader;
  ASSERT_TRUE(reader.RunWithRoot(File("a.xml",
                                      "<r e='' n=' -12x' big='99999999999' low='-99999999999'"
                                      " max='2147483647' w='x' p='+7'>"
                                      "<empty/><text>t</text></r>")));
  const XmlElement& root = *reader.roots[0];
  const auto* const def = KTEXT("def");
  EXPECT_EQ("", Utf8(root.getReqAttribValue(KTEXT("e"))));
  EXPECT_EQ("", Utf8(root.getOptAttribValue(KTEXT("e"), def)));
  EXPECT_EQ(def, root.getOptAttribValue(KTEXT("E"), def));
  EXPECT_EQ("", Utf8(root.getReqChildContent(KTEXT("empty"))));
  EXPECT_EQ(def, root.getOptChildContent(KTEXT("empty"), def));
  EXPECT_EQ(def, root.getOptChildContent(KTEXT("none"), def));
  EXPECT_EQ("t", Utf8(root.getOptChildContent(KTEXT("text"), def)));
  EXPECT_EQ("t", Utf8(root.getReqChildContent(KTEXT("text"))));
  EXPECT_EQ(def, root.getOptContent(def));
  const WChar* value = def;
  EXPECT_FALSE(root.findAttribValue(KTEXT("none"), value));
  EXPECT_EQ(def, value);
  const struct {
    const WChar* name;
    int value;
  } kNumbers[] = {{KTEXT("n"), -12},
                  {KTEXT("big"), 2147483647},
                  {KTEXT("low"), -2147483647 - 1},
                  {KTEXT("max"), 2147483647},
                  {KTEXT("w"), 5},
                  {KTEXT("e"), 5},
                  {KTEXT("none"), 5},
                  {KTEXT("p"), 7}};
  for (const auto& number : kNumbers) {
    EXPECT_EQ(number.value, root.getOptAttribValueAsInt(number.name, 5)) << Utf8(number.name);
  }
  EXPECT_THROW(root.getReqAttribValue(KTEXT("none")), XmlException);
  EXPECT_THROW(root.getReqChildContent(KTEXT("none")), XmlException);
  EXPECT_THROW(root.getReqChildByTag(KTEXT("none")), XmlException);
}

// A tree lives as long as any pointer into it.
TEST_F(XmlParser, TreesOutliveTheParser) {
  ElementPtr deep;
  {
    Reader reader;
    ASSERT_TRUE(reader.RunWithRoot(File("a.xml", "<r><b><c name='x'>text</c></b></r>")));
    deep = reader.roots[0]->getChildAt(0)->getChildAt(0);
  }
  EXPECT_EQ("c x text", Utf8(deep->getTag().c_str()) + ' ' +
                            Utf8(deep->getReqAttribValue(KTEXT("name"))) + ' ' +
                            Utf8(deep->getReqContent()));
}

TEST_F(XmlParser, CallbacksCountForOneFile) {
  Reader reader;
  const auto path = File("a.xml", "<r><b/></r>");
  ASSERT_TRUE(reader.RunWithBoth(path));
  ASSERT_TRUE(reader.Run(path));
  EXPECT_EQ(1u, reader.roots.size());
  EXPECT_EQ(1u, reader.parts.size());
  Reader copy(reader);
  ASSERT_TRUE(copy.RunWithRoot(path));
  EXPECT_EQ(2u, copy.roots.size());
}

TEST_F(XmlParser, SubclassEndsTheReading) {
  for (const char* at : {"b", "/b"}) {
    Reader reader;
    reader.endAt = at;
    EXPECT_FALSE(reader.RunWithRoot(File("a.xml", "<r><b/><c/></r><wrong"))) << at;
    EXPECT_TRUE(reader.roots.empty());
    EXPECT_EQ(at[0] == '/' ? "rb/b" : "rb", reader.tags);
  }
}

TEST_F(XmlParser, BlankTextIsKeptUnlessSkipped) {
  const auto path = File("a.xml", "<r> \n\t<b> x </b></r>");
  for (const bool skip : {false, true}) {
    Reader reader(nullptr, skip);
    ASSERT_TRUE(reader.RunWithRoot(path));
    EXPECT_EQ(skip ? "" : " \n\t", Utf8(reader.roots[0]->getReqContent()));
    EXPECT_EQ(" x ", Utf8(reader.roots[0]->getReqChildContent(KTEXT("b"))));
  }
}

TEST_F(XmlParser, ReadsFourEncodings) {
  const std::string utf16("\xFF\xFE<\0r\0>\0\xE8\0<\0/\0r\0>\0", 18);
  const struct {
    std::string bytes;
    const WChar* encoding;
    const char* content;
  } kFiles[] = {{"<?xml version='1.0' encoding='UTF-8'?><r>\xC3\xA8</r>", nullptr, "\xC3\xA8"},
                {"\xEF\xBB\xBF<r>\xF0\x9F\x93\x90</r>", nullptr, "\xF0\x9F\x93\x90"},
                {"<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE8</r>", nullptr, "\xC3\xA8"},
                {"<?xml version='1.0' encoding='US-ASCII'?><r>e</r>", nullptr, "e"},
                {"<r>\xE8</r>", KTEXT("ISO-8859-1"), "\xC3\xA8"},
                {utf16, nullptr, "\xC3\xA8"}};
  for (const auto& file : kFiles) {
    Reader reader(nullptr, false, file.encoding);
    ASSERT_TRUE(reader.RunWithRoot(File("a.xml", file.bytes)));
    EXPECT_EQ(file.content, Utf8(reader.roots[0]->getReqContent()));
  }
}

TEST_F(XmlParser, FaultsEndTheParseWithTheirLine) {
  const std::string doctype = "<!DOCTYPE r [";
  std::string bomb = doctype + "<!ENTITY e0 \"0123456789\">";
  for (int i = 1; i < 12; ++i) {
    const std::string inner = "&e" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY e" + std::to_string(i) + " \"";
    for (int copy = 0; copy < 10; ++copy) bomb += inner;
    bomb += "\">";
  }
  std::string chain = doctype;
  for (int i = 0; i <= 1000; ++i) {
    chain += "<!ENTITY c" + std::to_string(i) + " \"&c" + std::to_string(i + 1) + ";\">";
  }
  const struct {
    std::string bytes;
    const char* failure;
  } kFiles[] = {
      {"<r>\n<b></r>", "2 1 mismatched tag"},
      {"", "1 1 no element found"},
      {"<r/>\n<r/>", "2 1 junk after document element"},
      {std::string("<r>\0</r>", 8), "1 1 not well-formed (invalid token)"},
      {"\n<r a='1' a='2'/>", "2 1 duplicate attribute"},
      {"<?xml version='1.0' encoding='EBCDIC'?>\n<r/>", "1 1 unknown encoding"},
      {"<?xml version='1.0' encoding='UTF-8'?>\n<r>\xE8</r>",
       "2 1 not well-formed (invalid token)"},
      {doctype + "<!ENTITY e SYSTEM 'other.txt'>]>\n<r>&e;</r>",
       "2 3 an entity is outside the file"},
      {"<!DOCTYPE r SYSTEM 'r.dtd'>\n<r>&e;</r>", "2 3 an entity isn't declared here"},
      {bomb + "]>\n<r>&e11;</r>",
       "2 1 limit on input amplification factor (from DTD and entities) "
       "breached"},
      {chain + "]>\n<r>&c0;</r>", "1 3 too many entities"},
      {Nested("r", 10001), "1 3 elements are nested too deep"},
      {std::string(1000000, '<'), "1 1 not well-formed (invalid token)"},
  };
  for (const auto& file : kFiles) {
    EXPECT_EQ(file.failure, Reader().FailureOf(File("a.xml", file.bytes)));
  }
}

TEST_F(XmlParser, EntitiesOfTheFileArePutIn) {
  std::string text = "<!DOCTYPE r [<!ENTITY c999 'deep'>";
  for (int i = 0; i < 999; ++i) {
    text += "<!ENTITY c" + std::to_string(i) + " '&c" + std::to_string(i + 1) + ";'>";
  }
  Reader reader;
  ASSERT_TRUE(reader.RunWithRoot(File("a.xml", text + "]><r a='&c0;'>&c0;</r>")));
  EXPECT_EQ("deep", Utf8(reader.roots[0]->getReqContent()));
  EXPECT_EQ("deep", Utf8(reader.roots[0]->getReqAttribValue(KTEXT("a"))));
}

TEST_F(XmlParser, DepthHasItsLimit) {
  Reader reader;
  ASSERT_TRUE(reader.RunWithRoot(File("a.xml", Nested("r", 10000))));
  reader.setMaxDepth(3);
  EXPECT_EQ("", reader.FailureOf(File("a.xml", Nested("r", 3))));
  EXPECT_EQ("1 3 elements are nested too deep", reader.FailureOf(File("a.xml", Nested("r", 4))));
}

// What a callback throws passes through, with file and line where an element lacks something.
TEST_F(XmlParser, FailuresOfCallbacksNameTheFileAndTheLine) {
  Logger logger;
  Reader reader(&logger);
  reader.askForMore = true;
  const auto path = File("a.xml", "<r>\n<b more=''/>\n<b/>\n<b/></r>");
  try {
    reader.RunWithBoth(path);
    FAIL();
  } catch (const XmlExpatHybridParser::Exception& failure) {
    EXPECT_EQ(path.Compare(failure.getFile().c_str()), 0);
    EXPECT_EQ(Utf8(path.c_str()) + ":3: b lacks the attribute more", failure.what());
    EXPECT_EQ(sarn::eXmlMissing, failure.getCode());
    EXPECT_EQ(failure.what(), logger.text);
  }
  EXPECT_EQ(1u, reader.parts.size());
  EXPECT_TRUE(reader.roots.empty());
  try {
    XmlExpatHybridParser::riseError(KTEXT("source"), 12, 10, KTEXT(""));
  } catch (const XmlException& failure) {
    EXPECT_STREQ("source:12: ", failure.what());
    EXPECT_EQ(10, failure.getCode());
  }
}

TEST_F(XmlParser, FilesThatCantBeReadGiveFalse) {
  Logger logger;
  for (const char* name : {"none.xml", "."}) {
    Reader reader(&logger);
    EXPECT_FALSE(reader.RunWithRoot(Path(name)));
    EXPECT_EQ(0, reader.line);
    EXPECT_EQ(Utf8(Path(name).c_str()) + ": " + Utf8(reader.error.c_str()), logger.text);
    EXPECT_FALSE(reader.error.IsEmpty());
  }
}

// Text of any size, over the borders of the blocks in which a file is read.
TEST_F(XmlParser, LongTextsAndManyNamesStayWhole) {
  std::string value(100000000, 'v');
  value[67108800] = '\xC3', value[67108801] = '\xA8';
  Reader reader;
  ASSERT_TRUE(reader.RunWithRoot(File("a.xml", "<r a='" + value + "'>" + "</r>")));
  EXPECT_TRUE(kelp::WString(reader.roots[0]->getReqAttribValue(KTEXT("a"))).ToUtf8() ==
              kelp::String(value.c_str()));
  std::string many = "<r>";
  for (int i = 0; i < 500; ++i) {
    many += "<n" + std::to_string(i) + " a" + std::to_string(i) + "='\xC3\xA8" +
            std::string(i * 10, 'x') + "'/>";
  }
  ASSERT_TRUE(reader.RunWithRoot(File("b.xml", many + "</r>")));
  for (int i = 0; i < 500; ++i) {
    const ElementPtr child = reader.roots[1]->getChildAt(i);
    const WChar *name, *text;
    ASSERT_TRUE(XmlElement::AttribEnumerator(*child).getNext(name, text));
    ASSERT_EQ(
        "n" + std::to_string(i) + "a" + std::to_string(i) + "\xC3\xA8" + std::string(i * 10, 'x'),
        Utf8(child->getTag().c_str()) + Utf8(name) + Utf8(text));
  }
}
