// Undo and redo: reversible commands, the groups that they gather in, and the list of groups.
//
//   class MovePoint : public kelp::ICmdExecuted { ... };      // knows how to go back and forth
//   auto* list = new kelp::CCmdExecutedList(new kelp::CCmdExecutedListStrategyNumber(20));
//   list->StartRecordCmd();                                    // one action of the user ...
//   list->Add(new MovePoint(p));
//   list->Add(new MovePoint(q));
//   list->StopRecordCmd();                                     // ... is one group
//   if (list->CanUndo()) list->Undo();                         // takes both moves back
//
// A command is added after it was carried out; the list doesn't call Redo for the first time round.
//
// Threads: no lock is taken. One list is driven on one thread at a time; only its reference count
// may be touched from any thread.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"
#include "kelp0lang/Object.h"
#include "kelp0lang/RegistrationMap.h"
#include "kelp0lang/String.h"

namespace kelp {

// One reversible change. Undo and Redo must not throw.
class KELP0LANG_API ICmdExecuted {
 public:
  virtual ~ICmdExecuted();
  virtual void Undo() = 0;
  virtual void Redo() = 0;
  // What this command holds, in bytes; asked once, when it joins a group.
  virtual unsigned int GetMemSize() = 0;
};

// The commands of one action. It owns what was added to it. A copy shows the same commands without
// owning them, so it mustn't be used once its source is gone; what is added to the copy later is
// its own.
class KELP0LANG_API CCmdExecuted {
 public:
  explicit CCmdExecuted(const WString& name);
  CCmdExecuted(const CCmdExecuted& other);
  CCmdExecuted& operator=(const CCmdExecuted& other);
  ~CCmdExecuted();

  void Add(ICmdExecuted* command);
  // Both run the commands from the first added to the last, an undo too: commands of one group that
  // don't commute are built to fit that.
  void Undo();
  void Redo();

  bool IsEmpty() const noexcept { return m_count == 0; }
  bool IsPresent(ICmdExecuted* command) const noexcept;
  // The sum of GetMemSize of the commands, bytes.
  unsigned int GetMemSize() const noexcept { return m_memSize; }
  // That of the constructor.
  const WString& GetName() const noexcept { return m_name; }

 private:
  friend class CCmdExecutedList;

  // Takes the commands of another, without owning them.
  void Show(const CCmdExecuted& other);
  void Reserve(std::uint32_t capacity);
  void FreeCommands() noexcept;

  WString m_name;
  // Most groups have one command; a single one needs no array.
  ICmdExecuted** m_commands = &m_only;
  ICmdExecuted* m_only = nullptr;
  std::uint32_t m_count = 0;
  std::uint32_t m_capacity = 1;
  unsigned int m_memSize = 0;
  std::uint32_t m_borrowed = 0;  // commands at the front that belong to the source of this copy
  // Places in the list of groups.
  CCmdExecuted* m_previous = nullptr;
  CCmdExecuted* m_next = nullptr;
};

// The undo list and the redo list. A group runs from the first StartRecordCmd to the StopRecordCmd
// that closes it; without an open record each command is a group of its own. The list lives by
// reference count and isn't copied: copies couldn't agree on who owns the groups.
class KELP0LANG_API CCmdExecutedList : public IRefCounter {
 public:
  // Decides how much is kept.
  //
  //   class ByMemory : public kelp::CCmdExecutedList::IStrategy {
  //     void OnAdd(kelp::CCmdExecutedList* list, kelp::CCmdExecuted* group) override {
  //       while (list->GetUndoMemSize() + group->GetMemSize() > kMost && list->PopFrontCmd()) {
  //       }
  //     }
  //   };
  class KELP0LANG_API IStrategy {
   public:
    virtual ~IStrategy();
    // Called with a finished group before it joins the undo list, so that older ones can leave
    // (PopFrontCmd).
    virtual void OnAdd(CCmdExecutedList* list, CCmdExecuted* group) = 0;
  };

  // Hears of each undo (true) and redo (false).
  //
  //   class View : public kelp::CCmdExecutedList::IEvents {
  //    public:
  //     explicit View(kelp::CCmdExecutedList& list) : m_list(list) { m_list.Register(this); }
  //     ~View() { m_list.Unregister(this); }
  //
  //    private:
  //     void OnBeforeUndoRedo(bool) override { FreezeDrawing(); }
  //     void OnAfterUndoRedo(bool undo) override {
  //       Redraw(undo ? KTEXT("undone") : KTEXT("redone"));
  //     }
  //
  //     kelp::CCmdExecutedList& m_list;  // outlives the view
  //   };
  //
  // While they are called the group is in neither list: CanUndo, CanRedo, the sizes and the memory
  // count it again only when Undo or Redo has returned, which is when menus are brought up to date.
  class KELP0LANG_API IEvents {
   public:
    virtual void OnBeforeUndoRedo(bool undo) = 0;
    virtual void OnAfterUndoRedo(bool undo) = 0;

   protected:
    ~IEvents() = default;
  };

  // Takes ownership of the strategy, which isn't null.
  explicit CCmdExecutedList(IStrategy* strategy);
  ~CCmdExecutedList() override;
  CCmdExecutedList(const CCmdExecutedList&) = delete;
  CCmdExecutedList& operator=(const CCmdExecutedList&) = delete;

  // Takes ownership of a command that has just been carried out. It deletes the redo list.
  void Add(ICmdExecuted* command);

  // Records nest; the outermost StopRecordCmd closes the group. A record without a command leaves
  // no group and keeps the redo list.
  void StartRecordCmd() noexcept { ++m_recordDepth; }
  void StopRecordCmd();

  // The name that the next group gets. It lasts until a record ends, a record of one command too.
  void SetPendingName(const WString& name) { m_pendingName = name; }

  // Takes back, or carries out again, the latest group. Nothing happens where there is none. If a
  // command or a listener throws, the group is deleted.
  void Undo() { DoUndoRedo(true); }
  void Redo() { DoUndoRedo(false); }
  // Whether there is such a group.
  bool CanUndo() const noexcept { return m_undo.count > 0; }
  bool CanRedo() const noexcept { return m_redo.count > 0; }

  // Deletes the groups of both lists.
  void FreeUndoList();
  // Deletes the oldest group of the undo list; false where there is none.
  bool PopFrontCmd();

  // The group of the open record; null before its first command. A list that is destroyed with a
  // record open leaves that group to whoever took it here.
  CCmdExecuted* GetRecCmd() const noexcept { return m_recording; }
  // Groups of the undo list.
  unsigned int GetUndoListSize() const noexcept { return m_undo.count; }
  // Bytes by the commands' own account: of the undo list, of the redo list, of both.
  unsigned int GetUndoMemSize() const noexcept { return m_undoMemory; }
  unsigned int GetRedoMemSize() const noexcept { return m_redoMemory; }
  unsigned int GetMemSize() const noexcept { return m_undoMemory + m_redoMemory; }

  // Listeners aren't owned. They are told in ascending order of address. They may come and go at
  // any time: one that leaves during a notification isn't told any more, one that joins is told if
  // its address is above that of the listener now being told.
  void Register(IEvents* listener) { m_listeners.Register(listener); }
  void Unregister(IEvents* listener) noexcept { m_listeners.Unregister(listener); }

 private:
  // Oldest first; owns its groups.
  struct GroupList {
    CCmdExecuted* first = nullptr;
    CCmdExecuted* last = nullptr;
    unsigned int count = 0;

    void Append(CCmdExecuted* group) noexcept;
    CCmdExecuted* Unlink(CCmdExecuted* group) noexcept;
    void Free() noexcept;
  };

  void DoUndoRedo(bool undo);
  void FreeRedoList() noexcept;
  void NotifyBeforeUndoRedoEvent(bool undo);
  void NotifyAfterUndoRedoEvent(bool undo);
  void RemoveUnregisteredReceivers() noexcept;

  GroupList m_undo;
  GroupList m_redo;
  detail::RegistrationMap<IEvents> m_listeners;
  IStrategy* m_strategy;
  WString m_pendingName;
  CCmdExecuted* m_recording = nullptr;
  int m_recordDepth = 0;
  unsigned int m_undoMemory = 0;
  unsigned int m_redoMemory = 0;
};

// Keeps at most limit groups to undo; 0 keeps all. The redo list has no limit.
class KELP0LANG_API CCmdExecutedListStrategyNumber : public CCmdExecutedList::IStrategy {
 public:
  explicit CCmdExecutedListStrategyNumber(unsigned int limit) : m_limit(limit) {}
  void OnAdd(CCmdExecutedList* list, CCmdExecuted* group) override;

 private:
  unsigned int m_limit;
};

}  // namespace kelp
