#include "user32/WindowTable.h"

#include <algorithm>

#include "kernel32/KernelObject.h"

namespace winapi {

void SentMessage::Answer(LRESULT answer) {
  result = answer;
  answered = true;
  sender->wake.notify_one();
}

void SentMessage::Fail() {
  failed = true;
  Answer(0);
}

namespace {

// The thread's hold on its queue. No thread_local object: these end one by one, those of the main
// thread even before the static ones, and one that ends later may still call.
class QueueOwner {
 public:
  QueueOwner() {
    const std::lock_guard lock(Table().mutex);
    Table().queues[m_queue->threadId] = m_queue;
  }
  ~QueueOwner() {
    WindowTable& table = Table();
    const std::lock_guard lock(table.mutex);
    std::vector<HWND> windows;
    for (const auto& [handle, window] : table.windows) {
      if (window->queue == m_queue) windows.push_back(handle);
    }
    for (const HWND window : windows) table.Erase(window);
    table.queues.erase(m_queue->threadId);
  }
  const std::shared_ptr<MessageQueue>& Queue() const { return m_queue; }

 private:
  std::shared_ptr<MessageQueue> m_queue = std::make_shared<MessageQueue>();
};

}  // namespace

WindowTable& Table() {
  static WindowTable* const table = new WindowTable;
  return *table;
}

std::shared_ptr<Window> WindowTable::Find(HWND window) const {
  const auto found = windows.find(window);
  return found == windows.end() ? nullptr : found->second;
}

void WindowTable::Erase(HWND window) {
  const auto record = Find(window);
  if (record == nullptr) return;
  windows.erase(window);
  --record->windowClass->windows;
  if (record->menu != nullptr) DestroyMenu(record->menu);
  MessageQueue& queue = *record->queue;
  std::erase_if(queue.posted, [window](const MSG& message) { return message.hwnd == window; });
  std::erase_if(queue.sent, [window](const std::shared_ptr<SentMessage>& sent) {
    if (sent->window != window) return false;
    sent->Fail();
    return true;
  });
  // A loop that waits for this window's messages has to see that it is gone.
  queue.wake.notify_one();
}

std::shared_ptr<MessageQueue> ThreadQueue() {
  std::shared_ptr<void>& owner = Thread::Current().windows;
  if (owner == nullptr) owner = std::make_shared<QueueOwner>();
  return static_cast<const QueueOwner*>(owner.get())->Queue();
}

}  // namespace winapi
