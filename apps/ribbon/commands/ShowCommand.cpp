// ribbon show: the rules of a diff file in plain words.
#include "ribbon/commands/Commands.h"
#include "ribbon/files/Workspace.h"
#include "ribbon/rules/RuleJson.h"
#include "ribbon/rules/RuleText.h"

namespace ribbon {

const WChar* const kShowHelp = KTEXT(
    "Usage: ribbon show DIFF [LAYOUT] [--json]\n"
    "\n"
    "Shows the rules of a diff file, each in a line: where, what, from, to.\n"
    "\n"
    "  DIFF    a diff file, see ribbon diff --help; - is standard input\n"
    "  LAYOUT  a layout in which an attribute's value before the rule is looked up,\n"
    "          since a diff file holds only the new one\n"
    "  --json  one JSON object, for programs\n");

namespace {

void PrintJson(const DiffFile& diff, const Outcome& outcome, Console& console) {
  Json json;
  json.BeginObject();
  json.Member("orig", diff.OrigName());
  json.Key("rules");
  json.BeginArray();
  for (std::size_t i = 0; i < diff.Rules().size(); ++i) {
    AppendRule(json, diff, i, outcome.events[i]);
  }
  json.EndArray();
  json.EndObject();
  console.Print(json.Text() + '\n');
}

void PrintWords(const DiffFile& diff, const Outcome& outcome, Console& console) {
  for (std::size_t i = 0; i < diff.Rules().size(); ++i) {
    console.PrintLine(TextOf(*diff.Rules()[i], outcome.events[i]));
  }
}

}  // namespace

Status ShowCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.empty() || operands.size() > 2) {
    throw UsageFailure({KTEXT("show takes DIFF, and LAYOUT at most, {1} given"),
                        {WString::ValueOf(static_cast<int>(operands.size()))}});
  }
  RequireOneStandardInput(operands);
  Workspace files;
  const WString diffPath = files.Input(operands[0]);
  const DiffFile diff(operands[0], diffPath);
  RuleEvents events;
  if (operands.size() == 2) {
    const WString layoutPath = files.Input(operands[1]);
    RequireLayout(operands[1], layoutPath);
    Manager().CheckDiffFile(layoutPath, diffPath, events);
  }
  const Outcome outcome(diff, events);
  line.Has(Option::Json) ? PrintJson(diff, outcome, console) : PrintWords(diff, outcome, console);
  return kDone;
}

}  // namespace ribbon
