// The files of one run of a command, as paths that the library reads and writes.
//
//   Workspace files;
//   const WString layout = files.Input(line.Operands()[0]);
//   const WString written = files.NewOutput();
//   ... the library writes that path ...
//   files.Deliver(written, output, console);
//
// Standard input or a pipe, which can be read only once, becomes a file of the run's own, and what
// the library writes is one too, until it is whole: then it takes the place of the user's file, or
// goes to standard output.
#pragma once

#include <filesystem>

#include "console/Console.h"

namespace ribbon {

using namespace console;

class Workspace {
 public:
  Workspace() = default;
  // The run's own files go.
  ~Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  // The path of a file that can be read. Throws Failure where it can't be opened.
  WString Input(const Argument& file);
  // A path for the library to write to. Throws Failure.
  WString NewOutput();
  // Gives the user what the library has written there. Throws Failure where it has written nothing,
  // as when the disk is full, or where the user's file can't be written.
  static void Deliver(const WString& written, const Argument& output, Console& console);

 private:
  const std::filesystem::path& Folder();

  std::filesystem::path m_folder;  // empty until one is needed
};

inline bool IsStandardStream(const Argument& file) {
  return file.text == WString(KTEXT("-"));
}

}  // namespace ribbon
