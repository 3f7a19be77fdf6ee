// Window classes, windows and their values.
#include <tchar.h>

#include <algorithm>
#include <cstring>

#include "WindowTable.h"

namespace winapi {

WindowTable& Table() {
  static WindowTable* const table = new WindowTable;
  return *table;
}

int InvalidWindow() {
  SetLastError(ERROR_INVALID_WINDOW_HANDLE);
  return 0;
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

namespace {

constexpr ATOM kFirstAtom = 0xC000;

int Fail(DWORD error) {
  SetLastError(error);
  return 0;
}

bool IsAtom(LPCWSTR name) {
  return reinterpret_cast<ULONG_PTR>(name) <= 0xFFFF;
}

using ClassList = std::vector<std::shared_ptr<WindowClass>>;

// By name or atom. A class of another module counts only if it is global.
ClassList::iterator FindClass(LPCWSTR name, HINSTANCE instance) {
  return std::find_if(Table().classes.begin(), Table().classes.end(), [=](const auto& c) {
    if (c->instance != instance && (c->style & CS_GLOBALCLASS) == 0) return false;
    return IsAtom(name) ? c->atom == static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(name))
                        : _wcsicmp(c->name.c_str(), name) == 0;
  });
}

ATOM FreeAtom() {
  ATOM atom = kFirstAtom;
  for (const auto& c : Table().classes) atom = std::max<ATOM>(atom, c->atom + 1);
  return atom;
}

// A handle is never given twice, so that a stale one stays invalid.
HWND NextHandle() {
  static ULONG_PTR last = 0x10000;
  return reinterpret_cast<HWND>(last += 2);
}

std::vector<HWND> Dependants(HWND window, bool children) {
  const std::lock_guard lock(Table().mutex);
  std::vector<HWND> found;
  for (const auto& [handle, record] : Table().windows) {
    if (record->parent == window && record->IsChild() == children) found.push_back(handle);
  }
  return found;
}

// Parents are told before their children, while all of them still exist.
void TellDestroy(HWND window) {
  SendMessageW(window, WM_DESTROY, 0, 0);
  for (const HWND child : Dependants(window, true)) TellDestroy(child);
}

// ... and go after them.
void TellNcDestroy(HWND window) {
  for (const HWND child : Dependants(window, true)) TellNcDestroy(child);
  SendMessageW(window, WM_NCDESTROY, 0, 0);
  const std::lock_guard lock(Table().mutex);
  Table().Erase(window);
}

// Owned windows go first.
void Destroy(HWND window) {
  {
    const std::lock_guard lock(Table().mutex);
    const auto record = Table().Find(window);
    if (record == nullptr || record->destroying) return;
    record->destroying = true;
  }
  for (const HWND owned : Dependants(window, false)) Destroy(owned);
  TellDestroy(window);
  TellNcDestroy(window);
}

// A new window of a class, not yet told of its birth; null with the last error.
HWND MakeWindow(LPCWSTR className, const CREATESTRUCTW& create) {
  const auto queue = ThreadQueue();
  const std::lock_guard lock(Table().mutex);
  const auto found = FindClass(className, create.hInstance);
  if (found == Table().classes.end()) {
    Fail(ERROR_CANNOT_FIND_WND_CLASS);
    return nullptr;
  }
  const DWORD style = static_cast<DWORD>(create.style);
  const HWND parent = create.hwndParent;
  if (parent == nullptr && (style & WS_CHILD) != 0) {
    Fail(ERROR_TLW_WITH_WSCHILD);
    return nullptr;
  }
  if (parent != nullptr && parent != HWND_MESSAGE && Table().Find(parent) == nullptr) {
    InvalidWindow();
    return nullptr;
  }

  const auto window = std::make_shared<Window>();
  window->handle = NextHandle();
  window->parent = parent;
  window->style = style;
  window->queue = queue;
  window->windowClass = *found;
  window->procedure = (*found)->procedure;
  window->instance = create.hInstance;
  window->id = reinterpret_cast<LONG_PTR>(create.hMenu);
  window->extra.resize((*found)->extraBytes);
  ++(*found)->windows;
  Table().windows[window->handle] = window;
  return window->handle;
}

// The place of a value; null with the last error where the index is none.
void* ValueOf(Window& window, int index) {
  switch (index) {
    case GWLP_WNDPROC:
      return &window.procedure;
    case GWLP_HINSTANCE:
      return &window.instance;
    case GWLP_ID:
      return &window.id;
    case GWLP_USERDATA:
      return &window.userData;
    default:
      break;
  }
  if (index >= 0 && static_cast<std::size_t>(index) + sizeof(LONG_PTR) <= window.extra.size()) {
    return window.extra.data() + index;
  }
  SetLastError(ERROR_INVALID_INDEX);
  return nullptr;
}

// Reads a value and, where there is a new one, replaces it.
LONG_PTR ExchangeValue(HWND window, int index, const LONG_PTR* value) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) return InvalidWindow();
  void* const place = ValueOf(*record, index);
  if (place == nullptr) return 0;
  LONG_PTR before;
  std::memcpy(&before, place, sizeof(before));
  if (value != nullptr) std::memcpy(place, value, sizeof(*value));
  return before;
}

}  // namespace
}  // namespace winapi

using winapi::Table;

ATOM WINAPI RegisterClassW(const WNDCLASSW* windowClass) {
  const WNDCLASSW& c = *windowClass;
  const WNDCLASSEXW extended{sizeof(WNDCLASSEXW), c.style,        c.lpfnWndProc,   c.cbClsExtra,
                             c.cbWndExtra,        c.hInstance,    c.hIcon,         c.hCursor,
                             c.hbrBackground,     c.lpszMenuName, c.lpszClassName, nullptr};
  return RegisterClassExW(&extended);
}

ATOM WINAPI RegisterClassExW(const WNDCLASSEXW* windowClass) {
  const WNDCLASSEXW& c = *windowClass;
  if (c.cbSize != sizeof(WNDCLASSEXW) || c.lpfnWndProc == nullptr || c.cbClsExtra < 0 ||
      c.cbWndExtra < 0 || winapi::IsAtom(c.lpszClassName)) {
    return static_cast<ATOM>(winapi::Fail(ERROR_INVALID_PARAMETER));
  }
  const std::lock_guard lock(Table().mutex);
  if (winapi::FindClass(c.lpszClassName, c.hInstance) != Table().classes.end()) {
    return static_cast<ATOM>(winapi::Fail(ERROR_CLASS_ALREADY_EXISTS));
  }
  const auto added = std::make_shared<winapi::WindowClass>(
      winapi::WindowClass{c.lpszClassName, winapi::FreeAtom(), c.hInstance, c.style, c.lpfnWndProc,
                          static_cast<std::size_t>(c.cbWndExtra)});
  Table().classes.push_back(added);
  return added->atom;
}

BOOL WINAPI UnregisterClassW(LPCWSTR name, HINSTANCE instance) {
  const std::lock_guard lock(Table().mutex);
  const auto found = winapi::FindClass(name, instance);
  if (found == Table().classes.end()) return winapi::Fail(ERROR_CLASS_DOES_NOT_EXIST);
  if ((*found)->windows > 0) return winapi::Fail(ERROR_CLASS_HAS_WINDOWS);
  Table().classes.erase(found);
  return TRUE;
}

HWND WINAPI CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR windowName, DWORD style,
                            int x, int y, int width, int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID param) {
  CREATESTRUCTW create{
      param,      instance,  menu,   parent, height, width, y, x, static_cast<LONG>(style),
      windowName, className, exStyle};
  const HWND window = winapi::MakeWindow(className, create);
  if (window == nullptr) return nullptr;
  const auto told = reinterpret_cast<LPARAM>(&create);
  if (SendMessageW(window, WM_NCCREATE, 0, told) == FALSE) {
    winapi::TellNcDestroy(window);
    return nullptr;
  }
  if (SendMessageW(window, WM_CREATE, 0, told) == -1) DestroyWindow(window);
  return IsWindow(window) ? window : nullptr;
}

BOOL WINAPI DestroyWindow(HWND window) {
  const auto queue = winapi::ThreadQueue();
  {
    const std::lock_guard lock(Table().mutex);
    const auto record = Table().Find(window);
    if (record == nullptr || record->destroying) return winapi::InvalidWindow();
    if (record->queue != queue) return winapi::Fail(ERROR_ACCESS_DENIED);
  }
  winapi::Destroy(window);
  return TRUE;
}

BOOL WINAPI IsWindow(HWND window) {
  const std::lock_guard lock(Table().mutex);
  return Table().Find(window) != nullptr;
}

HWND WINAPI GetActiveWindow() {
  return nullptr;
}

DWORD WINAPI GetWindowThreadProcessId(HWND window, LPDWORD processId) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) return static_cast<DWORD>(winapi::InvalidWindow());
  if (processId != nullptr) *processId = GetCurrentProcessId();
  return record->queue->threadId;
}

LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM, LPARAM) {
  switch (message) {
    case WM_NCCREATE:
    case WM_QUERYENDSESSION:
      return TRUE;
    case WM_CLOSE:
      DestroyWindow(window);
      return 0;
    default:
      return 0;
  }
}

LRESULT WINAPI CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                               LPARAM lParam) {
  return procedure(window, message, wParam, lParam);
}

LONG_PTR WINAPI GetWindowLongPtrW(HWND window, int index) {
  return winapi::ExchangeValue(window, index, nullptr);
}

LONG_PTR WINAPI SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
  return winapi::ExchangeValue(window, index, &value);
}
