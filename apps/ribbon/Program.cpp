#include "ribbon/Program.h"

#include "ribbon/commands/Commands.h"

namespace ribbon {
namespace {

constexpr unsigned kEverywhere =
    Bit(Option::Lang) | Bit(Option::Help) | Bit(Option::Version) | Bit(Option::Verbose);

const Command kCommands[] = {
    {KTEXT("diff"), DiffCommand, kDiffHelp, kEverywhere | Bit(Option::Output)},
    {KTEXT("apply"), ApplyCommand, kApplyHelp, kEverywhere | Bit(Option::Output)},
    {KTEXT("show"), ShowCommand, kShowHelp, kEverywhere | Bit(Option::Json)},
    {KTEXT("check"), CheckCommand, kCheckHelp, kEverywhere | Bit(Option::Json)},
};

const WChar* const kGeneralHelp = KTEXT(
    "Usage: ribbon COMMAND ... [--lang LANGUAGE] [--verbose]\n"
    "\n"
    "Carries the changes that a user made to a ribbon layout over to another layout.\n"
    "\n"
    "  ribbon diff OLD NEW -o DIFF      the rules that turn one layout into another\n"
    "  ribbon apply LAYOUT DIFF -o OUT  a layout with the rules applied\n"
    "  ribbon show DIFF [LAYOUT]        the rules in plain words\n"
    "  ribbon check LAYOUT DIFF         the rules that don't take effect on a layout\n"
    "\n"
    "  ribbon help COMMAND              what the command takes, with all options\n"
    "  ribbon --version                 the version of the program\n"
    "  --lang LANGUAGE                  texts in another language than that of the\n"
    "                                   environment: en, it, or a gettext catalogue\n"
    "                                   (.po or .mo)\n"
    "  --verbose                        the local time of the run on standard error\n"
    "\n"
    "Options may stand anywhere; behind -- nothing is an option. For a file \"-\" is\n"
    "standard input, and behind -o standard output. An output file is written whole\n"
    "or not at all.\n"
    "\n"
    "Exit status: 0 done, 1 not done, 2 done but for some rules.\n"
    "\n"
    "Examples:\n"
    "  ribbon diff shipped.xml users.xml -o users.diff.xml\n"
    "  ribbon check next.xml users.diff.xml\n"
    "  ribbon apply next.xml users.diff.xml -o next.users.xml\n");

}  // namespace

int Run(const std::vector<Argument>& arguments, Console& console) {
  return console::Run({RIBBON_VERSION, kGeneralHelp, kCommands}, arguments, console);
}

}  // namespace ribbon
