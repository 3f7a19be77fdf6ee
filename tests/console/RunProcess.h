// Runs a program of this build as a user does: arguments, standard input, and what it prints. What
// that takes of the system is in RunProcessWindows.cpp and RunProcessPosix.cpp.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/TempFolder.h"

// A folder of its own, with the names and paths of its files in UTF-8.
class DataFolder : public TempFolder {
 public:
  std::filesystem::path PathOf(const std::string& name) const { return Path() / name; }
  // Writes a file and gives its path.
  std::string Write(const std::string& name, const std::string& bytes) const;
  std::string Read(const std::string& name) const;
};

struct ProgramResult {
  int status;
  std::string out;
  std::string err;
};

// The program stands beside the one that runs the tests. Arguments are UTF-8. An output path takes
// standard output in place of the result's text.
ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& input = "", const std::filesystem::path& output = {});

#ifndef _WIN32
// With standard error on a terminal; its text is as the terminal gets it.
ProgramResult RunOnTerminal(const std::string& program, const std::vector<std::string>& arguments);

// Behind a line, and behind Ctrl-C, keys wait for the prompt: until then the terminal is in the
// other mode, where some mean other things.
struct Typing {
  std::string keys;
  std::string awaited;  // what the terminal shows behind them
};
struct TerminalResult : ProgramResult {
  bool isEchoing;  // whether the terminal was left as it was found
};
// With all streams on a terminal of so many columns, whose text is the output. A signal that ends
// the program gives 128 and its number. Throws where something awaited isn't shown.
TerminalResult TypeInto(const std::string& program, const std::vector<std::string>& arguments,
                        const std::vector<Typing>& typing, int columns, int lastSignal);
#endif

// False where the tests themselves print on a console of Windows, which they would leave.
bool CanPressCtrlC();
// Presses Ctrl-C once something stands on standard error. Standard input gives this text, again and
// again where the program doesn't hear of the key at once.
ProgramResult Interrupt(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& input);

// Runs a program with these files as its standard streams, and gives its exit status.
int RunProcess(const std::string& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& in, const std::filesystem::path& out,
               const std::filesystem::path& err);

// The path that a text in UTF-8 names.
std::filesystem::path FromUtf8(const std::string& text);
std::string ReadFile(const std::filesystem::path& path);
