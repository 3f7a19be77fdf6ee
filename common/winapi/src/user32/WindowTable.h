// The windows and message queues of the process, behind one lock. No window procedure is
// called with the lock held.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace winapi {

struct MessageQueue;

// A message on its way to another thread. Both sides hold it, so that either may go first.
struct SentMessage {
  HWND window;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  std::shared_ptr<MessageQueue> sender;
  LRESULT result = 0;
  bool answered = false;
  bool failed = false;

  void Answer(LRESULT answer);
  void Fail();
};

// What waits for one thread.
struct MessageQueue {
  DWORD threadId = GetCurrentThreadId();
  std::condition_variable wake;  // something was sent or posted, or an answer came
  std::deque<std::shared_ptr<SentMessage>> sent;
  std::deque<MSG> posted;
  bool quit = false;
  int exitCode = 0;
};

// Which of several classes of one name counts: the first of these.
enum class ClassScope { kModule, kProcess, kSystem };

struct WindowClass {
  std::u16string name;
  ATOM atom;
  HINSTANCE instance;
  ClassScope scope;
  WNDPROC procedure;
  std::size_t extraBytes;
  int windows = 0;
};

struct Window {
  HWND handle;
  HWND parent;  // of a child, else its owner; also HWND_MESSAGE
  LONG_PTR style;
  LONG_PTR exStyle;
  std::shared_ptr<MessageQueue> queue;
  std::shared_ptr<WindowClass> windowClass;
  WNDPROC procedure;
  HINSTANCE instance;
  LONG_PTR id = 0;       // of a child
  HMENU menu = nullptr;  // of others
  std::u16string text;
  LONG_PTR userData = 0;
  std::vector<std::byte> extra;
  bool destroying = false;

  bool IsChild() const { return (style & WS_CHILD) != 0; }
  HWND Owner() const { return IsChild() || parent == HWND_MESSAGE ? nullptr : parent; }
  // Under which its siblings stand; null for top-level windows.
  HWND Container() const { return Owner() == nullptr ? parent : nullptr; }
};

struct WindowTable {
  std::mutex mutex;
  std::map<HWND, std::shared_ptr<Window>> windows;  // the older first
  std::map<DWORD, std::shared_ptr<MessageQueue>> queues;

  // With the lock held. A handle of nothing gives null.
  std::shared_ptr<Window> Find(HWND window) const;
  // Forgets a window and all that waits for it.
  void Erase(HWND window);
};

// It outlives all threads and static objects.
WindowTable& Table();

// The queue of the calling thread, made at its first call. It ends behind the thread's local
// objects, and so do the thread's windows; that of the main thread outlives the static objects.
// Takes the lock.
std::shared_ptr<MessageQueue> ThreadQueue();

}  // namespace winapi
