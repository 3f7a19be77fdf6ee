#include "ribbon/commands/Commands.h"

#include <algorithm>

#include "ribbon/files/Workspace.h"

namespace ribbon {

Pair RequirePair(const CommandLine& line, const WChar* source) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.size() != 2) {
    throw UsageFailure({source, {WString::ValueOf(static_cast<int>(operands.size()))}});
  }
  RequireOneStandardInput(operands);
  return {operands[0], operands[1]};
}

void RequireOneStandardInput(const std::vector<Argument>& operands) {
  if (std::count_if(operands.begin(), operands.end(), IsStandardStream) < 2) return;
  throw UsageFailure({KTEXT("standard input can be one FILE only"), {}});
}

const Argument& RequireOutput(const CommandLine& line) {
  const Argument* output = line.Value(Option::Output);
  if (output != nullptr) return *output;
  throw UsageFailure(
      {KTEXT("{1} is missing; it takes the file to write"), {NameOf(Option::Output)}});
}

}  // namespace ribbon
