// Lines that a user types on a terminal, with the arrow keys, a history and completion by Tab.
//
//   LineEditor editor(console, [](const WString& before) { return Completion{...}; });
//   std::string line;
//   while (editor.Read(line)) ...
//
// On POSIX this is libedit, with the user's key bindings of ~/.editrc. On Windows the console has
// line editing and a history of its own, and no completion. On a terminal that can't move the
// cursor lines are read as they come. Pipes have no use for it: ReadInputLine reads them.
//
// The history lasts as long as the object. A line speaks of the points of one file, so that of
// another run would mostly be wrong; and no names of points are left in the user's folder.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "console/Console.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

// What may stand in place of the word before the cursor.
struct Completion {
  std::size_t typed = 0;         // how many units of the text before the cursor the word has
  std::vector<WString> choices;  // as they are shown, in their order
  WString text;                  // takes the word's place: as far as all choices agree
};

// Asked with the text before the cursor.
using Completer = std::function<Completion(const WString& before)>;

class LineEditor {
 public:
  LineEditor(Console& console, Completer completer);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // Asks for a line and gives it without its line feed, in UTF-8; false at the end of the input,
  // and where an InterruptScope hears of Ctrl-C. Throws Failure.
  bool Read(std::string& line);

 private:
  class Terminal;

  Console& m_console;
  std::unique_ptr<Terminal> m_terminal;  // null where lines are read as they come
};

}  // namespace fieldbook
