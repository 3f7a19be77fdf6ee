// ribbon check: the rules of a diff file that don't take effect on a layout.
#include "ribbon/commands/Commands.h"
#include "ribbon/files/Workspace.h"
#include "ribbon/rules/RuleJson.h"
#include "ribbon/rules/RuleText.h"

namespace ribbon {

const WChar* const kCheckHelp = KTEXT(
    "Usage: ribbon check LAYOUT DIFF [--json]\n"
    "\n"
    "Tells which rules of a diff file would have no effect on a layout, or not all of\n"
    "it, and why. Nothing is written. The exit status is 2 if there are any.\n"
    "\n"
    "  LAYOUT  an XML file with the root Settings\n"
    "  DIFF    a diff file, see ribbon diff --help; LAYOUT or DIFF may be -, standard\n"
    "          input\n"
    "  --json  one JSON object, for programs\n");

namespace {

int PrintJson(const DiffFile& diff, const Outcome& outcome, Console& console) {
  int count = 0;
  Json json;
  json.BeginObject();
  json.Member("rules", static_cast<int>(diff.Rules().size()));
  json.Key("faults");
  json.BeginArray();
  for (const std::vector<RuleEvent>& events : outcome.events) {
    for (const RuleEvent& event : events) {
      if (!IsFault(event.event)) continue;
      AppendFault(json, diff, event);
      ++count;
    }
  }
  json.EndArray();
  json.EndObject();
  console.Print(json.Text() + '\n');
  return count;
}

int PrintWords(const DiffFile& diff, const Outcome& outcome, Console& console) {
  const int count =
      TellFaults(diff, outcome, [&console](const WString& text) { console.PrintLine(text); });
  const auto rules = static_cast<int>(diff.Rules().size());
  console.PrintLine(Message{KTEXT("rules: {1}, without effect or not with all of it: {2}"),
                            {WString::ValueOf(rules), WString::ValueOf(count)}}
                        .Text());
  return count;
}

}  // namespace

Status CheckCommand(const CommandLine& line, Console& console) {
  const auto& [layout, diffFile] =
      RequirePair(line, KTEXT("check takes LAYOUT and DIFF, {1} given"));
  Workspace files;
  const WString layoutPath = files.Input(layout);
  const WString diffPath = files.Input(diffFile);
  RequireLayout(layout, layoutPath);
  const DiffFile diff(diffFile, diffPath);
  RuleEvents events;
  Manager().CheckDiffFile(layoutPath, diffPath, events);
  const Outcome outcome(diff, events);
  const int faults = line.Has(Option::Json) ? PrintJson(diff, outcome, console)
                                            : PrintWords(diff, outcome, console);
  return faults == 0 ? kDone : kPartly;
}

}  // namespace ribbon
