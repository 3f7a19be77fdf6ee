// Change transactions: what changes in a document reports it in two steps, before and after, so
// that listeners see a consistent whole; and all that one transaction records is one step to undo.
//
//   kelp::CChangeTransactionManager manager;   // one for each document
//   Layer layer(&manager);                     // a CSourceEvent
//   layer.Register(&view);                     // view is a CSourceEvent::IEvent
//   {
//     kelp::CSourceEventScope transaction(&layer);  // view.OnBeginEvent
//     manager.Add(layer.Move(point));               // change the data, record the command
//   }                                               // view.OnBeforeEndEvent, view.OnEndEvent
//   manager.Undo();
//
// Transactions nest; only the outermost counts. A source can depend on others: it then takes them
// into its transactions. When it begins, those begin first; when they end, it has ended before
// them.
//
// Threads: one transaction at a time, on any thread. Everything but its closing runs on the thread
// that opened it. If that isn't the thread that made the manager, the closing goes to the main
// window (SetMainWnd) as a message, and so all listeners hear of the end on the window's thread
// while the other waits. Only the beginning of an event is locked; nothing else in a manager or a
// source may be used from two threads at once.
#pragma once

#include <windows.h>

#include <cstddef>
#include <set>
#include <vector>

#include "kelp0lang/CmdExecuted.h"
#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/Export.h"
#include "kelp0lang/Object.h"
#include "kelp0lang/RegistrationMap.h"

namespace kelp {

class CChangeTransactionManager;

// Asks the main window to close a transaction: its procedure calls DoEndEvent on the manager whose
// address is wParam. lParam is 0 and the result is not looked at.
inline constexpr UINT kEndEventMessage = WM_USER + 100;

// Something that can change. Sources, listeners and managers don't own one another: whoever goes
// first is taken out by its owner. A source takes itself off its manager, but not out of the
// dependencies of others: call RemoveDependsOn before.
class KELP0LANG_API CSourceEvent : public IRefCounter {
 public:
  // A listener. It may register and unregister listeners, sources and dependencies, open and close
  // transactions, and end sources: any that isn't just telling a listener, this one or another up
  // the stack, and that has left the dependencies of those that remain. A source that is beginning
  // those on which it depends, or closing its dependants, goes no further then; a transaction that
  // it has opened is closed without it.
  //
  //   class View : public CSourceEvent::IEvent {
  //     void OnBeginEvent(CSourceEvent*) override { FreezeDrawing(); }
  //     void OnBeforeEndEvent(CSourceEvent*) override { RebuildIndex(); }
  //     void OnEndEvent(CSourceEvent*) override { Redraw(); }
  //   };
  class KELP0LANG_API IEvent {
   public:
    virtual void OnBeginEvent(CSourceEvent* source) = 0;
    // All data are in their new state; no source of the transaction has ended yet.
    virtual void OnBeforeEndEvent(CSourceEvent* source) = 0;
    // This source has ended; those on which it depends haven't yet.
    virtual void OnEndEvent(CSourceEvent* source) = 0;

   protected:
    ~IEvent() = default;
  };

  // Registers with the manager, if there is one.
  explicit CSourceEvent(CChangeTransactionManager* manager = nullptr);
  // A copy has the same manager, listeners and dependencies and takes part in the open transaction
  // if the other does. It isn't registered with the manager, and the sources on which the other
  // depends don't learn of it. A source that is assigned from one of another manager leaves its
  // own.
  CSourceEvent(const CSourceEvent& other);
  CSourceEvent& operator=(const CSourceEvent& other);
  ~CSourceEvent() override;

 protected:
  // For derived classes; they do nothing here. Before the listeners are told of a beginning; before
  // and after they are told of the end.
  virtual void OnBeforeBeginEvent();
  virtual void OnBeforeEndEvent();
  virtual void OnAfterEndEvent();

 public:
  // Without a manager a source takes part in no transaction. In an open transaction it takes part
  // from its own next beginning on. The manager isn't null; Detach leaves one.
  //
  // Of a source that is attached already: the same manager again changes nothing; another one takes
  // it from the first. Whether it has acted goes along: one that moves out of an open transaction
  // hears its end there no more, is told no beginning by the new manager, and ends with the next
  // transaction that closes there. So a source is moved between transactions.
  void Attach(CChangeTransactionManager* manager);
  void Detach() noexcept;
  // Null without one.
  CChangeTransactionManager* GetChangeTransactionManager() const noexcept { return m_manager; }

  // Whether this source takes part in the open transaction.
  bool HasActed() const noexcept { return m_acted; }

  // Dependencies mustn't form a cycle, and have one manager. Of another manager's source only half
  // is told: as a dependency it begins with this one and ends with the next transaction of its own
  // manager; as a dependant it ends with this one, where it had begun, but without
  // OnBeforeEndEvent.
  void AddDependsOn(CSourceEvent* other);
  void RemoveDependsOn(CSourceEvent* other);

  // Listeners are told in ascending order of address. One that leaves while they are told isn't
  // told any more; one that joins is told if its address is above that of the listener now being
  // told.
  void Register(IEvent* listener) { m_listeners.Register(listener); }
  void Unregister(IEvent* listener) noexcept { m_listeners.Unregister(listener); }

 private:
  friend class CChangeTransactionManager;
  friend class CSourceEventScope;

  void BeginEvent();
  // Of a source that may have ended.
  static void EndEvent(CChangeTransactionManager* manager);
  void DoBeginEvent();
  void OnBeforeEnd();
  void OnEnd();
  void Acted(bool acted) noexcept { m_acted = acted; }
  void RemoveUnregisteredListeners() noexcept { m_listeners.RemoveUnregistered(); }
  void NotifyBeginEventToDependence();
  void NotifyEndEventToDependence();

  CChangeTransactionManager* m_manager;
  bool m_acted = false;
  detail::RegistrationMap<IEvent> m_listeners;
  std::vector<CSourceEvent*> m_dependants;
  std::set<CSourceEvent*> m_dependencies;
};

// An open transaction for as long as it lives; with null, or a source without a manager, it is
// none. It closes with the manager with which it was opened, also where the source has left that or
// ended meanwhile. An exception out of the closing ends the process.
class KELP0LANG_API CSourceEventScope {
 public:
  explicit CSourceEventScope(CSourceEvent* source)
      : m_manager(source != nullptr ? source->GetChangeTransactionManager() : nullptr) {
    if (m_manager != nullptr) source->BeginEvent();
  }
  ~CSourceEventScope() {
    if (m_manager != nullptr) CSourceEvent::EndEvent(m_manager);
  }
  CSourceEventScope(const CSourceEventScope&) = delete;
  CSourceEventScope& operator=(const CSourceEventScope&) = delete;

 private:
  CChangeTransactionManager* m_manager;
};

// Counts the open levels, closes the outermost and keeps the last 20 steps to undo. It outlives its
// sources, or they are detached before.
class KELP0LANG_API CChangeTransactionManager {
 public:
  CChangeTransactionManager();
  ~CChangeTransactionManager();
  CChangeTransactionManager(const CChangeTransactionManager&) = delete;
  CChangeTransactionManager& operator=(const CChangeTransactionManager&) = delete;

  // Closes the transaction: each source that took part tells its listeners OnBeforeEndEvent, then
  // each, its dependants first, OnEndEvent. Called by the handler of kEndEventMessage, nobody else.
  // If a listener throws here, the sources that haven't ended do so with the next transaction (and
  // where a CSourceEventScope closes, the process ends).
  //
  // If a listener or an OnBeforeBeginEvent throws at the beginning, the exception leaves the
  // constructor of the scope, which has no destructor then, and so nobody closes the level that it
  // opened, an inner one no less than the outermost. From then on no transaction of this manager is
  // closed: the source and the dependencies before it count as begun and are never told an end, and
  // all commands gather in one record that isn't in the undo list, so that CanUndo doesn't see it.
  // A GetMemSize that throws in Add leaves a level open likewise. There is no way back but a new
  // manager: beginnings mustn't throw.
  void DoEndEvent();

  // Records a command that has just been carried out, and takes it over. Outside a transaction it
  // is a step of its own.
  void Add(ICmdExecuted* command);
  // Transactions that the commands open notify as usual, but record nothing.
  void Undo();
  void Redo();
  // The steps that there are, as the list of commands tells them.
  bool CanUndo() const noexcept { return m_list->CanUndo(); }
  bool CanRedo() const noexcept { return m_list->CanRedo(); }
  void FreeUndoList() { m_list->FreeUndoList(); }
  // Whether Undo or Redo is at work.
  bool IsUndoInProgress() const noexcept { return m_undoInProgress; }

  // While disabled, transactions aren't closed: sources begin, nothing ends, and each command is a
  // step of its own. Sources that began end with the next transaction that is closed. To be
  // switched between transactions only.
  bool IsEnable() const noexcept { return m_enabled; }
  void EnableEvent() noexcept { m_enabled = true; }
  void DisableEvent() noexcept { m_enabled = false; }

  // What the sources themselves call. One that is unregistered while a transaction closes takes no
  // part in the rest of it.
  void Register(CSourceEvent* source) { m_sources.Register(source); }
  void Unregister(CSourceEvent* source) noexcept { m_sources.Unregister(source); }

  void RegisterForUndoRedoEvents(CCmdExecutedList::IEvents* listener) {
    m_list->Register(listener);
  }
  void UnregisterForUndoRedoEvents(CCmdExecutedList::IEvents* listener) noexcept {
    m_list->Unregister(listener);
  }

  // The window that gets kEndEventMessage, made by the thread that made the manager. It lives as
  // long as other threads close transactions; without one these are closed where they were opened.
  void SetMainWnd(HWND window) noexcept { m_mainWnd = window; }

 private:
  friend class CSourceEvent;

  void BeginEvent(CSourceEvent* source);
  void EndEvent();
  void RemoveUnregisteredSourceEvents() noexcept { m_sources.RemoveUnregistered(); }

  CCriticalSec m_lock;
  CCmdExecutedList* m_list;
  int m_depth = 0;
  detail::RegistrationMap<CSourceEvent> m_sources;
  bool m_undoInProgress = false;
  bool m_enabled = true;
  HWND m_mainWnd = nullptr;
  DWORD m_ownerThread;
};

}  // namespace kelp
