// ribbon apply: a layout with the rules of a diff file applied.
#include "ribbon/commands/Commands.h"
#include "ribbon/files/Workspace.h"
#include "ribbon/rules/RuleText.h"

namespace ribbon {

const WChar* const kApplyHelp = KTEXT(
    "Usage: ribbon apply LAYOUT DIFF -o OUT\n"
    "\n"
    "Writes a layout with the rules of a diff file applied. What has no effect is\n"
    "told on standard error, as ribbon check does.\n"
    "\n"
    "  LAYOUT            an XML file with the root Settings, such as the layout of\n"
    "                    the next version\n"
    "  DIFF              a diff file, see ribbon diff --help; LAYOUT or DIFF may be -,\n"
    "                    standard input\n"
    "  -o, --output OUT  the new layout, which may be LAYOUT itself; - is standard\n"
    "                    output\n"
    "\n"
    "Attributes come out in the order of their names, and text between elements is\n"
    "left out.\n");

Status ApplyCommand(const CommandLine& line, Console& console) {
  const auto& [layout, diffFile] =
      RequirePair(line, KTEXT("apply takes LAYOUT and DIFF, {1} given"));
  const Argument& output = RequireOutput(line);
  Workspace files;
  const WString layoutPath = files.Input(layout);
  const WString diffPath = files.Input(diffFile);
  RequireLayout(layout, layoutPath);
  const DiffFile diff(diffFile, diffPath);
  const WString written = files.NewOutput();
  RuleEvents events;
  Manager().ApplyDiffFile(layoutPath, diffPath, written, events);
  Workspace::Deliver(written, output, console);
  const int faults = TellFaults(diff, Outcome(diff, events),
                                [&console](const WString& text) { console.Complain(text); });
  return faults == 0 ? kDone : kPartly;
}

}  // namespace ribbon
