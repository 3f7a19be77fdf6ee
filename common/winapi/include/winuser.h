// Windows and the messages between them and between threads.
//
// There is no screen, keyboard or mouse behind the windows: a message comes only from the program
// itself, and WM_PAINT, WM_TIMER and input never come by themselves.
#pragma once

#include "windef.h"

typedef LRESULT(CALLBACK* WNDPROC)(HWND, UINT, WPARAM, LPARAM);

#define WM_NULL 0x0000
#define WM_CREATE 0x0001
#define WM_DESTROY 0x0002
#define WM_CLOSE 0x0010
#define WM_QUERYENDSESSION 0x0011
#define WM_QUIT 0x0012
#define WM_KEYDOWN 0x0100
#define WM_KEYUP 0x0101
#define WM_SYSKEYDOWN 0x0104
#define WM_SYSKEYUP 0x0105
#define WM_NCCREATE 0x0081
#define WM_NCDESTROY 0x0082
#define WM_USER 0x0400
#define WM_APP 0x8000

#define WS_OVERLAPPED 0x00000000L
#define WS_CHILD 0x40000000L
#define WS_POPUP 0x80000000L
#define CW_USEDEFAULT ((int)0x80000000)

// As a parent: the window only exchanges messages. It is never shown and not among the top-level
// windows.
#define HWND_MESSAGE ((HWND)(intptr_t)-3)

#define CS_GLOBALCLASS 0x4000

#define MAKEINTATOM(atom) ((LPWSTR)(ULONG_PTR)(WORD)(atom))

typedef struct tagWNDCLASSW {
  UINT style;
  WNDPROC lpfnWndProc;
  int cbClsExtra;
  int cbWndExtra;
  HINSTANCE hInstance;
  HICON hIcon;
  HCURSOR hCursor;
  HBRUSH hbrBackground;
  LPCWSTR lpszMenuName;
  LPCWSTR lpszClassName;
} WNDCLASSW;

typedef struct tagWNDCLASSEXW {
  UINT cbSize;
  UINT style;
  WNDPROC lpfnWndProc;
  int cbClsExtra;
  int cbWndExtra;
  HINSTANCE hInstance;
  HICON hIcon;
  HCURSOR hCursor;
  HBRUSH hbrBackground;
  LPCWSTR lpszMenuName;
  LPCWSTR lpszClassName;
  HICON hIconSm;
} WNDCLASSEXW;

typedef struct tagCREATESTRUCTW {
  LPVOID lpCreateParams;
  HINSTANCE hInstance;
  HMENU hMenu;
  HWND hwndParent;
  int cy;
  int cx;
  int y;
  int x;
  LONG style;
  LPCWSTR lpszName;
  LPCWSTR lpszClass;
  DWORD dwExStyle;
} CREATESTRUCTW;

typedef struct tagMSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;  // ms, of a clock that runs evenly
  POINT pt;    // without a pointing device (0, 0)
} MSG, *LPMSG;

// Classes. A name is compared without regard to case and belongs to a module, or with
// CS_GLOBALCLASS to the process. An atom (MAKEINTATOM) serves in place of the name.
WINAPI_EXPORT ATOM WINAPI RegisterClassW(const WNDCLASSW* windowClass);
WINAPI_EXPORT ATOM WINAPI RegisterClassExW(const WNDCLASSEXW* windowClass);
// Fails while a window of the class exists.
WINAPI_EXPORT BOOL WINAPI UnregisterClassW(LPCWSTR name, HINSTANCE instance);

// A window belongs to the thread that makes it; it goes with that thread at the latest. It is told
// WM_NCCREATE, which can refuse (FALSE), and WM_CREATE, which can too (-1).
WINAPI_EXPORT HWND WINAPI CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR windowName,
                                          DWORD style, int x, int y, int width, int height,
                                          HWND parent, HMENU menu, HINSTANCE instance,
                                          LPVOID param);
// By the window's own thread only. Its children, and the windows that it owns, go with it.
WINAPI_EXPORT BOOL WINAPI DestroyWindow(HWND window);
WINAPI_EXPORT BOOL WINAPI IsWindow(HWND window);
// Null: no window of any thread is active, there being no screen to bring one to the front of.
WINAPI_EXPORT HWND WINAPI GetActiveWindow();
WINAPI_EXPORT DWORD WINAPI GetWindowThreadProcessId(HWND window, LPDWORD processId);
WINAPI_EXPORT LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);
WINAPI_EXPORT LRESULT WINAPI CallWindowProcW(WNDPROC procedure, HWND window, UINT message,
                                             WPARAM wParam, LPARAM lParam);

// Values of a window, by these indexes or by byte offset into the cbWndExtra bytes of its class.
#define GWLP_WNDPROC (-4)
#define GWLP_HINSTANCE (-6)
#define GWLP_ID (-12)
#define GWLP_USERDATA (-21)
WINAPI_EXPORT LONG_PTR WINAPI GetWindowLongPtrW(HWND window, int index);
// Gives the value before. Since that may be 0, only the last error tells a failure from it.
WINAPI_EXPORT LONG_PTR WINAPI SetWindowLongPtrW(HWND window, int index, LONG_PTR value);

// Calls the window's procedure on its own thread and waits for the answer. The waiting thread goes
// on answering what others send to its windows. 0 with ERROR_INVALID_WINDOW_HANDLE where the window
// or its thread is gone, or goes before it answered.
WINAPI_EXPORT LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Queues a message for the window's thread, or, with a null window, for this one. A queue holds at
// most 10000 of them.
WINAPI_EXPORT BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Fails for a thread that has no queue yet: the first call of this family makes it.
WINAPI_EXPORT BOOL WINAPI PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam,
                                             LPARAM lParam);
// Ends the loops of this thread: WM_QUIT comes once no posted message is left.
WINAPI_EXPORT void WINAPI PostQuitMessage(int exitCode);

#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001
#define PM_NOYIELD 0x0002

// The next posted message of this thread, first come first served, after all sent ones were
// answered. A window limits it to that window and its children, (HWND)-1 to messages without a
// window, and two numbers that aren't both 0 to messages from first to last; WM_QUIT passes every
// limit. GetMessageW waits; it gives 0 for WM_QUIT and -1 for a window that isn't there.
WINAPI_EXPORT BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last);
WINAPI_EXPORT BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last,
                                       UINT remove);
// True for the messages of keys. No characters follow, there being no keyboard layout.
WINAPI_EXPORT BOOL WINAPI TranslateMessage(const MSG* message);
WINAPI_EXPORT LRESULT WINAPI DispatchMessageW(const MSG* message);
