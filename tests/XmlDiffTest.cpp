#include "kelp0lang/XmlDiffManager.h"

#include <algorithm>
#include <cstdint>
#include <random>

#include "tests/XmlDiffModel.h"
#include "tests/XmlTest.h"

using kelp::CXmlDiffManager;
using kelp::WString;

namespace {

// The bars of a layout, in their place.
std::string Layout(const std::string& bars) {
  return "<Settings><NormalLayout><CommandBars><CommandBars>" + bars +
         "</CommandBars></CommandBars></NormalLayout></Settings>";
}

// Rules without the white space between elements, and without what is the same in all.
std::string Squeezed(std::string text) {
  text.erase(0, text.find('\n') + 1);
  for (const char* part : {"\n", "  ", "<RibbonDiffRules version=\"1.0\">", "</RibbonDiffRules>",
                           "Settings -1 NormalLayout -1 CommandBars -1 CommandBars -1"}) {
    for (std::size_t at; (at = text.find(part)) != text.npos;)
      text.erase(at, std::string(part).size());
  }
  return text;
}

std::string Rule(const std::string& type, const std::string& path, const std::string& rest) {
  return "<Rule type=\"" + type + "\"><ParentTags>" + path + "</ParentTags>" + rest + "</Rule>";
}

std::string RuleFile(const std::string& rules) {
  return "<RibbonDiffRules><OrigFile>o</OrigFile><Rules>" + rules + "</Rules></RibbonDiffRules>";
}

}  // namespace

class XmlDiff : public XmlTest {
 protected:
  // The rules that turn one layout into the other.
  std::string Rules(const std::string& first, const std::string& second) {
    CXmlDiffManager manager;
    EXPECT_TRUE(manager.GenerateDiffFile(File("first.old.xml", first), File("second.xml", second),
                                         Path("diff.xml")));
    const std::string text = Squeezed(Read("diff.xml"));
    const std::string begin = "<OrigFile>first.old</OrigFile><Rules>";
    EXPECT_EQ(0u, text.find(begin));
    return text.substr(begin.size(), text.size() - begin.size() - std::string("</Rules>").size());
  }
  // The bars of a layout behind the rules.
  std::string Applied(const std::string& bars, const std::string& rules) {
    CXmlDiffManager manager;
    EXPECT_TRUE(manager.ApplyDiffFile(File("layout.xml", Layout(bars)), File("rules.xml", rules),
                                      Path("out.xml")));
    std::string text = Squeezed(Read("out.xml"));
    const std::string around = Layout("");
    const std::size_t middle = around.find("</");
    if (text.size() < around.size()) return text;
    return text.substr(middle, text.size() - around.size());
  }
};

TEST_F(XmlDiff, WritesWhatDiffers) {
  const std::string popup = "<Control Class='CXTPControlPopupEx' CommandBarId='7'/>";
  const struct {
    std::string first, second, rules;
  } kPairs[] = {
      {Layout("<A Caption='x' BarID='1'/>"), Layout("<A Caption='y' BarID='1'/>"), ""},
      {Layout("<A> x\n</A>"), Layout("<A>\tx</A>"), ""},
      {Layout("<A>x</A>"), Layout("<A>x\ny</A>"),
       Rule("edit_content", " A -1", "<Content>xy</Content>")},
      {"<Settings a='1' b='2'/>", "<Settings c='3' b='4'/>",
       Rule("delete_attrib", "Settings -1", "<AttribLabel>a</AttribLabel>") +
           Rule("edit_attrib", "Settings -1",
                "<AttribLabel>b</AttribLabel><AttribValue>4</AttribValue>") +
           Rule("insert_attrib", "Settings -1",
                "<AttribLabel>c</AttribLabel><AttribValue>3</AttribValue>")},
      // The id is Id, or else BarID.
      {Layout("<B BarID='7'><C Id='5' v='1'/><D Id='' BarID='8' v='1'/></B>"),
       Layout("<B BarID='7'><C Id='5' v='2'/><D Id='' BarID='8'/></B>"),
       Rule("edit_attrib", " B 7 C 5",
            "<ElementId>5</ElementId><AttribLabel>v</AttribLabel><AttribValue>2</AttribValue>") +
           Rule("delete_attrib", " B 7 D 8",
                "<ElementId>8</ElementId><AttribLabel>v</AttribLabel>")},
      // Order, of children with an id.
      {Layout("<C Id='1'/><C Id='2'/><D/>"), Layout("<C Id='2'/><C Id='1'/><D/>"),
       Rule("sort_children", "", "<SortedChildren>2 1 -1</SortedChildren>")},
      {Layout("<C/><D/>"), Layout("<D/><C/>"), ""},
      {Layout(popup + "<C Id='1'/><D/>"), Layout("<C Id='1'/><D/>"),
       Rule("delete_child", "", "<ChildTag>Control</ChildTag>") +
           Rule("sort_children", "", "<SortedChildren>1 -1</SortedChildren>")},
      {Layout("<C Id='1'/>"), Layout("<C Id='1'/><C Id='2'><D z='1' a='2'>lost</D></C>"),
       Rule("insert_child", "", "<Element><C Id=\"2\"><D a=\"2\" z=\"1\"/></C></Element>")},
      // Two first children pair with the same second one.
      {Layout("<C v='1'/><C v='2'/>"), Layout("<C v='3'/>"),
       Rule("edit_attrib", " C -1", "<AttribLabel>v</AttribLabel><AttribValue>3</AttribValue>") +
           Rule("edit_attrib", " C -1",
                "<AttribLabel>v</AttribLabel><AttribValue>3</AttribValue>")},
      // Bars that are skipped in their list, and only there.
      {Layout(""),
       Layout("<CommandBar Class='CCtrlComboBoxListLayers'/>"
              "<CommandBar Class='CCtrlComboBoxListTooltip'/>"
              "<CommandBar Class='CXTPPopupBar' BarID='3'/>"),
       ""},
      {"<Settings/>", "<Settings><CommandBar Class='CCtrlComboBoxListLayers'/></Settings>",
       Rule("insert_child", "Settings -1",
            "<Element><CommandBar Class=\"CCtrlComboBoxListLayers\"/></Element>")},
      // A popup control and its bar are renumbered together, above all bars of the first layout.
      {Layout("<CommandBar BarID='4500'/>"),
       Layout("<CommandBar BarID='4500'/><B BarID='9'/><C CommandBarId='9'/><B BarID='9' v=''/>"),
       Rule("insert_child", "", "<Element><B BarID=\"9\"/></Element>") +
           Rule("insert_child", "", "<Element><C CommandBarId=\"5500\"/></Element>") +
           Rule("insert_child", "", "<Element><B BarID=\"5500\" v=\"\"/></Element>")},
      // A bar is found by the number that the other layout gives it.
      {Layout(popup + "<CommandBar Class='CXTPPopupBar' BarID='7' v='1'/>"),
       Layout("<Control Class='CXTPControlPopupEx' CommandBarId='9'/>"
              "<CommandBar Class='CXTPPopupBar' BarID='9' v='2'/>"),
       Rule("edit_attrib", " CommandBar 7",
            "<ElementId>7</ElementId><AttribLabel>v</AttribLabel><AttribValue>2</AttribValue>")}};
  for (const auto& pair : kPairs) EXPECT_EQ(pair.rules, Rules(pair.first, pair.second));
  EXPECT_EQ(Rule("insert_child", "Settings -1", "<Element><C CommandBarId=\"1000\"/></Element>"),
            Rules("<Settings/>", "<Settings><C CommandBarId='9'/></Settings>"));
  EXPECT_EQ(
      Rule("insert_child", "Settings -1", "<Element><C CommandBarId=\"2147483647\"/></Element>"),
      Rules("<Settings><CommandBar BarID='2147483000'/></Settings>",
            "<Settings><CommandBar BarID='2147483000'/><C CommandBarId='9'/></Settings>"));
}

TEST_F(XmlDiff, AppliesRules) {
  const std::string bars = "<B BarID='7'><Control Id='1'/><Control Id='2'/><D/></B>";
  const std::string top = "Settings -1 NormalLayout -1 CommandBars -1 CommandBars -1";
  const auto insert = [&](const std::string& element) {
    return Rule("insert_child", top + " B 7", "<Element>" + element + "</Element>");
  };
  const std::string label = "<AttribLabel>v</AttribLabel>";
  const std::string value = "<AttribValue>&lt;1</AttribValue>";
  const std::string kept = "<Control Id=\"1\"/><Control Id=\"2\"/><D/></B>";
  const struct {
    std::string rules, bars;
  } kCases[] = {
      {"", "<B BarID=\"7\">" + kept},
      {Rule("delete_attrib", top + " B 7", label), "<B BarID=\"7\">" + kept},
      {Rule("delete_attrib", top + " B 7", "<AttribLabel>BarID</AttribLabel>"), "<B>" + kept},
      {Rule("insert_attrib", top + " B 7", label + value), "<B BarID=\"7\" v=\"&lt;1\">" + kept},
      {Rule("edit_attrib", top + " B 7", label + value), "<B BarID=\"7\" v=\"&lt;1\">" + kept},
      {Rule("edit_attrib", top + " B 7", "<AttribLabel>a b=\"\"</AttribLabel>" + value),
       "<B BarID=\"7\">" + kept},
      // A level that isn't there is passed over, but for the last; a tag without an id is dropped.
      {Rule("edit_attrib", "Settings -1 None 5 NormalLayout -1 CommandBars -1 CommandBars -1 B 7 X",
            label + value),
       "<B BarID=\"7\" v=\"&lt;1\">" + kept},
      {Rule("edit_attrib", top + " B 8", label + value), "<B BarID=\"7\">" + kept},
      {Rule("edit_attrib", "Settings -1", label + value), "<B BarID=\"7\">" + kept},
      {Rule("edit_attrib", "", label + value), "<B BarID=\"7\">" + kept},
      {Rule("edit_attrib", "Settings 3 NormalLayout -1", label + value), "<B BarID=\"7\">" + kept},
      {Rule("delete_child", top + " B 7", "<ChildTag>Control</ChildTag><ChildId>2</ChildId>"),
       "<B BarID=\"7\"><Control Id=\"1\"/><D/></B>"},
      {Rule("delete_child", top + " B 7", "<ChildTag>Control</ChildTag>"),
       "<B BarID=\"7\"><Control Id=\"2\"/><D/></B>"},
      {Rule("delete_child", top + " B 7", "<ChildTag>D</ChildTag><ChildId>1</ChildId>"),
       "<B BarID=\"7\">" + kept},
      // Controls that the layout doesn't know aren't inserted; ones without an id are.
      {insert("<Control Id='3'><Control Id='1'/></Control>"), "<B BarID=\"7\">" + kept},
      {insert("<G><Control Id='3'/><Control Id='1'/><Control v='5'/></G>"),
       "<B BarID=\"7\"><Control Id=\"1\"/><Control Id=\"2\"/><D/>"
       "<G><Control Id=\"1\"/><Control v=\"5\"/></G></B>"},
      {insert("<G CommandBarId='999'><H CommandBarId='1000'/></G>"),
       "<B BarID=\"7\"><Control Id=\"1\"/><Control Id=\"2\"/><D/><G><H "
       "CommandBarId=\"1000\"/></G></B>"},
      {insert(""), "<B BarID=\"7\">" + kept},
      {insert("<E/><F/>"), "<B BarID=\"7\"><Control Id=\"1\"/><Control Id=\"2\"/><D/><E/></B>"},
      {Rule("sort_children", top + " B 7", "<SortedChildren>-1  9 2</SortedChildren>"),
       "<B BarID=\"7\"><D/><Control Id=\"2\"/><Control Id=\"1\"/></B>"},
      {Rule("sort_children", top + " B 7", "<SortedChildren/>"), "<B BarID=\"7\">" + kept},
      // An element goes by its new id from then on, and by its old one no more.
      {Rule("edit_attrib", top + " B 7",
            "<AttribLabel>BarID</AttribLabel><AttribValue>8</AttribValue>") +
           Rule("edit_attrib", top + " B 8", label + value) +
           Rule("delete_child", top + " B 7", "<ChildTag>D</ChildTag>"),
       "<B BarID=\"8\" v=\"&lt;1\">" + kept},
      // Text that names no type is a content; the rules before a fault count, those behind don't.
      {Rule("odd", top + " B 7", "<Content>x</Content>") +
           Rule("edit_attrib", top + " B 7", label + value) + Rule("odd", top + " B 7", "") +
           Rule("delete_child", top, "<ChildTag>B</ChildTag>"),
       "<B BarID=\"7\" v=\"&lt;1\">" + kept}};
  for (const auto& test : kCases) {
    EXPECT_EQ(test.bars, Applied(bars, RuleFile(test.rules))) << test.rules;
  }
  EXPECT_EQ("<B BarID=\"7\">" + kept, Applied(bars, "not XML"));
  // With a bar of 4500 the line is 5500.
  EXPECT_EQ(
      "<CommandBar BarID=\"4500\"/><G/><G CommandBarId=\"5500\"/>",
      Applied("<CommandBar BarID='4500'/>",
              RuleFile(Rule("insert_child", top, "<Element><G CommandBarId='5499'/></Element>") +
                       Rule("insert_child", top, "<Element><G CommandBarId='5500'/></Element>"))));
  // Without any control all with an id are unknown, until a rule gives one an id.
  EXPECT_EQ(
      "<Control Id=\"3\"/><Control Id=\"3\" v=\"\"/>",
      Applied("<Control/>",
              RuleFile(Rule("insert_child", top, "<Element><Control Id='3'/></Element>") +
                       Rule("edit_attrib", top + " Control -1",
                            "<AttribLabel>Id</AttribLabel><AttribValue>3</AttribValue>") +
                       Rule("insert_child", top, "<Element><Control Id='3' v=''/></Element>"))));
}

TEST_F(XmlDiff, TellsWhatCantBeReadOrWritten) {
  const auto good = File("good.xml", "<Settings/>");
  const auto other = File("other.xml", "<Other/>");
  const auto bad = File("bad.xml", "<Settings>");
  const auto deep = File("deep.xml", "<Settings>" + Nested("a", 1000) + "</Settings>");
  const auto rules = File("rules.xml", RuleFile(""));
  CXmlDiffManager manager;
  for (const auto& layout : {other, bad, deep, Path("none.xml")}) {
    EXPECT_FALSE(manager.GenerateDiffFile(layout, good, Path("diff.xml")));
    EXPECT_FALSE(manager.ApplyDiffFile(layout, rules, Path("out.xml")));
  }
  EXPECT_FALSE(manager.GenerateDiffFile(good, bad, Path("diff.xml")));
  EXPECT_EQ(6u, Names().size() + 1);
  EXPECT_FALSE(manager.GenerateDiffFile(good, good, Path("none/diff.xml")));
  EXPECT_FALSE(manager.ApplyDiffFile(good, rules, Path("none/out.xml")));
  EXPECT_FALSE(manager.GenerateEmptyDiffFile(Path("none/diff.xml"), KTEXT("x")));
  // A second layout with another root leaves the first one to be compared with itself.
  EXPECT_EQ("", Rules("<Settings><A/></Settings>", "<Other/>"));
  EXPECT_TRUE(manager.ApplyDiffFile(good, Path("none.xml"), Path("out.xml")));
}

TEST_F(XmlDiff, NamesTheFirstLayout) {
  CXmlDiffManager manager;
  WString name(KTEXT("as it was"));
  ASSERT_TRUE(manager.GenerateEmptyDiffFile(Path("diff.xml"), KTEXT("<layout> 1")));
  EXPECT_EQ("<OrigFile>&lt;layout&gt; 1</OrigFile><Rules></Rules>", Squeezed(Read("diff.xml")));
  const auto nameless = File("nameless.xml", "<RibbonDiffRules/>");
  EXPECT_TRUE(manager.GetOrigName(nameless, name));
  EXPECT_FALSE(manager.GetOrigName(File("bad.xml", "<Ribb"), name));
  EXPECT_FALSE(manager.GetOrigName(Path("none.xml"), name));
  EXPECT_EQ(WString(KTEXT("as it was")), name);
  EXPECT_TRUE(manager.GetOrigName(Path("diff.xml"), name));
  EXPECT_EQ(WString(KTEXT("<layout> 1")), name);
}

TEST_F(XmlDiff, CopiesOfManagersHaveRulesOfTheirOwn) {
  const auto insert = Rule("insert_child", "Settings -1 A -1", "<Element><B/></Element>");
  CXmlDiffManager manager;
  ASSERT_TRUE(manager.ApplyDiffFile(File("layout.xml", "<Settings><A/></Settings>"),
                                    File("rules.xml", RuleFile(insert + insert)), Path("out.xml")));
  CXmlDiffManager copy(manager);
  CXmlDiffManager assigned;
  assigned = copy;
  const CXmlDiffManager& same = assigned;
  assigned = same;
  EXPECT_TRUE(assigned.GenerateEmptyDiffFile(Path("diff.xml"), KTEXT("x")));
}

TEST_F(XmlDiff, TellsWhatCameOfTheRules) {
  using Event = CXmlDiffManager::ERuleEvent;
  const std::string top = "Settings -1 NormalLayout -1 CommandBars -1 CommandBars -1";
  const std::string label = "<AttribLabel>v</AttribLabel>";
  const std::string rules =
      Rule("edit_attrib", top + " B 7", label + "<AttribValue>2</AttribValue>") +
      Rule("delete_attrib", top + " B 7", label) + Rule("delete_attrib", top + " B 7", label) +
      Rule("delete_child", top, "<ChildTag>B</ChildTag>") +
      Rule("delete_child", top, "<ChildTag>B</ChildTag>") +
      Rule("sort_children", top + " B 7", "<SortedChildren/>") +
      Rule("sort_children", "Settings -1", "<SortedChildren/>") +
      Rule("insert_child", top,
           "<Element><G CommandBarId='5'><Control Id='1'/><Control Id='2'/></G></Element>");
  const auto layout = File("layout.xml", Layout("<B BarID='7' v='1'/><Control Id='1'/>"));
  const auto diff = File("diff.xml", RuleFile(rules));
  CXmlDiffManager::TRuleEvents events;
  ASSERT_TRUE(CXmlDiffManager().CheckDiffFile(layout, diff, events));
  EXPECT_EQ(Names().size(), 2u);
  std::string told;
  for (const auto& [rule, event, text] : events) {
    told += std::to_string(rule) + '.' + std::to_string(static_cast<int>(event)) +
            text.ToUtf8().c_str() + ' ';
  }
  EXPECT_EQ(told, "0.01 1.02 4.3 5.1 6.2 7.75 7.62 ");
  static_assert(static_cast<int>(Event::eOwnBar) == 7);
  EXPECT_FALSE(CXmlDiffManager().CheckDiffFile(Path("none.xml"), diff, events));
  EXPECT_TRUE(events.empty());
}

TEST_F(XmlDiff, ReadsTheRulesBeforeAFaultAndSaysWhereItIs) {
  CXmlDiffManager manager;
  sarn_text::CSarnStringT<WChar> error;
  int line = 0;
  const std::string good = Rule("edit_content", "Settings -1", "<Content>x</Content>") + "\n";
  EXPECT_FALSE(manager.ReadDiffFile(
      File("diff.xml", RuleFile(good + good + Rule("sort_children", "", ""))), &error, &line));
  EXPECT_EQ(Utf8(error.c_str()), "Rule lacks the element SortedChildren");
  EXPECT_EQ(line, 3);
  EXPECT_EQ(manager.GetRules().size(), 2u);
  EXPECT_TRUE(manager.ReadDiffFile(File("diff.xml", RuleFile(good))));
  EXPECT_EQ(manager.GetRules().size(), 1u);
}

TEST_F(XmlDiff, AThousandLevels) {
  const auto layout = [](const char* inner) {
    std::string text = Nested("a", 998);
    return "<Settings>" + text.insert(3 * 998, inner) + "</Settings>";
  };
  const auto first = File("first.xml", layout(""));
  const auto second = File("second.xml", layout("<b Id='1'/>"));
  ASSERT_TRUE(CXmlDiffManager().GenerateDiffFile(first, second, Path("diff.xml")));
  ASSERT_TRUE(CXmlDiffManager().ApplyDiffFile(first, Path("diff.xml"), Path("out.xml")));
  EXPECT_NE(std::string::npos, Read("out.xml").find("<b Id=\"1\"/>"));
}

namespace {

// Layouts at random, small enough that tags, ids and classes meet often.
class RandomLayouts {
 public:
  explicit RandomLayouts(unsigned seed) : m_random(seed) {}

  model::NodePtr Root() {
    model::NodePtr node = Named(KTEXT("CommandBars"));
    Fill(*node, 2);
    for (const WChar* tag : {KTEXT("CommandBars"), KTEXT("NormalLayout"), KTEXT("Settings")}) {
      const model::NodePtr parent = Named(tag);
      parent->children.push_back(node);
      if (Chance(20)) Fill(*parent, 1);
      node = parent;
    }
    return node;
  }
  model::NodePtr Changed(const model::Node& node) {
    const model::NodePtr changed = node.Copy();
    Change(*changed);
    return changed;
  }

 private:
  unsigned Below(unsigned end) { return m_random() % end; }
  bool Chance(unsigned percent) { return Below(100) < percent; }
  template <std::size_t N>
  model::Text Any(const WChar* const (&texts)[N]) {
    return texts[Below(N)];
  }
  static model::NodePtr Named(const WChar* tag) {
    auto node = std::make_shared<model::Node>();
    node->tag = tag;
    return node;
  }
  model::Text Number() {
    static const WChar* const kIds[] = {KTEXT("1"),    KTEXT("2"),  KTEXT("3"),
                                        KTEXT("4"),    KTEXT("5"),  KTEXT("900"),
                                        KTEXT("1500"), KTEXT("-1"), KTEXT("")};
    return Any(kIds);
  }

  model::NodePtr Element(int depth) {
    static const WChar* const kTags[] = {KTEXT("CommandBar"), KTEXT("Control"), KTEXT("Group")};
    static const WChar* const kClasses[] = {KTEXT("CXTPPopupBar"), KTEXT("CXTPControlPopupEx"),
                                            KTEXT("CCtrlComboBoxListLayers"), KTEXT("Button")};
    const model::NodePtr node = Named(Any(kTags).c_str());
    if (Chance(60)) node->Set(KTEXT("Id"), Number());
    if (Chance(40)) node->Set(KTEXT("BarID"), Number());
    if (Chance(50)) node->Set(KTEXT("Class"), Any(kClasses));
    if (Chance(30)) node->Set(KTEXT("CommandBarId"), Number());
    if (Chance(30)) node->Set(KTEXT("Caption"), Number());
    if (Chance(30)) node->Set(KTEXT("Visible"), Number());
    if (Chance(10)) node->content = Chance(50) ? KTEXT(" a\n\tb ") : KTEXT("ab");
    if (depth > 0) Fill(*node, depth - 1);
    return node;
  }
  void Fill(model::Node& node, int depth) {
    for (unsigned count = Below(5); count > 0; --count) node.children.push_back(Element(depth));
  }

  void Change(model::Node& node) {
    auto& children = node.children;
    for (const model::NodePtr& child : children) Change(*child);
    if (node.tag == KTEXT("Control") || node.tag == KTEXT("CommandBar")) {
      for (const WChar* name : {KTEXT("Visible"), KTEXT("CommandBarId"), KTEXT("Id")}) {
        if (Chance(10)) node.Set(name, Number());
      }
    }
    if (node.tag == KTEXT("Settings") || node.tag == KTEXT("NormalLayout")) return;
    if (!children.empty() && Chance(20)) children.erase(children.begin() + Below(children.size()));
    if (Chance(20)) std::shuffle(children.begin(), children.end(), m_random);
    if (Chance(20)) children.insert(children.begin() + Below(children.size() + 1), Element(1));
  }

  std::mt19937 m_random;
};

}  // namespace

// The library and the plain model write the same bytes, for layouts that are changed and for ones
// that have nothing to do with each other.
TEST_F(XmlDiff, RandomLayoutsComeOutAsByThePlainModel) {
  const auto text = [](const WString& path) { return model::Text(path.c_str()); };
  const auto write = [](const model::Node& node, const auto& self) -> std::string {
    const auto narrow = [](const model::Text& wide) {
      return std::string(wide.begin(), wide.end());
    };
    std::string xml = '<' + narrow(node.tag);
    for (const auto& [name, value] : node.attribs)
      xml += ' ' + narrow(name) + "='" + narrow(value) + '\'';
    xml += '>' + narrow(node.content);
    for (const auto& child : node.children) xml += self(*child, self);
    return xml + "</" + narrow(node.tag) + '>';
  };
  for (unsigned seed = 1; seed <= 10000; ++seed) {
    RandomLayouts random(seed);
    const auto first = random.Root();
    const auto second = seed % 4 == 0 ? random.Root() : random.Changed(*first);
    const auto layout = seed % 3 == 0 ? random.Changed(*first) : first->Copy();
    model::Diff diff;
    diff.Generate(*first, *second);
    diff.Write(text(Path("model_diff.xml")), KTEXT("first"));
    ASSERT_TRUE(CXmlDiffManager().GenerateDiffFile(File("first.xml", write(*first, write)),
                                                   File("second.xml", write(*second, write)),
                                                   Path("diff.xml")));
    ASSERT_EQ(Read("model_diff.xml"), Read("diff.xml")) << seed;
    ASSERT_TRUE(CXmlDiffManager().ApplyDiffFile(File("layout.xml", write(*layout, write)),
                                                Path("diff.xml"), Path("out.xml")));
    diff.Apply(*layout);
    model::Export(*layout, text(Path("model_out.xml")));
    ASSERT_EQ(Read("model_out.xml"), Read("out.xml")) << seed;
  }
}
