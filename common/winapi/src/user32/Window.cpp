// Window classes, windows, their text and values.
#include <algorithm>
#include <cstring>

#include "CopyText.h"
#include "Fail.h"
#include "kernel32/PathName.h"
#include "user32/WindowTable.h"

namespace winapi {

namespace {

constexpr ATOM kFirstAtom = 0xC000;

HINSTANCE InstanceOrProgram(HINSTANCE instance) {
  static const HINSTANCE program = GetModuleHandleW(nullptr);
  return instance != nullptr ? instance : program;
}

using Classes = std::vector<std::shared_ptr<WindowClass>>;

ATOM FreeAtom(const Classes& classes) {
  ATOM atom = kFirstAtom;
  for (const auto& c : classes) atom = std::max<ATOM>(atom, c->atom + 1);
  return atom;
}

Classes ClassesOfSystem() {
  Classes classes;
  for (const char16_t* name : {u"Button", u"ComboBox", u"Edit", u"ListBox", u"Static"}) {
    classes.push_back(std::make_shared<WindowClass>(
        WindowClass{name, FreeAtom(classes), nullptr, ClassScope::kSystem, DefWindowProcW, 0}));
  }
  return classes;
}

// All that are registered, guarded by the table's lock. They outlive all threads.
Classes& AllClasses() {
  static Classes& classes = *new Classes(ClassesOfSystem());
  return classes;
}

// Under a name or atom, of a module, the process or the system.
std::shared_ptr<WindowClass> FindClass(LPCWSTR name, HINSTANCE instance, ClassScope scope) {
  const Classes& classes = AllClasses();
  const auto found = std::find_if(classes.begin(), classes.end(), [=](const auto& c) {
    if (c->scope != scope || (scope == ClassScope::kModule && c->instance != instance)) {
      return false;
    }
    return IS_INTRESOURCE(name) ? c->atom == static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(name))
                                : FoldedName(c->name) == FoldedName(name);
  });
  return found == classes.end() ? nullptr : *found;
}

std::shared_ptr<WindowClass> FindClass(LPCWSTR name, HINSTANCE instance) {
  for (const auto scope : {ClassScope::kModule, ClassScope::kProcess, ClassScope::kSystem}) {
    if (const auto found = FindClass(name, instance, scope)) return found;
  }
  return nullptr;
}

// A handle is never given twice, so that a stale one stays invalid.
HWND NextHandle() {
  static ULONG_PTR last = 0x10000;
  return reinterpret_cast<HWND>(last += 2);
}

// From the top down. No call changes the order.
std::vector<HWND> InOrder(HWND container) {
  std::vector<HWND> found;
  for (const auto& [handle, record] : Table().windows) {
    if (record->Container() == container) found.push_back(handle);
  }
  if (container == nullptr || container == HWND_MESSAGE) std::reverse(found.begin(), found.end());
  return found;
}

// What stands a number of places below a window.
HWND SiblingOf(const Window& window, int below) {
  const std::vector<HWND> siblings = InOrder(window.Container());
  const auto at = std::find(siblings.begin(), siblings.end(), window.handle) - siblings.begin();
  const std::ptrdiff_t wanted = at + below;
  const bool exists = wanted >= 0 && wanted < static_cast<std::ptrdiff_t>(siblings.size());
  return exists ? siblings[static_cast<std::size_t>(wanted)] : nullptr;
}

// Only a window that is no child owns others.
HWND OwnerFor(HWND window) {
  for (auto record = Table().Find(window); record != nullptr && record->IsChild();
       record = Table().Find(window)) {
    window = record->parent;
  }
  return window;
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
  const auto windowClass = FindClass(className, create.hInstance);
  if (windowClass == nullptr) {
    return Fail<HWND>(ERROR_CANNOT_FIND_WND_CLASS);
  }
  const DWORD style = static_cast<DWORD>(create.style);
  const HWND parent = create.hwndParent;
  if (parent == nullptr && (style & WS_CHILD) != 0) {
    return Fail<HWND>(ERROR_TLW_WITH_WSCHILD);
  }
  if (parent != nullptr && parent != HWND_MESSAGE && Table().Find(parent) == nullptr) {
    return Fail<HWND>(ERROR_INVALID_WINDOW_HANDLE);
  }

  const auto window = std::make_shared<Window>();
  window->handle = NextHandle();
  window->style = style;
  window->exStyle = create.dwExStyle;
  window->parent = window->IsChild() ? parent : OwnerFor(parent);
  window->queue = queue;
  window->windowClass = windowClass;
  window->procedure = windowClass->procedure;
  window->instance = create.hInstance;
  if (window->IsChild()) {
    window->id = reinterpret_cast<LONG_PTR>(create.hMenu);
  } else {
    window->menu = create.hMenu;
  }
  window->extra.resize(windowClass->extraBytes);
  ++windowClass->windows;
  Table().windows[window->handle] = window;
  return window->handle;
}

// The place of a value of a number of bytes; null with the last error where the index is none.
void* ValueOf(Window& window, int index, std::size_t width) {
  const struct {
    int index;
    void* value;
    std::size_t width;  // that it needs
  } values[] = {{GWL_STYLE, &window.style, sizeof(LONG)},
                {GWL_EXSTYLE, &window.exStyle, sizeof(LONG)},
                {GWLP_WNDPROC, &window.procedure, sizeof(LONG_PTR)},
                {GWLP_HINSTANCE, &window.instance, sizeof(LONG_PTR)},
                {GWLP_ID, &window.id, sizeof(LONG)},
                {GWLP_USERDATA, &window.userData, sizeof(LONG)}};
  for (const auto& value : values) {
    if (value.index == index && width >= value.width) return value.value;
  }
  if (index >= 0 && static_cast<std::size_t>(index) + width <= window.extra.size()) {
    return window.extra.data() + index;
  }
  return Fail<void*>(ERROR_INVALID_INDEX);
}

// Reads a value and, where there is a new one, replaces it.
template <class Value>
Value ExchangeValue(HWND window, int index, const Value* value) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  void* const place = ValueOf(*record, index, sizeof(Value));
  if (place == nullptr) return 0;
  Value before;
  std::memcpy(&before, place, sizeof(before));
  if (value != nullptr) std::memcpy(place, value, sizeof(*value));
  return before;
}

BOOL SetText(HWND window, LPCWSTR text) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  record->text = text != nullptr ? text : u"";
  return TRUE;
}

std::u16string TextOf(HWND window) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  return record != nullptr ? record->text : std::u16string();
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
      c.cbWndExtra < 0 || IS_INTRESOURCE(c.lpszClassName)) {
    return Fail<ATOM>(ERROR_INVALID_PARAMETER);
  }
  const HINSTANCE instance = winapi::InstanceOrProgram(c.hInstance);
  const auto scope =
      (c.style & CS_GLOBALCLASS) != 0 ? winapi::ClassScope::kProcess : winapi::ClassScope::kModule;
  const std::lock_guard lock(Table().mutex);
  if (winapi::FindClass(c.lpszClassName, instance, scope) != nullptr) {
    return Fail<ATOM>(ERROR_CLASS_ALREADY_EXISTS);
  }
  const auto added = std::make_shared<winapi::WindowClass>(
      winapi::WindowClass{c.lpszClassName, winapi::FreeAtom(winapi::AllClasses()), instance, scope,
                          c.lpfnWndProc, static_cast<std::size_t>(c.cbWndExtra)});
  winapi::AllClasses().push_back(added);
  return added->atom;
}

BOOL WINAPI UnregisterClassW(LPCWSTR name, HINSTANCE instance) {
  const std::lock_guard lock(Table().mutex);
  const auto found = winapi::FindClass(name, winapi::InstanceOrProgram(instance));
  if (found == nullptr || found->scope == winapi::ClassScope::kSystem) {
    return Fail(ERROR_CLASS_DOES_NOT_EXIST);
  }
  if (found->windows > 0) return Fail(ERROR_CLASS_HAS_WINDOWS);
  std::erase(winapi::AllClasses(), found);
  return TRUE;
}

HWND WINAPI CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR windowName, DWORD style,
                            int x, int y, int width, int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID param) {
  CREATESTRUCTW create{param,
                       winapi::InstanceOrProgram(instance),
                       menu,
                       parent,
                       height,
                       width,
                       y,
                       x,
                       static_cast<LONG>(style),
                       windowName,
                       className,
                       exStyle};
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
    if (record == nullptr || record->destroying) return Fail(ERROR_INVALID_WINDOW_HANDLE);
    if (record->queue != queue) return Fail(ERROR_ACCESS_DENIED);
  }
  winapi::Destroy(window);
  return TRUE;
}

BOOL WINAPI IsWindow(HWND window) {
  const std::lock_guard lock(Table().mutex);
  return Table().Find(window) != nullptr;
}

HWND WINAPI GetWindow(HWND window, UINT command) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) {
    return Fail<HWND>(ERROR_INVALID_WINDOW_HANDLE);
  }
  const auto top = [](const std::vector<HWND>& windows) {
    return windows.empty() ? nullptr : windows.front();
  };
  switch (command) {
    case GW_HWNDFIRST:
      return top(winapi::InOrder(record->Container()));
    case GW_HWNDLAST:
      return winapi::InOrder(record->Container()).back();
    case GW_HWNDNEXT:
      return winapi::SiblingOf(*record, 1);
    case GW_HWNDPREV:
      return winapi::SiblingOf(*record, -1);
    case GW_OWNER:
      return record->Owner();
    case GW_CHILD:
      return top(winapi::InOrder(window));
    default:
      return Fail<HWND>(ERROR_INVALID_GW_COMMAND);
  }
}

HWND WINAPI GetParent(HWND window) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) {
    return Fail<HWND>(ERROR_INVALID_WINDOW_HANDLE);
  }
  if (record->IsChild()) return record->parent;
  return (record->style & WS_POPUP) != 0 ? record->Owner() : nullptr;
}

int WINAPI GetClassNameW(HWND window, LPWSTR name, int size) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  if (size <= 0) return Fail(ERROR_INSUFFICIENT_BUFFER);
  return CopyText(record->windowClass->name, name, size);
}

HMENU WINAPI GetMenu(HWND window) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record != nullptr) return record->menu;
  return Fail<HMENU>(ERROR_INVALID_WINDOW_HANDLE);
}

int WINAPI GetWindowTextLengthW(HWND window) {
  return static_cast<int>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
}

int WINAPI GetWindowTextW(HWND window, LPWSTR text, int size) {
  if (text == nullptr || size <= 0) return 0;
  text[0] = 0;
  return static_cast<int>(
      SendMessageW(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(text)));
}

BOOL WINAPI SetWindowTextW(HWND window, LPCWSTR text) {
  return SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) == TRUE;
}

HWND WINAPI GetActiveWindow() {
  return nullptr;
}

DWORD WINAPI GetWindowThreadProcessId(HWND window, LPDWORD processId) {
  const std::lock_guard lock(Table().mutex);
  const auto record = Table().Find(window);
  if (record == nullptr) return Fail<DWORD>(ERROR_INVALID_WINDOW_HANDLE);
  if (processId != nullptr) *processId = GetCurrentProcessId();
  return record->queue->threadId;
}

LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_NCCREATE:
      return winapi::SetText(window, reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpszName);
    case WM_SETTEXT:
      return winapi::SetText(window, reinterpret_cast<LPCWSTR>(lParam));
    case WM_GETTEXT:
      return CopyText(winapi::TextOf(window), reinterpret_cast<LPWSTR>(lParam),
                      static_cast<int>(wParam));
    case WM_GETTEXTLENGTH:
      return static_cast<LRESULT>(winapi::TextOf(window).size());
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

LONG WINAPI GetWindowLongW(HWND window, int index) {
  return winapi::ExchangeValue<LONG>(window, index, nullptr);
}

LONG_PTR WINAPI GetWindowLongPtrW(HWND window, int index) {
  return winapi::ExchangeValue<LONG_PTR>(window, index, nullptr);
}

LONG_PTR WINAPI SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
  if (index == GWL_STYLE || index == GWL_EXSTYLE) return Fail(ERROR_INVALID_INDEX);
  return winapi::ExchangeValue<LONG_PTR>(window, index, &value);
}
