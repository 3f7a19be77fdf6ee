// The source of events through which a program hears that its unit settings have changed.
//
//   class Table : public kelp::CSourceEvent::IEvent {
//     void OnBeginEvent(kelp::CSourceEvent*) override {}
//     void OnBeforeEndEvent(kelp::CSourceEvent*) override {}
//     void OnEndEvent(kelp::CSourceEvent*) override { Redraw(); }   // in the new units
//   };
//
//   const CMeasUnitSystem* current = CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem();
//   current->GetContext()->Register(&table);
//   ...
//   current->GetContext()->Unregister(&table);   // before the table goes
//
// Listeners hear the end of the event with IsMeasUnitSystemChanged true, its beginning with false.
#pragma once

#include <memory>

#include "kelp0lang/ChangeTransaction.h"
#include "kelp0lang/Export.h"

class KELP0LANG_API CMeasUnitChangeContext : public kelp::CSourceEvent {
 public:
  explicit CMeasUnitChangeContext(kelp::CChangeTransactionManager* manager);

  // Whether a change is being reported; a copy of a context reads the same flag.
  bool IsMeasUnitSystemChanged() const { return *m_changing; }
  // Reports one change to the listeners. An exception from a listener at the end ends the process.
  void Notify_Changed();

 protected:
  ~CMeasUnitChangeContext() override;
  void OnBeforeBeginEvent() override;
  void OnBeforeEndEvent() override;
  void OnAfterEndEvent() override;

 private:
  std::shared_ptr<bool> m_changing;
};
