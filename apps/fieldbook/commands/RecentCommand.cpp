// fieldbook recent: the points files that were read last.
#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kRecentHelp = KTEXT(
    "Usage: fieldbook recent [--data DIR]\n"
    "\n"
    "Lists the points files that were read last, the newest first: up to ten, each\n"
    "with its whole path. Behind one that has been moved or deleted since stands\n"
    "(gone). A file on the network isn't listed while its folder is out of reach.\n"
    "\n"
    "  --data DIR  folder of the settings, in which the list is kept\n");

Status RecentCommand(const CommandLine& line, Console& console) {
  if (!line.Operands().empty()) {
    throw UsageFailure({KTEXT("{1} takes nothing behind it"), {KTEXT("recent")}});
  }
  OpenSettings(line, console);
  // One that is gone is listed, so that who looks for it sees where it was.
  for (const kelp::CFile& file : RecentFiles()) {
    const WString path = Shown(SystemPath(file.GetPath()));
    console.PrintLine(file.Exists() ? path : Message{KTEXT("{1} (gone)"), {path}}.Text());
  }
  return kDone;
}

}  // namespace fieldbook
