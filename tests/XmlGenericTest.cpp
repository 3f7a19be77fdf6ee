#include "kelp0lang/XmlGeneric.h"

#include <memory>

#include "tests/XmlTest.h"

using kelp::CGenericXmlElement;
using kelp::CXmlGenericExporter;
using kelp::CXmlRootDomImporter;
using kelp::WString;
using ElementPtr = boost::shared_ptr<const sarn::XmlElement>;

class XmlGeneric : public XmlTest {
 protected:
  CGenericXmlElement Imported(const std::string& xml) {
    ElementPtr root;
    EXPECT_TRUE(CXmlRootDomImporter().Import(File("in.xml", xml), KTEXT("r"), root));
    return CGenericXmlElement(*root);
  }
  std::string Exported(const CGenericXmlElement& element) {
    EXPECT_TRUE(CXmlGenericExporter(Path("out.xml"), element).Export());
    const std::string text = Read("out.xml");
    return text.substr(text.find('\n') + 1);
  }
};

TEST_F(XmlGeneric, CopiesAndExports) {
  CGenericXmlElement root = Imported("<r b='1' a='&quot;\n'>text<c d=''/><c><e>x</e><f/></c></r>");
  EXPECT_EQ("text", Utf8(root.m_sContent.c_str()));
  EXPECT_EQ("x", Utf8(root.m_Children[1]->m_Children[0]->m_sContent.c_str()));
  EXPECT_EQ(WString(), root.m_Children[0]->GetOptAttribValue(KTEXT("d"), KTEXT("def")));
  EXPECT_EQ(WString(KTEXT("def")), root.GetOptAttribValue(KTEXT("d"), KTEXT("def")));
  const std::string exported =
      "<r a=\"&quot; \" b=\"1\">\n  <c d=\"\"/>\n  <c>\n    <e/>\n    <f/>\n  </c>\n</r>\n";
  EXPECT_EQ(exported, Exported(root));

  CGenericXmlElement copy(root);
  root.m_Children[1]->m_Children[0]->m_sTag = KTEXT("changed");
  EXPECT_EQ(exported, Exported(copy));
  root = copy;
  const CGenericXmlElement& same = root;
  root = same;
  EXPECT_EQ(exported, Exported(root));
  EXPECT_EQ("text", Utf8(root.m_sContent.c_str()));
  root = *root.m_Children[1];
  EXPECT_EQ("<c>\n  <e/>\n  <f/>\n</c>\n", Exported(root));
  EXPECT_EQ("<r/>\n", Exported(Imported("<r/>")));
}

TEST_F(XmlGeneric, ImportsByTheTagOfTheRoot) {
  CXmlRootDomImporter importer;
  ElementPtr root;
  EXPECT_TRUE(importer.Import(File("b.xml", "<other/>"), KTEXT("r"), root));
  EXPECT_EQ(nullptr, root);
  ASSERT_TRUE(importer.Import(File("a.xml", "<r n='1'/>"), KTEXT("r"), root));
  const ElementPtr first = root;
  EXPECT_EQ("1", Utf8(root->getReqAttribValue(KTEXT("n"))));
  EXPECT_FALSE(importer.Import(Path("none.xml"), KTEXT("r"), root));
  EXPECT_FALSE(importer.Import(File("c.xml", "<r>"), KTEXT("r"), root));
  EXPECT_EQ(first, root);
  // The last root stays, and is copied with the importer.
  CXmlRootDomImporter copy(importer);
  root.reset();
  EXPECT_TRUE(copy.Import(Path("b.xml"), KTEXT("r"), root));
  EXPECT_EQ(first, root);
  CXmlRootDomImporter assigned;
  assigned = copy;
  root.reset();
  EXPECT_TRUE(assigned.Import(Path("b.xml"), KTEXT("r"), root));
  EXPECT_EQ(first, root);
  EXPECT_TRUE(importer.Import(Path("b.xml"), KTEXT("other"), root));
  EXPECT_EQ("other", Utf8(root->getTag().c_str()));
}

TEST_F(XmlGeneric, TellsWhatCantBeWritten) {
  const CGenericXmlElement root = Imported("<r/>");
  EXPECT_FALSE(CXmlGenericExporter(Path("none/a.xml"), root).Export());
}

// Neither a copy nor the end of a tree goes down into it by recursion.
TEST_F(XmlGeneric, TenThousandLevels) {
  const std::string deep = Nested("r", 10000);
  auto root = std::make_unique<CGenericXmlElement>(Imported(deep));
  auto copy = std::make_unique<CGenericXmlElement>(*root);
  root.reset();
  *copy = CGenericXmlElement(*copy->m_Children[0]);
  const std::string exported = Exported(*copy);
  std::string tags;
  for (const char c : exported) {
    if (c != ' ' && c != '\n') tags += c;
  }
  EXPECT_EQ(Nested("r", 9998).insert(3 * 9998, "<r/>"), tags);
}
