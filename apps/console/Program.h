// A program of commands: its face to the user, and how one command line is run.
//
//   const Command kCommands[] = {{KTEXT("show"), ShowCommand, kShowHelp, kEverywhere}, ...};
//   int main(int argc, char** argv) {
//     Console console(KTEXT("fieldbook"));
//     return Run({VERSION, kGeneralHelp, kCommands}, Console::Arguments(argc, argv), console);
//   }
//
// "PROGRAM help COMMAND", --help, --version, --lang and --verbose are the same in each program.
#pragma once

#include <span>
#include <vector>

#include "console/Console.h"

namespace console {

enum Status {
  kDone = 0,
  kFailed = 1,  // nothing, or not all, could be done; one line on standard error says why
  kPartly = 2,  // done but for some parts of it; each has a line on standard error
};

struct Command {
  const WChar* name;
  // Throws Failure when it can't go on.
  Status (*run)(const CommandLine& line, Console& console);
  const WChar* help;  // a source text
  unsigned options;   // those that it takes, one bit each
};

constexpr unsigned Bit(Option option) {
  return 1U << static_cast<int>(option);
}

struct Program {
  const char* version;
  const WChar* help;  // a source text
  std::span<const Command> commands;
};

// Runs one command line and gives the exit status, see Status. Nothing is thrown.
int Run(const Program& program, const std::vector<Argument>& arguments, Console& console);

// Complains of what ends the program, or of what one of several files can't be read for.
void ComplainOfFailure(const WString& what, Console& console);

// The names of a table's entries: "m, ft, us-ft".
template <class Entries>
WString NamesOf(const Entries& entries) {
  WString names;
  for (const auto& entry : entries) {
    if (!names.empty()) names += KTEXT(", ");
    names += entry.name;
  }
  return names;
}

}  // namespace console
