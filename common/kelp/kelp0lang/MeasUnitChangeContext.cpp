#include "kelp0lang/MeasUnitChangeContext.h"

CMeasUnitChangeContext::CMeasUnitChangeContext(kelp::CChangeTransactionManager* manager)
    : CSourceEvent(manager), m_changing(std::make_shared<bool>(false)) {}

CMeasUnitChangeContext::~CMeasUnitChangeContext() = default;

void CMeasUnitChangeContext::Notify_Changed() {
  kelp::CSourceEventScope event(this);
  *m_changing = true;
}

void CMeasUnitChangeContext::OnBeforeBeginEvent() {
  *m_changing = false;
}

void CMeasUnitChangeContext::OnBeforeEndEvent() {}

void CMeasUnitChangeContext::OnAfterEndEvent() {
  *m_changing = false;
}
