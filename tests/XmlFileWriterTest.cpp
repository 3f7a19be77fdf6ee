#include "sarnutils/XmlWriter.h"

#include <chrono>

#include "kelp0lang/XmlGeneric.h"
#include "tests/XmlTest.h"

namespace {

constexpr const char* kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

class Logger : public sarn::IXmlLogger {
 public:
  void Log(const WChar* message) override { text = Utf8(message); }
  std::string text;
};

}  // namespace

class XmlFileWriter : public XmlTest {};

TEST_F(XmlFileWriter, WritesAnElementALine) {
  XmlWriter writer(Path("a.xml").c_str(), KTEXT("r"), nullptr);
  ASSERT_TRUE(writer.openFile());
  writer.writeStartTagWithAttrib(KTEXT("r"), KTEXT("v"), KTEXT("1"), false);
  writer.writeReqXmlStringElement(KTEXT("t"), KTEXT("text"));
  writer.writeOptXmlStringElement(KTEXT("o"), KTEXT("same"), KTEXT("same"));
  writer.writeOptXmlStringElement(KTEXT("o"), KTEXT("other"), KTEXT("same"));
  writer.writeStartTag(KTEXT("s"));
  XmlStartTag tag(KTEXT("e"));
  writer.appendReqAttrib(tag, KTEXT("b"), KTEXT("2"));
  writer.appendReqAttrib(tag, KTEXT("a"), KTEXT("1"));
  writer.writeStartTagWithAttribs(tag, true);
  writer.writeEndTag(KTEXT("s"));
  ASSERT_TRUE(writer.closeFile());
  EXPECT_FALSE(writer.closeFile());
  EXPECT_EQ(std::string(kHeader) +
                "<r v=\"1\">\n  <t>text</t>\n  <o>other</o>\n  <s>\n    <e b=\"2\" a=\"1\"/>\n"
                "  </s>\n</r>\n",
            Read("a.xml"));
  // An empty root needs no end.
  ASSERT_TRUE(writer.openFile());
  writer.writeStartTagWithAttrib(KTEXT("r"), KTEXT("v"), KTEXT("1"), true);
  ASSERT_TRUE(writer.closeFile());
  EXPECT_EQ(std::string(kHeader) + "<r v=\"1\"/>\n", Read("a.xml"));
  EXPECT_EQ(std::vector<std::string>{"a.xml"}, Names());
}

// Whatever is written comes back from the parser, but for what XML can't hold.
TEST_F(XmlFileWriter, ParserGivesBackWhatWasWritten) {
  std::basic_string<WChar> all;
  std::basic_string<WChar> held;
  for (unsigned unit = 1; unit < 0x10000; ++unit) {
    const bool isHalf = unit >= 0xD800 && unit < 0xE000;
    all +=
        isHalf ? std::basic_string<WChar>{WChar(unit), 'x'} : std::basic_string<WChar>{WChar(unit)};
    if (isHalf) held += KTEXT("\uFFFDx");
    if (isHalf || (unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r')) continue;
    if (unit < 0xFFFE) held += static_cast<WChar>(unit);
  }
  all += KTEXT("\U0001F4D0 ]]> \r\n\r \t");
  held += KTEXT("\U0001F4D0 ]]> \r\n\r \t");
  XmlWriter writer(Path("a.xml").c_str(), KTEXT("r"), nullptr);
  ASSERT_TRUE(writer.openFile());
  writer.writeStartTagWithAttrib(KTEXT("r"), KTEXT("v"), all.c_str(), false);
  writer.writeReqXmlStringElement(KTEXT("t"), all.c_str());
  ASSERT_TRUE(writer.closeFile());
  boost::shared_ptr<const sarn::XmlElement> root;
  ASSERT_TRUE(kelp::CXmlRootDomImporter().Import(Path("a.xml"), KTEXT("r"), root));
  EXPECT_TRUE(held == root->getReqAttribValue(KTEXT("v")));
  EXPECT_TRUE(held == root->getReqChildContent(KTEXT("t")));
}

TEST_F(XmlFileWriter, NamesThatAreNone) {
  const struct {
    const WChar* name;
    bool isName;
  } kNames[] = {{KTEXT(""), false},          {KTEXT("a b"), false},
                {KTEXT("a=\"1\" b"), false}, {KTEXT("1a"), false},
                {KTEXT("-a"), false},        {KTEXT("a>"), false},
                {KTEXT("a1-.:_Z"), true},    {KTEXT("_"), true},
                {KTEXT(":a"), true},         {KTEXT("qualit\u00E0"), true},
                {KTEXT("\u540D"), true},     {KTEXT("\u00D7"), false},
                {KTEXT("a\u2028"), false},   {KTEXT("a/"), false},
                {KTEXT(".a"), false},        {KTEXT("\u00E8>"), false},
                {KTEXT("Z9"), true},         {KTEXT("z"), true},
                {KTEXT("A"), true}};
  for (const auto& [name, isName] : kNames) {
    XmlWriter writer(Path("a.xml").c_str(), KTEXT("r"), nullptr);
    ASSERT_TRUE(writer.openFile());
    writer.writeStartTagWithAttrib(KTEXT("r"), name, KTEXT("v"), true);
    ASSERT_TRUE(writer.closeFile()) << Utf8(name);
    const std::string attrib = isName ? ' ' + Utf8(name) + "=\"v\"" : "";
    EXPECT_EQ(kHeader + ("<r" + attrib + "/>\n"), Read("a.xml"));
    XmlWriter bad(Path("b.xml").c_str(), name, nullptr);
    ASSERT_TRUE(bad.openFile());
    bad.writeStartTag(name);
    EXPECT_EQ(isName, bad.closeFile()) << Utf8(name);
  }
}

// The old file stays until a whole one takes its place.
TEST_F(XmlFileWriter, KeepsTheOldFileUntilTheNewOneIsWhole) {
  const auto path = File("a.xml", "old");
  const auto* const r = KTEXT("r");
  using Work = void (*)(XmlWriter&);
  const Work kFaults[] = {
      [](XmlWriter&) {},
      [](XmlWriter& w) { w.writeStartTag(KTEXT("r")), w.writeStartTag(KTEXT("s")); },
      [](XmlWriter& w) {
        w.writeStartTag(KTEXT("r")), w.writeEndTag(KTEXT("r")), w.writeEndTag(KTEXT("r")),
            w.writeStartTag(KTEXT("r"));
      },
      [](XmlWriter& w) {
        w.writeReqXmlStringElement(KTEXT("r"), KTEXT("")),
            w.writeReqXmlStringElement(KTEXT("r"), KTEXT(""));
      },
      [](XmlWriter& w) { w.writeStartTag(KTEXT("r")), w.writeEndTag(KTEXT("<")); }};
  for (const Work fault : kFaults) {
    Logger logger;
    XmlWriter writer(path.c_str(), r, &logger);
    ASSERT_TRUE(writer.openFile());
    fault(writer);
    EXPECT_FALSE(writer.closeFile());
    EXPECT_EQ(0u, logger.text.find(Utf8(path.c_str()) + ": "));
    EXPECT_EQ("old", Read("a.xml"));
  }
  {
    XmlWriter left(path.c_str(), r, nullptr);
    XmlWriter other(path.c_str(), r, nullptr);
    ASSERT_TRUE(left.openFile());
    ASSERT_TRUE(other.openFile());
    left.writeStartTag(r);
    other.writeReqXmlStringElement(r, KTEXT("other"));
    EXPECT_EQ("old", Read("a.xml"));
    EXPECT_TRUE(other.closeFile());
  }
  EXPECT_EQ(std::string(kHeader) + "<r>other</r>\n", Read("a.xml"));
  EXPECT_EQ(std::vector<std::string>{"a.xml"}, Names());
}

TEST_F(XmlFileWriter, FilesThatCantBeWritten) {
  Logger logger;
  m_folder.Write("locked.xml", "old");
  const auto locked = m_folder.Path() / "locked.xml";
  std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
  std::filesystem::create_directory(m_folder.Path() / "folder");
  for (const char* name : {"locked.xml", "folder", "none/a.xml"}) {
    logger.text.clear();
    XmlWriter writer(Path(name).c_str(), KTEXT("r"), &logger);
    EXPECT_FALSE(writer.openFile()) << name;
    EXPECT_EQ(0u, logger.text.find(Utf8(Path(name).c_str()) + ": ")) << name;
    EXPECT_FALSE(writer.closeFile());
  }
  EXPECT_EQ("old", Read("locked.xml"));
  std::filesystem::permissions(locked, std::filesystem::perms::owner_all);
}

// Lines of deep elements don't outgrow what stands in them.
TEST_F(XmlFileWriter, IndentsNoFurtherThanThirtyTwoLevels) {
  XmlWriter writer(Path("a.xml").c_str(), KTEXT("r"), nullptr);
  ASSERT_TRUE(writer.openFile());
  for (int level = 0; level < 40; ++level) writer.writeStartTag(KTEXT("r"));
  for (int level = 1; level < 40; ++level) writer.writeEndTag(KTEXT("r"));
  ASSERT_TRUE(writer.closeFile());
  const std::string text = Read("a.xml");
  EXPECT_NE(text.npos, text.find('\n' + std::string(62, ' ') + "<r>\n" + std::string(64, ' ') +
                                 "<r>\n" + std::string(64, ' ') + "<r>\n"));
}

// What others have left goes only where they surely can't go on with it.
TEST_F(XmlFileWriter, ClearsAwayWhatADeadWriterHasLeft) {
  const std::string own = std::to_string(GetCurrentProcessId());
  const std::string none = "2147483632";
  const struct {
    std::string name;
    int hours;
    bool stays;
  } kFiles[] = {
      {"a.xml." + none + "-1.new", 2, false},  {"a.xml." + none + "-2.new", 0, true},
      {"a.xml." + own + "-99.new", 2, true},   {"a.xml.4711.new", 2, true},
      {"a.xml." + none + "-1x.new", 2, true},  {"a.xml." + none + "-1.new.bak", 2, true},
      {"b.a.xml." + none + "-1.new", 2, true}, {"a.xml.b." + none + "-1.new", 2, true},
      {"a.xml.99999999999999-1.new", 2, true},
  };
  for (const auto& file : kFiles) {
    m_folder.Write(file.name, "half");
    const auto path = m_folder.Path() / file.name;
    std::filesystem::last_write_time(
        path, std::filesystem::last_write_time(path) - std::chrono::hours(file.hours));
  }
  XmlWriter writer(Path("a.xml").c_str(), KTEXT("r"), nullptr);
  ASSERT_TRUE(writer.openFile());
  for (const auto& file : kFiles) {
    EXPECT_EQ(std::filesystem::exists(m_folder.Path() / file.name), file.stays) << file.name;
  }
}
