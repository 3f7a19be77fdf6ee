// ribbon diff: the rules that turn one layout into another.
#include "kelp0lang/XmlDiffManager.h"
#include "ribbon/commands/Commands.h"
#include "ribbon/files/Workspace.h"
#include "ribbon/files/XmlProbe.h"

namespace ribbon {

const WChar* const kDiffHelp = KTEXT(
    "Usage: ribbon diff OLD NEW -o DIFF\n"
    "\n"
    "Writes the rules that turn one layout into another, such as the layout that was\n"
    "shipped into that of the user.\n"
    "\n"
    "  OLD NEW            layouts: XML files with the root Settings; one of them may\n"
    "                     be -, standard input\n"
    "  -o, --output DIFF  the diff file; - is standard output\n"
    "\n"
    "Captions, tooltips and other texts that the program translates make no rule.\n");

Status DiffCommand(const CommandLine& line, Console& console) {
  const auto& [first, second] = RequirePair(line, KTEXT("diff takes OLD and NEW, {1} given"));
  const Argument& output = RequireOutput(line);
  Workspace files;
  const WString firstPath = files.Input(first);
  const WString secondPath = files.Input(second);
  RequireLayout(first, firstPath);
  RequireLayout(second, secondPath);
  const WString written = files.NewOutput();
  kelp::CXmlDiffManager().GenerateDiffFile(firstPath, secondPath, written);
  Workspace::Deliver(written, output, console);
  return kDone;
}

}  // namespace ribbon
