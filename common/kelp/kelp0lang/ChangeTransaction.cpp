#include "kelp0lang/ChangeTransaction.h"

#include <algorithm>

namespace kelp {

namespace {

constexpr unsigned int kUndoSteps = 20;

// Runs at the end of a block, also when a listener or command throws.
template <class F>
class AtExit {
 public:
  explicit AtExit(F work) : m_work(work) {}
  ~AtExit() { m_work(); }
  AtExit(const AtExit&) = delete;
  AtExit& operator=(const AtExit&) = delete;

 private:
  F m_work;
};

// Looks first where the source most likely still is.
bool Contains(const std::vector<CSourceEvent*>& sources, std::size_t place,
              const CSourceEvent* source) {
  if (place < sources.size() && sources[place] == source) return true;
  return std::find(sources.begin(), sources.end(), source) != sources.end();
}

}  // namespace

CSourceEvent::CSourceEvent(CChangeTransactionManager* manager) : m_manager(manager) {
  if (m_manager != nullptr) m_manager->Register(this);
}

CSourceEvent::CSourceEvent(const CSourceEvent& other) = default;

CSourceEvent& CSourceEvent::operator=(const CSourceEvent& other) = default;

CSourceEvent::~CSourceEvent() {
  Detach();
}

void CSourceEvent::OnBeforeBeginEvent() {}

void CSourceEvent::OnBeforeEndEvent() {}

void CSourceEvent::OnAfterEndEvent() {}

void CSourceEvent::Attach(CChangeTransactionManager* manager) {
  m_manager = manager;
  m_manager->Register(this);
}

void CSourceEvent::Detach() noexcept {
  if (m_manager == nullptr) return;
  m_manager->Unregister(this);
  m_manager = nullptr;
}

void CSourceEvent::AddDependsOn(CSourceEvent* other) {
  m_dependencies.insert(other);
  other->m_dependants.push_back(this);
}

void CSourceEvent::RemoveDependsOn(CSourceEvent* other) {
  m_dependencies.erase(other);
  auto& dependants = other->m_dependants;
  const auto found = std::find(dependants.begin(), dependants.end(), this);
  if (found != dependants.end()) dependants.erase(found);
}

void CSourceEvent::BeginEvent() {
  if (m_manager != nullptr) m_manager->BeginEvent(this);
}

void CSourceEvent::EndEvent() {
  if (m_manager != nullptr) m_manager->EndEvent();
}

void CSourceEvent::DoBeginEvent() {
  if (m_acted) return;
  Acted(true);
  NotifyBeginEventToDependence();
  OnBeforeBeginEvent();
  m_listeners.ForEach([this](IEvent* listener) { listener->OnBeginEvent(this); });
}

void CSourceEvent::NotifyBeginEventToDependence() {
  // A listener may change the dependencies, so each step starts from the last key.
  for (auto it = m_dependencies.begin(); it != m_dependencies.end();) {
    CSourceEvent* const dependency = *it;
    dependency->DoBeginEvent();
    it = m_dependencies.upper_bound(dependency);
  }
}

void CSourceEvent::OnBeforeEnd() {
  m_listeners.ForEach([this](IEvent* listener) { listener->OnBeforeEndEvent(this); });
}

void CSourceEvent::OnEnd() {
  NotifyEndEventToDependence();
  OnBeforeEndEvent();
  Acted(false);
  m_listeners.ForEach([this](IEvent* listener) { listener->OnEndEvent(this); });
  OnAfterEndEvent();
  RemoveUnregisteredListeners();
}

void CSourceEvent::NotifyEndEventToDependence() {
  if (m_dependants.empty()) return;
  // Listeners may change the array. A source that has left it may be gone, so it is looked for
  // before it is touched; those that have come are closed afterwards.
  const std::vector<CSourceEvent*> before = m_dependants;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (Contains(m_dependants, i, before[i]) && before[i]->HasActed()) before[i]->OnEnd();
  }
  const std::vector<CSourceEvent*> after = m_dependants;
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (!Contains(before, i, after[i]) && after[i]->HasActed()) after[i]->OnEnd();
  }
}

CChangeTransactionManager::CChangeTransactionManager()
    : m_list(new CCmdExecutedList(new CCmdExecutedListStrategyNumber(kUndoSteps))),
      m_ownerThread(GetCurrentThreadId()) {}

CChangeTransactionManager::~CChangeTransactionManager() {
  m_list->SubReference();
}

void CChangeTransactionManager::BeginEvent(CSourceEvent* source) {
  const CCriticalSecLock lock(&m_lock);
  if (m_depth++ == 0 && !m_undoInProgress && m_enabled) m_list->StartRecordCmd();
  if (source != nullptr) source->DoBeginEvent();
}

void CChangeTransactionManager::EndEvent() {
  const AtExit close([this] { --m_depth; });
  if (!m_enabled || m_depth != 1) return;
  if (m_mainWnd != nullptr && GetCurrentThreadId() != m_ownerThread) {
    SendMessageW(m_mainWnd, kEndEventMessage, reinterpret_cast<WPARAM>(this), 0);
  } else {
    DoEndEvent();
  }
}

void CChangeTransactionManager::DoEndEvent() {
  // The record ends with the transaction even if a listener throws: it would never end later.
  const AtExit finish([this] {
    if (!m_undoInProgress) m_list->StopRecordCmd();
    RemoveUnregisteredSourceEvents();
  });
  m_sources.ForEach([](CSourceEvent* source) {
    if (source->HasActed()) source->OnBeforeEnd();
  });
  m_sources.ForEach([](CSourceEvent* source) {
    if (source->HasActed()) source->OnEnd();
  });
}

void CChangeTransactionManager::Add(ICmdExecuted* command) {
  BeginEvent(nullptr);
  m_list->Add(command);
  EndEvent();
}

void CChangeTransactionManager::Undo() {
  m_undoInProgress = true;
  const AtExit done([this] { m_undoInProgress = false; });
  m_list->Undo();
}

void CChangeTransactionManager::Redo() {
  m_undoInProgress = true;
  const AtExit done([this] { m_undoInProgress = false; });
  m_list->Redo();
}

}  // namespace kelp
