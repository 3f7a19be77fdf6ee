#include "fieldbook/commands/EditReporter.h"

namespace fieldbook {

EditReporter::EditReporter(PointList& list, const PointStyle& style, Console& console)
    : m_list(list), m_style(style), m_console(console) {
  m_list.Register(this);
  m_list.GetChangeTransactionManager()->RegisterForUndoRedoEvents(this);
}

EditReporter::~EditReporter() {
  m_list.GetChangeTransactionManager()->UnregisterForUndoRedoEvents(this);
  m_list.Unregister(this);
}

void EditReporter::OnBeginEvent(kelp::CSourceEvent*) {
  m_way = nullptr;
}

void EditReporter::OnEndEvent(kelp::CSourceEvent*) {
  if (m_way != nullptr) m_console.PrintLine(Message{m_way, {Shown(m_list.Step())}}.Text());
  for (const std::size_t row : m_list.ChangedRows()) PrintRow(row);
}

void EditReporter::OnBeforeUndoRedo(bool undo) {
  m_way = undo ? KTEXT("undone: {1}") : KTEXT("redone: {1}");
}

void EditReporter::PrintRow(std::size_t row) {
  const Point& point = m_list.PointIn(row);
  const WString name = Shown(point.name);
  if (m_list.IsRemoved(row)) {
    m_console.PrintLine(Message{KTEXT("{1} is deleted"), {name}}.Text());
    return;
  }
  CoordinateWriter writer(m_list.Unit(), m_style);
  const std::vector<WString> heads = PointHeads(m_style);
  std::string text;
  AppendUtf8(text, name);
  std::size_t head = 1;
  for (const std::string& coordinate : writer.Write(point)) {
    if (!coordinate.empty()) {
      text += "  ";
      AppendUtf8(text, heads[head]);
      text += ' ' + coordinate;
    }
    ++head;
  }
  m_console.Print(text + '\n');
}

}  // namespace fieldbook
