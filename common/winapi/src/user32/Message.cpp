// Message queues: sending, posting, and the loop.
#include <algorithm>
#include <chrono>
#include <vector>

#include "Fail.h"
#include "user32/WindowTable.h"

namespace winapi {

namespace {

constexpr std::size_t kMaxPosted = 10000;
const HWND kNoWindow = reinterpret_cast<HWND>(static_cast<std::intptr_t>(-1));

// Answers the first message that another thread sent to this one; false where there is none. The
// lock is left while the window's procedure runs.
bool AnswerOne(std::unique_lock<std::mutex>& lock, MessageQueue& queue) {
  if (queue.sent.empty()) return false;
  const std::shared_ptr<SentMessage> sent = queue.sent.front();
  queue.sent.pop_front();
  const WNDPROC procedure = Table().Find(sent->window)->procedure;
  lock.unlock();
  try {
    const LRESULT result = procedure(sent->window, sent->message, sent->wParam, sent->lParam);
    lock.lock();
    sent->Answer(result);
  } catch (...) {
    // Also where the thread is ended from inside: the sender mustn't wait for ever.
    if (!lock.owns_lock()) lock.lock();
    sent->Fail();
    throw;
  }
  return true;
}

bool Post(MessageQueue& queue, const MSG& message) {
  if (queue.posted.size() >= kMaxPosted) {
    return Fail(ERROR_NOT_ENOUGH_QUOTA);
  }
  queue.posted.push_back(message);
  queue.wake.notify_one();
  return true;
}

// Which posted messages a loop asks for.
struct Filter {
  HWND window;
  UINT first;
  UINT last;

  bool HasWindow() const { return window != nullptr && window != kNoWindow; }
  bool Passes(const MSG& message) const {
    if ((first != 0 || last != 0) && (message.message < first || message.message > last)) {
      return false;
    }
    if (window == nullptr) return true;
    return window == kNoWindow ? message.hwnd == nullptr : IsSameOrChild(message.hwnd);
  }

 private:
  bool IsSameOrChild(HWND candidate) const {
    while (candidate != window) {
      const auto record = Table().Find(candidate);
      if (record == nullptr || !record->IsChild()) return false;
      candidate = record->parent;
    }
    return true;
  }
};

// The next message for a loop; WM_QUIT stands behind all posted ones.
bool NextMessage(MessageQueue& queue, const Filter& filter, bool remove, MSG* message) {
  const auto found = std::find_if(queue.posted.begin(), queue.posted.end(),
                                  [&filter](const MSG& m) { return filter.Passes(m); });
  if (found != queue.posted.end()) {
    *message = *found;
    if (remove) queue.posted.erase(found);
    return true;
  }
  if (!queue.quit) return false;
  *message = {nullptr, WM_QUIT, static_cast<WPARAM>(queue.exitCode), 0, GetTickCount(), {0, 0}};
  if (remove) queue.quit = false;
  return true;
}

enum class Wait { kNo, kYes };

// 1 with a message, 0 without, -1 where the filter's window isn't this thread's.
int Retrieve(MSG* message, const Filter& filter, bool remove, Wait wait) {
  const std::shared_ptr<MessageQueue> queue = ThreadQueue();
  std::unique_lock lock(Table().mutex);
  for (;;) {
    while (AnswerOne(lock, *queue)) {
    }
    if (filter.HasWindow()) {
      // Looked up each time: the window may go while the loop waits for its messages.
      const auto window = Table().Find(filter.window);
      if (window == nullptr || window->queue != queue) return Fail(ERROR_INVALID_WINDOW_HANDLE, -1);
    }
    if (NextMessage(*queue, filter, remove, message)) return 1;
    if (wait == Wait::kNo) return 0;
    queue->wake.wait(lock);
  }
}

using Deadline = std::chrono::steady_clock::time_point;

// Until something may have come for the queue; false once the time is over.
bool WaitUntil(std::unique_lock<std::mutex>& lock, MessageQueue& queue, const Deadline* deadline) {
  if (deadline != nullptr) {
    return queue.wake.wait_until(lock, *deadline) == std::cv_status::no_timeout;
  }
  queue.wake.wait(lock);
  return true;
}

// Has the window's thread answer a message; null waits for as long as it takes. False, and the last
// error, where it isn't answered.
bool Send(const SentMessage& message, const Deadline* deadline, LRESULT& result) {
  const std::shared_ptr<MessageQueue>& queue = message.sender;
  std::unique_lock lock(Table().mutex);
  const auto record = Table().Find(message.window);
  if (record == nullptr) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  if (record->queue == queue) {
    const WNDPROC procedure = record->procedure;
    lock.unlock();
    result = procedure(message.window, message.message, message.wParam, message.lParam);
    return true;
  }
  const auto sent = std::make_shared<SentMessage>(message);
  record->queue->sent.push_back(sent);
  record->queue->wake.notify_one();
  while (!sent->answered) {
    if (AnswerOne(lock, *queue) || WaitUntil(lock, *queue, deadline) || sent->answered) continue;
    std::erase(record->queue->sent, sent);
    return Fail(ERROR_TIMEOUT);
  }
  if (sent->failed) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  result = sent->result;
  return true;
}

std::vector<HWND> TopLevelWindows() {
  const std::lock_guard lock(Table().mutex);
  std::vector<HWND> windows;
  for (const auto& [handle, window] : Table().windows) {
    if (window->Container() == nullptr) windows.push_back(handle);
  }
  return windows;
}

}  // namespace

}  // namespace winapi

using winapi::Table;

LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  LRESULT result = 0;
  winapi::Send({window, message, wParam, lParam, winapi::ThreadQueue()}, nullptr, result);
  return result;
}

LRESULT WINAPI SendMessageTimeoutW(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                   UINT flags, UINT time, ULONG_PTR* result) {
  if (flags != SMTO_NORMAL) return Fail(ERROR_NOT_SUPPORTED);
  const bool isForAll = window == HWND_BROADCAST;
  bool isAnswered = isForAll;
  for (const HWND each : isForAll ? winapi::TopLevelWindows() : std::vector{window}) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(time);
    LRESULT answer = 0;
    isAnswered |=
        winapi::Send({each, message, wParam, lParam, winapi::ThreadQueue()}, &deadline, answer);
    if (!isForAll && result != nullptr) *result = static_cast<ULONG_PTR>(answer);
  }
  return isAnswered;
}

BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const auto queue = winapi::ThreadQueue();
  if (window == nullptr) return PostThreadMessageW(queue->threadId, message, wParam, lParam);
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  return winapi::Post(*record->queue, {window, message, wParam, lParam, GetTickCount(), {0, 0}});
}

BOOL WINAPI PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
  const std::lock_guard lock(Table().mutex);
  const auto found = Table().queues.find(threadId);
  if (found == Table().queues.end()) {
    return Fail(ERROR_INVALID_THREAD_ID);
  }
  return winapi::Post(*found->second, {nullptr, message, wParam, lParam, GetTickCount(), {0, 0}});
}

void WINAPI PostQuitMessage(int exitCode) {
  const auto queue = winapi::ThreadQueue();
  const std::lock_guard lock(Table().mutex);
  queue->quit = true;
  queue->exitCode = exitCode;
}

BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
  const int found = winapi::Retrieve(message, {window, first, last}, true, winapi::Wait::kYes);
  return found == 1 ? message->message != WM_QUIT : found;
}

BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
  const bool take = (remove & PM_REMOVE) != 0;
  return winapi::Retrieve(message, {window, first, last}, take, winapi::Wait::kNo) == 1;
}

BOOL WINAPI TranslateMessage(const MSG* message) {
  switch (message->message) {
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_SYSKEYDOWN:
    case WM_SYSKEYUP:
      return TRUE;
    default:
      return FALSE;
  }
}

LRESULT WINAPI DispatchMessageW(const MSG* message) {
  const auto queue = winapi::ThreadQueue();
  std::unique_lock lock(Table().mutex);
  const auto record = Table().Find(message->hwnd);
  if (record == nullptr || record->queue != queue) return 0;
  const WNDPROC procedure = record->procedure;
  lock.unlock();
  return procedure(message->hwnd, message->message, message->wParam, message->lParam);
}
