// The program's surroundings: arguments, standard streams, files. What differs between Windows and
// POSIX stands here and nowhere else.
#pragma once

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "console/CommandLine.h"
#include "kelp0lang/Exception.h"

namespace console {

// What ends the program: one line for the user, in the user's language.
class Failure : public kelp::IException {
 public:
  explicit Failure(const Message& message) : IException(message.Text()) {}
  // A text that is in the user's language already.
  explicit Failure(const WString& text) : IException(text) {}
};

// A command line that asks for something that can't be done.
class UsageFailure : public Failure {
 public:
  using Failure::Failure;
};

// The standard streams, as UTF-8 with line feeds on every platform. There is one object, in main.
class Console {
 public:
  // The name of the program, which its own messages begin with.
  explicit Console(const WChar* programName);
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  const WString& ProgramName() const { return m_programName; }
  // The arguments behind the program's name.
  static std::vector<Argument> Arguments(int argc, char** argv);

  // Where the program's file stands, and the files that come with it.
  static std::filesystem::path ProgramFolder();
  // The language of the user's surroundings, such as "it_IT.UTF-8" or "it"; empty if unknown.
  static WString EnvironmentLanguage();

  void Print(std::string_view utf8);
  void PrintText(const WString& text);
  void PrintLine(const WString& text);
  // Asks for a line on the terminal.
  void Prompt();
  // A line on standard error.
  void Complain(const WString& text);

  // A line on standard error that tells how things stand. On a terminal the next one takes its
  // place, and EraseStatus takes it away.
  void PrintStatus(const WString& text);
  void EraseStatus();
  bool IsStatusTerminal() const { return m_isStatusTerminal; }

  // Whether bold may be used on standard output: it is a terminal that knows the ANSI sequences,
  // and the user hasn't set NO_COLOR.
  bool HasColour() const { return m_hasColour; }
  // Whether a user sits before it: standard input and output are a terminal.
  bool IsInteractive() const { return m_isInteractive; }
  // Whether standard output takes no more; what is printed then gets lost.
  bool IsOutputLost() const { return m_outputError != 0; }
  // Writes what is left. Throws Failure when something got lost otherwise than by a reader that
  // went away or an output that was never open; those pass quietly.
  void Flush();

 private:
  WString m_programName;
  bool m_hasColour = false;
  bool m_isInteractive = false;
  bool m_isStatusTerminal = false;
  int m_statusColumns = 0;
  int m_outputError = 0;  // errno
};

// While the object lives Ctrl-C ends nothing, but is told; a second one ends the program as usual.
// There is one object at a time.
class InterruptScope {
 public:
  InterruptScope();
  ~InterruptScope();
  InterruptScope(const InterruptScope&) = delete;
  InterruptScope& operator=(const InterruptScope&) = delete;

  static bool IsInterrupted();
};

// While the object lives, wide text that the library writes to standard output is text there. On
// Windows a stream of bytes, as a Console makes it one, would have its units.
class WideOutputScope {
 public:
  WideOutputScope();
  ~WideOutputScope();
  WideOutputScope(const WideOutputScope&) = delete;
  WideOutputScope& operator=(const WideOutputScope&) = delete;
};

// The content of a file, or of standard input for "-". The watch hears how far a file
// is; of what has no size it hears 0. Throws Failure.
std::string ReadAll(const Argument& file, const Watch& watch = {});
// One line of standard input without its line feed; false at the end, and where an InterruptScope
// hears of Ctrl-C. Throws Failure.
bool ReadInputLine(std::string& line);
// A file opened for reading its bytes. Throws Failure.
std::ifstream OpenFile(const Argument& file);
// Throws what went wrong with a file, by its errno; 0 counts as a fault of the device.
[[noreturn]] void FailOnFile(const Argument& file, int error);
// Throws Failure if a file can't be opened for reading.
void RequireReadable(const Argument& file);
// Makes the file hold these bytes. They are written beside it and then put in its place, so that
// the old content stays whole until all of the new one is there. Throws Failure.
void WriteAll(const Argument& file, const std::string& bytes);

// A path of the library's as this system writes it.
WString SystemPath(const WString& path);
// The absolute path of a file as the library writes it; empty for one that only this system can
// name: on POSIX one with a "\" in it, with points or blanks at its end, or that isn't UTF-8.
WString LibraryPath(const Argument& file);

}  // namespace console
