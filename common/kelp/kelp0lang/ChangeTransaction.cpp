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

// Tells, to a walk that has called listeners, whether its source is still there. The walks of a
// thread stand in a list, in which a source that ends looks itself up.
class Walk {
 public:
  explicit Walk(const CSourceEvent* source) : m_source(source), m_outer(innermost) {
    innermost = this;
  }
  ~Walk() { innermost = m_outer; }
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;

  bool HasSource() const { return m_source != nullptr; }

  static void Forget(const CSourceEvent* source) {
    for (Walk* walk = innermost; walk != nullptr; walk = walk->m_outer) {
      if (walk->m_source == source) walk->m_source = nullptr;
    }
  }

 private:
  const CSourceEvent* m_source;
  Walk* const m_outer;

  static thread_local Walk* innermost;
};

constinit thread_local Walk* Walk::innermost = nullptr;

}  // namespace

CSourceEvent::CSourceEvent(CChangeTransactionManager* manager) : m_manager(manager) {
  if (m_manager != nullptr) m_manager->Register(this);
}

CSourceEvent::CSourceEvent(const CSourceEvent& other) = default;

CSourceEvent& CSourceEvent::operator=(const CSourceEvent& other) {
  if (m_manager != other.m_manager) Detach();
  m_manager = other.m_manager;
  m_acted = other.m_acted;
  m_listeners = other.m_listeners;
  m_dependants = other.m_dependants;
  m_dependencies = other.m_dependencies;
  return *this;
}

CSourceEvent::~CSourceEvent() {
  Walk::Forget(this);
  Detach();
}

void CSourceEvent::OnBeforeBeginEvent() {}

void CSourceEvent::OnBeforeEndEvent() {}

void CSourceEvent::OnAfterEndEvent() {}

void CSourceEvent::Attach(CChangeTransactionManager* manager) {
  if (m_manager != manager) Detach();
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

void CSourceEvent::EndEvent(CChangeTransactionManager* manager) {
  manager->EndEvent();
}

void CSourceEvent::DoBeginEvent() {
  if (m_acted) return;
  Acted(true);
  const Walk walk(this);
  NotifyBeginEventToDependence();
  if (!walk.HasSource()) return;
  OnBeforeBeginEvent();
  m_listeners.ForEach([this](IEvent* listener) { listener->OnBeginEvent(this); });
}

void CSourceEvent::NotifyBeginEventToDependence() {
  if (m_dependencies.empty()) return;
  const Walk walk(this);
  // A listener may change the dependencies, so each step starts from the last key.
  for (auto it = m_dependencies.begin(); it != m_dependencies.end();) {
    CSourceEvent* const dependency = *it;
    dependency->DoBeginEvent();
    if (!walk.HasSource()) return;
    it = m_dependencies.upper_bound(dependency);
  }
}

void CSourceEvent::OnBeforeEnd() {
  m_listeners.ForEach([this](IEvent* listener) { listener->OnBeforeEndEvent(this); });
}

void CSourceEvent::OnEnd() {
  const Walk walk(this);
  NotifyEndEventToDependence();
  if (!walk.HasSource()) return;
  OnBeforeEndEvent();
  Acted(false);
  m_listeners.ForEach([this](IEvent* listener) { listener->OnEndEvent(this); });
  OnAfterEndEvent();
  RemoveUnregisteredListeners();
}

void CSourceEvent::NotifyEndEventToDependence() {
  if (m_dependants.empty()) return;
  const Walk walk(this);
  // Listeners may change the array, and end this source. A source that has left the array may be
  // gone, so it is looked for before it is touched; those that have come are closed afterwards.
  const std::vector<CSourceEvent*> before = m_dependants;
  for (std::size_t i = 0; i < before.size() && walk.HasSource(); ++i) {
    if (Contains(m_dependants, i, before[i]) && before[i]->HasActed()) before[i]->OnEnd();
  }
  if (!walk.HasSource()) return;
  const std::vector<CSourceEvent*> after = m_dependants;
  for (std::size_t i = 0; i < after.size() && walk.HasSource(); ++i) {
    const bool hasCome = !Contains(before, i, after[i]) && Contains(m_dependants, i, after[i]);
    if (hasCome && after[i]->HasActed()) after[i]->OnEnd();
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
