#include "RunProgram.h"

namespace {

// The arguments behind --data and a folder that isn't there; an option that comes twice counts the
// last time.
std::vector<std::string> WithDefaultSettings(const std::vector<std::string>& arguments,
                                             const DataFolder& folder) {
  std::vector<std::string> all = {"--data", folder.PathOf("settings").string()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}

}  // namespace

ProgramResult RunFieldbook(const std::vector<std::string>& arguments, const std::string& input,
                           const std::filesystem::path& output) {
  const DataFolder folder;
  return RunProgram("fieldbook", WithDefaultSettings(arguments, folder), input, output);
}

#ifndef _WIN32
ProgramResult RunFieldbookOnTerminal(const std::vector<std::string>& arguments) {
  const DataFolder folder;
  return RunOnTerminal("fieldbook", WithDefaultSettings(arguments, folder));
}

TerminalResult TypeIntoFieldbook(const std::vector<std::string>& arguments,
                                 const std::vector<Typing>& typing, int columns, int lastSignal) {
  const DataFolder folder;
  return TypeInto("fieldbook", WithDefaultSettings(arguments, folder), typing, columns, lastSignal);
}
#endif

ProgramResult InterruptFieldbook(const std::vector<std::string>& arguments,
                                 const std::string& input) {
  return Interrupt("fieldbook", arguments, input);
}
