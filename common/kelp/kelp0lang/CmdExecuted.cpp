#include "kelp0lang/CmdExecuted.h"

#include <algorithm>
#include <memory>

namespace kelp {

ICmdExecuted::~ICmdExecuted() = default;

CCmdExecuted::CCmdExecuted(const WString& name) : m_name(name) {}

CCmdExecuted::CCmdExecuted(const CCmdExecuted& other) : m_name(other.m_name) {
  Show(other);
}

CCmdExecuted& CCmdExecuted::operator=(const CCmdExecuted& other) {
  if (this == &other) return *this;
  FreeCommands();
  m_name = other.m_name;
  Show(other);
  return *this;
}

CCmdExecuted::~CCmdExecuted() {
  FreeCommands();
}

void CCmdExecuted::Show(const CCmdExecuted& other) {
  Reserve(other.m_count);
  std::copy_n(other.m_commands, other.m_count, m_commands);
  m_count = m_borrowed = other.m_count;
  m_memSize = other.m_memSize;
}

void CCmdExecuted::FreeCommands() noexcept {
  for (std::uint32_t i = m_borrowed; i < m_count; ++i) delete m_commands[i];
  if (m_commands != &m_only) delete[] m_commands;
  m_commands = &m_only;
  m_count = m_borrowed = 0;
  m_capacity = 1;
}

void CCmdExecuted::Reserve(std::uint32_t capacity) {
  if (capacity <= m_capacity) return;
  auto* const commands = new ICmdExecuted*[capacity];
  std::copy_n(m_commands, m_count, commands);
  if (m_commands != &m_only) delete[] m_commands;
  m_commands = commands;
  m_capacity = capacity;
}

void CCmdExecuted::Add(ICmdExecuted* command) {
  if (m_count == m_capacity) Reserve(m_capacity == 1 ? 4 : m_capacity * 2);
  m_commands[m_count++] = command;
  m_memSize += command->GetMemSize();
}

void CCmdExecuted::Undo() {
  for (std::uint32_t i = 0; i < m_count; ++i) m_commands[i]->Undo();
}

void CCmdExecuted::Redo() {
  for (std::uint32_t i = 0; i < m_count; ++i) m_commands[i]->Redo();
}

bool CCmdExecuted::IsPresent(ICmdExecuted* command) const noexcept {
  ICmdExecuted* const* const end = m_commands + m_count;
  return std::find<ICmdExecuted* const*>(m_commands, end, command) != end;
}

CCmdExecutedList::IStrategy::~IStrategy() = default;

void CCmdExecutedList::GroupList::Append(CCmdExecuted* group) noexcept {
  group->m_previous = last;
  group->m_next = nullptr;
  (last != nullptr ? last->m_next : first) = group;
  last = group;
  ++count;
}

CCmdExecuted* CCmdExecutedList::GroupList::Unlink(CCmdExecuted* group) noexcept {
  (group->m_previous != nullptr ? group->m_previous->m_next : first) = group->m_next;
  (group->m_next != nullptr ? group->m_next->m_previous : last) = group->m_previous;
  --count;
  return group;
}

void CCmdExecutedList::GroupList::Free() noexcept {
  while (first != nullptr) delete Unlink(first);
}

CCmdExecutedList::CCmdExecutedList(IStrategy* strategy) : m_strategy(strategy) {}

CCmdExecutedList::~CCmdExecutedList() {
  FreeUndoList();
  delete m_strategy;
}

void CCmdExecutedList::Add(ICmdExecuted* command) {
  ++m_recordDepth;
  FreeRedoList();
  if (m_recording == nullptr) m_recording = new CCmdExecuted(m_pendingName);
  m_recording->Add(command);
  StopRecordCmd();
}

void CCmdExecutedList::StopRecordCmd() {
  if (--m_recordDepth != 0) return;
  if (m_recording != nullptr) {
    m_strategy->OnAdd(this, m_recording);
    m_undo.Append(m_recording);
    m_undoMemory += m_recording->GetMemSize();
    m_recording = nullptr;
  }
  if (!m_pendingName.empty()) m_pendingName = WString();
}

void CCmdExecutedList::DoUndoRedo(bool undo) {
  GroupList& source = undo ? m_undo : m_redo;
  if (source.count == 0) return;
  // Away from both lists while it runs: commands and listeners may work on the lists.
  std::unique_ptr<CCmdExecuted> group(source.Unlink(source.last));
  (undo ? m_undoMemory : m_redoMemory) -= group->GetMemSize();

  NotifyBeforeUndoRedoEvent(undo);
  if (undo) {
    group->Undo();
  } else {
    group->Redo();
  }
  NotifyAfterUndoRedoEvent(undo);
  RemoveUnregisteredReceivers();

  (undo ? m_redoMemory : m_undoMemory) += group->GetMemSize();
  (undo ? m_redo : m_undo).Append(group.release());
}

void CCmdExecutedList::NotifyBeforeUndoRedoEvent(bool undo) {
  m_listeners.ForEach([undo](IEvents* listener) { listener->OnBeforeUndoRedo(undo); });
}

void CCmdExecutedList::NotifyAfterUndoRedoEvent(bool undo) {
  m_listeners.ForEach([undo](IEvents* listener) { listener->OnAfterUndoRedo(undo); });
}

void CCmdExecutedList::RemoveUnregisteredReceivers() noexcept {
  m_listeners.RemoveUnregistered();
}

void CCmdExecutedList::FreeRedoList() noexcept {
  m_redo.Free();
  m_redoMemory = 0;
}

void CCmdExecutedList::FreeUndoList() {
  FreeRedoList();
  m_undo.Free();
  m_undoMemory = 0;
}

bool CCmdExecutedList::PopFrontCmd() {
  if (m_undo.count == 0) return false;
  CCmdExecuted* const oldest = m_undo.Unlink(m_undo.first);
  m_undoMemory -= oldest->GetMemSize();
  delete oldest;
  return true;
}

void CCmdExecutedListStrategyNumber::OnAdd(CCmdExecutedList* list, CCmdExecuted*) {
  if (m_limit == 0) return;
  while (list->GetUndoListSize() >= m_limit) list->PopFrontCmd();
}

}  // namespace kelp
