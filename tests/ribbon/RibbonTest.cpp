#include <gtest/gtest.h>

#include <regex>

#include "tests/console/RunProcess.h"

namespace {

namespace fs = std::filesystem;

const std::string kData = RIBBON_DATA;
const std::string kShipped = kData + "/shipped-4.2.xml";
const std::string kUsers = kData + "/users-4.2.xml";
const std::string kNext = kData + "/shipped-5.0.xml";

ProgramResult Ribbon(const std::vector<std::string>& arguments, const std::string& input = "") {
  std::vector<std::string> all = {"--lang", "en"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return RunProgram("ribbon", all, input);
}

// A bar with two controls, and the rules of a diff file for it.
std::string Layout() {
  return "<Settings>\n<Bars><CommandBar BarID='7' Visible='1'>\n<Control Id='1'/><Control Id='2'/>"
         "\n</CommandBar></Bars></Settings>\n";
}
std::string Rule(const std::string& type, const std::string& path, const std::string& rest) {
  return "<Rule type='" + type + "'><ParentTags>" + path + "</ParentTags>" + rest + "</Rule>\n";
}
std::string Diff(const std::string& rules) {
  return "<RibbonDiffRules>\n<OrigFile>o&lt;</OrigFile><Rules>\n" + rules +
         "</Rules></RibbonDiffRules>\n";
}
const std::string kBar = "Settings -1 Bars -1 CommandBar 7";
std::string Attrib(const std::string& type, const std::string& path, const std::string& name,
                   const std::string& value) {
  return Rule(type, path,
              "<AttribLabel>" + name + "</AttribLabel><AttribValue>" + value + "</AttribValue>");
}
std::string Insert(const std::string& element) {
  return Rule("insert_child", kBar, "<Element>" + element + "</Element>");
}

TEST(Ribbon, TheUsersChangesComeBack) {
  const DataFolder folder;
  const std::string diff = folder.PathOf("users.diff.xml").string();
  const std::string out = folder.PathOf("out.xml").string();
  EXPECT_EQ(Ribbon({"diff", kShipped, kUsers, "-o", diff}).status, 0);
  // A control that was moved is unknown once it has been taken out of its old place.
  const ProgramResult applied = Ribbon({"apply", kShipped, diff, "--output=" + out});
  EXPECT_EQ(applied.status, 2);
  EXPECT_EQ(applied.err, diff +
                             ":37: Settings/NormalLayout/CommandBars/CommandBars/CommandBar 121/"
                             "Controls: Control 32773 (Resection) isn't put in, the layout doesn't "
                             "know Control 32773\n");
  // But for that, the layout is the user's.
  const ProgramResult rest = Ribbon({"diff", out, kUsers, "-o", "-"});
  EXPECT_EQ(rest.status, 0);
  const std::regex rule("<Rule type=\"(\\w+)\"");
  std::vector<std::string> types;
  for (std::sregex_iterator at(rest.out.begin(), rest.out.end(), rule), end; at != end; ++at)
    types.push_back((*at)[1]);
  EXPECT_EQ(types, std::vector<std::string>{"insert_child"});
  // On the next layout the same changes, in the caption of that layout.
  const std::string next = Ribbon({"apply", kNext, diff, "-o", "-"}).out;
  EXPECT_NE(next.find("<Settings Version=\"5.0\">"), next.npos);
  EXPECT_LT(next.find("Caption=\"Level line\""), next.find("Caption=\"Station\""));
  EXPECT_EQ(next.find("Caption=\"Contour lines\""), next.npos);
}

TEST(Ribbon, ShowsRulesInWords) {
  const DataFolder folder;
  const std::string layout = folder.Write("layout.xml", Layout());
  const std::string bar = "Settings/Bars/CommandBar 7";
  const struct {
    std::string rule, words, ofLayout;
  } kCases[] = {
      {Attrib("edit_attrib", kBar, "Visible", "0"), bar + ": Visible is set to \"0\"",
       bar + ": Visible changes from \"1\" to \"0\""},
      {Attrib("insert_attrib", kBar, "a", "\xC3\xA8"), bar + ": a is set to \"\xC3\xA8\"", ""},
      {Rule("delete_attrib", kBar, "<AttribLabel>Visible</AttribLabel>"),
       bar + ": Visible is taken away", bar + ": Visible is taken away; it was \"1\""},
      {Rule("delete_child", kBar, "<ChildTag>Control</ChildTag><ChildId>2</ChildId>"),
       bar + ": Control 2 is taken out", ""},
      {Insert("<Control Id='2' Caption='Save &amp; go'/>"),
       bar + ": Control 2 (Save & go) is put in", ""},
      {Insert("<G><H/><I><J/></I></G>"), bar + ": G is put in, elements within it: 3", ""},
      {Insert(""), bar + ": nothing is put in", ""},
      {Rule("sort_children", kBar, "<SortedChildren>2 -1 1</SortedChildren>"),
       bar + ": the children are put in the order 2 - 1", ""},
      {Rule("odd", "Settings -1 Bars", "<Content>x\ny</Content>"),
       "Settings: the text becomes \"x\xEF\xBF\xBDy\"", ""},
  };
  for (const auto& [rule, words, ofLayout] : kCases) {
    EXPECT_EQ(Ribbon({"show", "-"}, Diff(rule)).out, words + "\n");
    EXPECT_EQ(Ribbon({"show", "-", layout}, Diff(rule)).out,
              (ofLayout.empty() ? words : ofLayout) + "\n");
  }
  EXPECT_EQ(Ribbon({"show", "-"}, Diff("")).out, "");
}

TEST(Ribbon, ShowsRulesToPrograms) {
  const DataFolder folder;
  const std::string layout = folder.Write("layout.xml", Layout());
  const std::string rules = Attrib("edit_attrib", kBar, "Visible", "\\&quot;&#9;") +
                            Insert("<Control Id='2'><A/><B/></Control>") +
                            Rule("sort_children", "", "<SortedChildren>2 -1</SortedChildren>");
  const std::string path =
      R"("path":[{"tag":"Settings","id":""},{"tag":"Bars","id":""},{"tag":"CommandBar","id":"7"}])";
  EXPECT_EQ(
      Ribbon({"show", "-", layout, "--json"}, Diff(rules)).out,
      R"({"orig":"o<","rules":[{"rule":1,"line":3,"type":"edit_attrib",)" + path +
          R"(,"from":"1","attribute":"Visible","to":"\\\"\u0009"},)" +
          R"({"rule":2,"line":4,"type":"insert_child",)" + path +
          R"(,"element":{"tag":"Control","attributes":{"Id":"2"},"children":[)" +
          R"({"tag":"A","attributes":{},"children":[]},{"tag":"B","attributes":{},"children":[]}]}},)" +
          R"({"rule":3,"line":5,"type":"sort_children","path":[],"order":["2",""]}]})" + "\n");
}

TEST(Ribbon, ChecksWhatHasNoEffect) {
  const DataFolder folder;
  const std::string layout = folder.Write("layout.xml", Layout());
  const std::string bar = "Settings/Bars/CommandBar 7: ";
  const struct {
    std::string rule, why, json;
  } kCases[] = {
      {Attrib("edit_attrib", kBar, "Visible", "0"), "", ""},
      {Attrib("edit_attrib", kBar + " Control 3", "a", "b"),
       "Settings/Bars/CommandBar 7/Control 3: there is no such element", "no_target"},
      {Attrib("edit_attrib", "Other -1", "a", "b"), "Other: there is no such element", "no_target"},
      {Attrib("edit_attrib", "Settings -1", "a", "b"), "Settings: no rule reaches the root",
       "root"},
      {Rule("sort_children", "Settings -1", "<SortedChildren>2</SortedChildren>"),
       "Settings: no rule reaches the root", "root"},
      {Rule("delete_child", kBar, "<ChildTag>Control</ChildTag><ChildId>3</ChildId>"),
       bar + "there is no Control 3 to be taken out", "no_child"},
      {Insert("<Control Id='2'/>"), "", ""},
      {Insert(""), bar + "the rule holds nothing to be put in", "no_element"},
      {Insert("<Control Id='3'/>"),
       bar + "Control 3 isn't put in, the layout doesn't know Control 3", "unknown_control"},
      {Insert("<G><H><Control Id='3'/></H></G>"),
       bar + "G is put in without Control 3, which the layout doesn't know",
       "unknown_control_within"},
      {Insert("<G CommandBarId='1006'/>"),
       bar + "G is put in, but opens no bar: CommandBarId 1006 is too low", "own_bar"},
      {Insert("<G CommandBarId='1007'/>"), "", ""},
      {Rule("edit_content", kBar, "<Content>x</Content>"), bar + "layouts are written without text",
       "content"},
  };
  for (const auto& [rule, why, json] : kCases) {
    const std::string diff =
        Diff(Rule("delete_child", kBar, "<ChildTag>Control</ChildTag><ChildId>1</ChildId>") + rule);
    const ProgramResult result = Ribbon({"check", layout, "-"}, diff);
    const int count = why.empty() ? 0 : 1;
    EXPECT_EQ(result.out, (why.empty() ? "" : "-:4: " + why + "\n") +
                              "rules: 2, without effect or not with all of it: " +
                              std::to_string(count) + "\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 2 * count);
    const ProgramResult programs = Ribbon({"check", layout, "-", "--json"}, diff);
    EXPECT_EQ(programs.status, 2 * count);
    EXPECT_EQ(programs.out.find("\"fault\":\"" + json + "\""),
              why.empty() ? programs.out.npos : programs.out.find("\"fault\""));
    // What check tells is what apply does.
    EXPECT_EQ(Ribbon({"apply", layout, "-", "-o", folder.PathOf("out").string()}, diff).err,
              why.empty() ? "" : "-:4: " + why + "\n");
  }
}

TEST(Ribbon, WhatCannotBeDoneIsOneClearLine) {
  const DataFolder folder;
  const std::string layout = folder.Write("l.xml", Layout());
  const std::string diff = folder.Write("d.xml", Diff(""));
  const std::string cut = folder.Write("cut.xml", Layout().substr(0, 40));
  const std::string lacks = folder.Write("lacks.xml", Diff(Rule("edit_attrib", "", "")));
  const std::string out = folder.Write("out.xml", "old");
  std::string deep = "<Settings>\n";
  for (int i = 0; i < 1000; ++i) deep += "<a>";
  const std::string nested = folder.Write("deep.xml", deep);
  const std::string where = folder.Path().string();
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"diff", layout, "none.xml"}, "none.xml: there is no such file"},
      {{"diff", where, layout}, where + ": it is a folder"},
      {{"diff", cut, layout}, cut + ":2: unclosed token"},
      {{"diff", layout, diff}, diff + ":1: the root is RibbonDiffRules, not Settings"},
      {{"apply", layout, layout}, layout + ":1: the root is Settings, not RibbonDiffRules"},
      {{"apply", nested, diff}, nested + ":2: elements are nested too deep"},
      {{"apply", layout, lacks}, lacks + ":3: Rule lacks the element AttribLabel"},
      {{"apply", layout, diff, "-o", where}, where + ": it is a folder"},
      {{"apply", layout, diff, "-o", where + "/no/out.xml"},
       where + "/no/out.xml: there is no such file"},
      {{"show", lacks}, lacks + ":3: Rule lacks the element AttribLabel"},
      {{"show", "-"}, "-:1: no element found"},
      {{"check", "-", "-"}, "standard input can be one FILE only\nTry: ribbon check --help"},
      {{"apply", layout}, "apply takes LAYOUT and DIFF, 1 given\nTry: ribbon apply --help"},
      {{"show", diff, "--points", "a"}, "show takes no --points\nTry: ribbon show --help"},
      {{"show"}, "show takes DIFF, and LAYOUT at most, 0 given\nTry: ribbon show --help"},
      {{"merge"},
       "there is no command \"merge\", only diff, apply, show, check\nTry: ribbon --help"},
  };
  for (const auto& [arguments, error] : cases) {
    std::vector<std::string> all = arguments;
    const bool writes = arguments[0] == "diff" || arguments[0] == "apply";
    if (writes && all.size() == 3) all.insert(all.end(), {"-o", out});
    const ProgramResult result = Ribbon(all);
    EXPECT_EQ(result.err, "ribbon: " + error + "\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1) << error;
  }
  EXPECT_EQ(Ribbon({"diff", layout, layout}).err,
            "ribbon: --output is missing; it takes the file to write\nTry: ribbon diff --help\n");
  EXPECT_EQ(folder.Read("out.xml"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 6);
}

TEST(Ribbon, TakesStandardStreamsAndWritesOverItsOwnInput) {
  const DataFolder folder;
  const std::string layout = folder.Write("l\xC3\xA0yout.xml", Layout());
  const std::string rules =
      Ribbon({"diff", layout, "-", "-o", "-"},
             std::regex_replace(Layout(), std::regex("Visible='1'"), "Visible='0'"))
          .out;
  EXPECT_NE(rules.find("<OrigFile>l\xC3\xA0yout</OrigFile>"), rules.npos);
  EXPECT_EQ(Ribbon({"apply", layout, "-", "-o", layout}, rules).status, 0);
  EXPECT_NE(folder.Read("l\xC3\xA0yout.xml").find("Visible=\"0\""), std::string::npos);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
}

TEST(Ribbon, SpeaksItalian) {
  const std::string diff = Diff(Attrib("edit_attrib", kBar, "Visible", "0"));
  for (const std::string& language : {std::string("it"), kData + "/it.po"}) {
    EXPECT_EQ(RunProgram("ribbon", {"show", "-", "--lang", language}, diff).out,
              "Settings/Bars/CommandBar 7: Visible diventa \"0\"\n");
    EXPECT_EQ(RunProgram("ribbon", {"help", "show", "--lang", language}).out.find("Uso: "), 0u);
  }
  EXPECT_EQ(Ribbon({"--version"}).out.find("ribbon "), 0u);
}

}  // namespace
