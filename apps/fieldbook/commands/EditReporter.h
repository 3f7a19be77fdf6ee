// What a transaction has changed in edited points, told on the console.
#pragma once

#include "console/Console.h"
#include "fieldbook/commands/PointTable.h"
#include "fieldbook/points/PointList.h"

namespace fieldbook {

// Registered with the points and their undo as long as it lives.
class EditReporter final : public kelp::CSourceEvent::IEvent,
                           public kelp::CCmdExecutedList::IEvents {
 public:
  EditReporter(PointList& list, const PointStyle& style, Console& console);
  ~EditReporter();
  EditReporter(const EditReporter&) = delete;
  EditReporter& operator=(const EditReporter&) = delete;

  void OnBeginEvent(kelp::CSourceEvent*) override;
  void OnBeforeEndEvent(kelp::CSourceEvent*) override {}
  void OnEndEvent(kelp::CSourceEvent*) override;

  void OnBeforeUndoRedo(bool undo) override;
  void OnAfterUndoRedo(bool) override {}

 private:
  void PrintRow(std::size_t row);

  PointList& m_list;
  const PointStyle& m_style;
  Console& m_console;
  const WChar* m_way = nullptr;  // a source text; null for a change that isn't undone or redone
};

}  // namespace fieldbook
