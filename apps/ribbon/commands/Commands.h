// The commands.
#pragma once

#include "console/Program.h"

namespace ribbon {

using namespace console;

// Every command throws Failure when it can't go on.
Status DiffCommand(const CommandLine& line, Console& console);
Status ApplyCommand(const CommandLine& line, Console& console);
Status ShowCommand(const CommandLine& line, Console& console);
Status CheckCommand(const CommandLine& line, Console& console);

// The two operands of a command; a usage failure with this source text where there are more or
// less of them.
struct Pair {
  Argument first;
  Argument second;
};
Pair RequirePair(const CommandLine& line, const WChar* source);
void RequireOneStandardInput(const std::vector<Argument>& operands);
// What stands behind -o.
const Argument& RequireOutput(const CommandLine& line);

extern const WChar* const kDiffHelp;
extern const WChar* const kApplyHelp;
extern const WChar* const kShowHelp;
extern const WChar* const kCheckHelp;

}  // namespace ribbon
