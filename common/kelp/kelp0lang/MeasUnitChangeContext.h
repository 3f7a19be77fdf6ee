// The source of events through which a program hears that its unit settings have changed.
//
//   context->Register(listener);   //
//   CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem()->GetContext()
//   ...
//   void OnEndEvent(kelp::CSourceEvent*) override { if (context->IsMeasUnitSystemChanged())
//   redraw(); }
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
