#include "fieldbook/console/LineEditor.h"

namespace fieldbook {

class LineEditor::Terminal {};

LineEditor::LineEditor(Console& console, Completer) : m_console(console) {}
LineEditor::~LineEditor() = default;

bool LineEditor::Read(std::string& line) {
  m_console.Prompt();
  return ReadInputLine(line);
}

}  // namespace fieldbook
