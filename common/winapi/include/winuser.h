// Windows and the messages between them and between threads, menus, and the monitors.
//
// There is no screen, keyboard or mouse behind the windows: a message comes only from the program
// itself, and WM_PAINT, WM_TIMER and input never come by themselves. Nor is a menu ever shown. The
// monitors are those of the X server that DISPLAY names, where there is one.
#pragma once

#include "windef.h"
#include "wingdi.h"

extern "C" {

typedef LRESULT(CALLBACK* WNDPROC)(HWND, UINT, WPARAM, LPARAM);

#define WM_NULL 0x0000
#define WM_CREATE 0x0001
#define WM_DESTROY 0x0002
#define WM_SETTEXT 0x000C
#define WM_GETTEXT 0x000D
#define WM_GETTEXTLENGTH 0x000E
#define WM_CLOSE 0x0010
#define WM_QUERYENDSESSION 0x0011
#define WM_QUIT 0x0012
#define WM_DEVMODECHANGE 0x001B
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
#define WS_VISIBLE 0x10000000L
#define WS_TABSTOP 0x00010000L
#define CW_USEDEFAULT ((int)0x80000000)

// As a parent: the window only exchanges messages. It is never shown and not among the top-level
// windows.
#define HWND_MESSAGE ((HWND)(intptr_t)-3)

#define CS_GLOBALCLASS 0x4000

// Styles of the class "Button", ...
#define BS_PUSHBUTTON 0x00000000L
#define BS_AUTOCHECKBOX 0x00000003L
#define BS_GROUPBOX 0x00000007L
// ... of "Static", where the low five bits are one number, ...
#define SS_LEFT 0x00000000L
#define SS_CENTER 0x00000001L
#define SS_RIGHT 0x00000002L
#define SS_ICON 0x00000003L
#define SS_BLACKFRAME 0x00000007L
#define SS_SIMPLE 0x0000000BL
#define SS_BITMAP 0x0000000EL
#define SS_NOPREFIX 0x00000080L
// ... and of "ComboBox".
#define CBS_DROPDOWN 0x0002L

#define MAKEINTATOM(atom) ((LPWSTR)(ULONG_PTR)(WORD)(atom))
#define MAKEINTRESOURCEW(number) ((LPWSTR)(ULONG_PTR)(WORD)(number))
#define IS_INTRESOURCE(name) ((((ULONG_PTR)(name)) >> 16) == 0)
#define RT_STRING MAKEINTRESOURCEW(6)

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

// Classes. A name is compared without regard to case and belongs to a module (null: the program),
// or with CS_GLOBALCLASS to the process; a module's own goes first. An atom (MAKEINTATOM) serves in
// place of the name. The system's classes "Button", "ComboBox", "Edit", "ListBox" and "Static" have
// the same names here, and their windows the text of any window; they can't be unregistered.
WINAPI_EXPORT ATOM WINAPI RegisterClassW(const WNDCLASSW* windowClass);
WINAPI_EXPORT ATOM WINAPI RegisterClassExW(const WNDCLASSEXW* windowClass);
// Fails while a window of the class exists.
WINAPI_EXPORT BOOL WINAPI UnregisterClassW(LPCWSTR name, HINSTANCE instance);

// A window belongs to the thread that makes it; it goes with that thread at the latest. It is told
// WM_NCCREATE, which can refuse (FALSE), and WM_CREATE, which can too (-1). The menu is that of a
// top-level window, and goes with it; of a child (WS_CHILD) it is the number.
WINAPI_EXPORT HWND WINAPI CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR windowName,
                                          DWORD style, int x, int y, int width, int height,
                                          HWND parent, HMENU menu, HINSTANCE instance,
                                          LPVOID param);
// By the window's own thread only. Its children, and the windows that it owns, go with it.
WINAPI_EXPORT BOOL WINAPI DestroyWindow(HWND window);
WINAPI_EXPORT BOOL WINAPI IsWindow(HWND window);

#define GW_HWNDFIRST 0
#define GW_HWNDLAST 1
#define GW_HWNDNEXT 2
#define GW_HWNDPREV 3
#define GW_OWNER 4
#define GW_CHILD 5

// Where a window stands: among its siblings, from the top down, or its owner, or its top child. A
// new child goes below its siblings, a new top-level window above. Null without a last error where
// there is none.
WINAPI_EXPORT HWND WINAPI GetWindow(HWND window, UINT command);
// The parent of a child, the owner of a window with WS_POPUP; null for others.
WINAPI_EXPORT HWND WINAPI GetParent(HWND window);
// The name that the class was registered by, cut to size - 1 units; gives its length.
WINAPI_EXPORT int WINAPI GetClassNameW(HWND window, LPWSTR name, int size);

// The text of a window, which its procedure keeps and gives (WM_SETTEXT, WM_GETTEXT and
// WM_GETTEXTLENGTH; DefWindowProcW has what WM_NCCREATE brought). It is cut to size - 1 units; the
// calls give its length.
WINAPI_EXPORT int WINAPI GetWindowTextLengthW(HWND window);
WINAPI_EXPORT int WINAPI GetWindowTextW(HWND window, LPWSTR text, int size);
WINAPI_EXPORT BOOL WINAPI SetWindowTextW(HWND window, LPCWSTR text);
// Null: no window of any thread is active, there being no screen to bring one to the front of.
WINAPI_EXPORT HWND WINAPI GetActiveWindow();
WINAPI_EXPORT DWORD WINAPI GetWindowThreadProcessId(HWND window, LPDWORD processId);
WINAPI_EXPORT LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);
WINAPI_EXPORT LRESULT WINAPI CallWindowProcW(WNDPROC procedure, HWND window, UINT message,
                                             WPARAM wParam, LPARAM lParam);

// Values of a window, by these indexes or by byte offset into the cbWndExtra bytes of its class.
// The styles are those of its birth and can only be read.
#define GWL_STYLE (-16)
#define GWL_EXSTYLE (-20)
#define GWLP_WNDPROC (-4)
#define GWLP_HINSTANCE (-6)
#define GWLP_ID (-12)
#define GWLP_USERDATA (-21)
// The low 32 bits. Procedure and module, which have more, fail with ERROR_INVALID_INDEX.
WINAPI_EXPORT LONG WINAPI GetWindowLongW(HWND window, int index);
WINAPI_EXPORT LONG_PTR WINAPI GetWindowLongPtrW(HWND window, int index);
// Gives the value before. Since that may be 0, only the last error tells a failure from it.
WINAPI_EXPORT LONG_PTR WINAPI SetWindowLongPtrW(HWND window, int index, LONG_PTR value);

// Calls the window's procedure on its own thread and waits for the answer. The waiting thread goes
// on answering what others send to its windows. 0 with ERROR_INVALID_WINDOW_HANDLE where the window
// or its thread is gone, or goes before it answered.
WINAPI_EXPORT LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// The same, but gives up after a time in milliseconds: 0 with ERROR_TIMEOUT, and a message that
// nobody has begun to answer is taken back. To HWND_BROADCAST it goes to each of this process's
// top-level windows, with the time for each; the call is true then, and no result is known. The
// flags are 0.
#define SMTO_NORMAL 0x0000
#define HWND_BROADCAST ((HWND)(intptr_t)0xFFFF)
WINAPI_EXPORT LRESULT WINAPI SendMessageTimeoutW(HWND window, UINT message, WPARAM wParam,
                                                 LPARAM lParam, UINT flags, UINT time,
                                                 ULONG_PTR* result);
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

#define MF_STRING 0x0000
#define MF_GRAYED 0x0001
#define MF_DISABLED 0x0002
#define MF_BITMAP 0x0004
#define MF_CHECKED 0x0008
#define MF_POPUP 0x0010
#define MF_MENUBARBREAK 0x0020
#define MF_MENUBREAK 0x0040
#define MF_HILITE 0x0080
#define MF_OWNERDRAW 0x0100
#define MF_BYCOMMAND 0x0000
#define MF_BYPOSITION 0x0400
#define MF_SEPARATOR 0x0800

#define MFT_STRING MF_STRING
#define MFT_BITMAP MF_BITMAP
#define MFT_MENUBARBREAK MF_MENUBARBREAK
#define MFT_MENUBREAK MF_MENUBREAK
#define MFT_OWNERDRAW MF_OWNERDRAW
#define MFT_RADIOCHECK 0x0200
#define MFT_SEPARATOR MF_SEPARATOR
#define MFT_RIGHTORDER 0x2000
#define MFT_RIGHTJUSTIFY 0x4000

#define MFS_GRAYED 0x0003
#define MFS_CHECKED MF_CHECKED
#define MFS_HILITE MF_HILITE

#define MIIM_STATE 0x0001
#define MIIM_ID 0x0002
#define MIIM_SUBMENU 0x0004
#define MIIM_CHECKMARKS 0x0008
#define MIIM_TYPE 0x0010
#define MIIM_DATA 0x0020
#define MIIM_STRING 0x0040
#define MIIM_BITMAP 0x0080
#define MIIM_FTYPE 0x0100

typedef struct tagMENUITEMINFOW {
  UINT cbSize;
  UINT fMask;
  UINT fType;
  UINT fState;
  UINT wID;
  HMENU hSubMenu;
  HBITMAP hbmpChecked;
  HBITMAP hbmpUnchecked;
  ULONG_PTR dwItemData;
  LPWSTR dwTypeData;
  UINT cch;
  HBITMAP hbmpItem;
} MENUITEMINFOW, *LPMENUITEMINFOW;

// Menus: lists of items with text, number, state and perhaps a submenu, free for any thread. What
// is no menu fails with ERROR_INVALID_MENU_HANDLE, what is no item of it with
// ERROR_MENU_ITEM_NOT_FOUND.
WINAPI_EXPORT HMENU WINAPI CreateMenu();
WINAPI_EXPORT HMENU WINAPI CreatePopupMenu();
WINAPI_EXPORT BOOL WINAPI IsMenu(HMENU menu);
// Its submenus go with it.
WINAPI_EXPORT BOOL WINAPI DestroyMenu(HMENU menu);
// That of a top-level window; null without one.
WINAPI_EXPORT HMENU WINAPI GetMenu(HWND window);

// An item is named by its position (MF_BYPOSITION) or by its number, then also in submenus.
//
// A new item has the flags as type and state, a separator is gray. Its content is a text (null: a
// separator), with MF_OWNERDRAW any value and with MF_BITMAP a picture; with MF_POPUP the number is
// a submenu, which mustn't hold the menu itself (ERROR_INVALID_PARAMETER).
//
// At the end.
WINAPI_EXPORT BOOL WINAPI AppendMenuW(HMENU menu, UINT flags, UINT_PTR id, LPCWSTR content);
// Before an item; at the end where there is none.
WINAPI_EXPORT BOOL WINAPI InsertMenuW(HMENU menu, UINT before, UINT flags, UINT_PTR id,
                                      LPCWSTR content);
// In place of an item. It keeps its submenu, but where MF_POPUP brings another one, which destroys
// the old one.
WINAPI_EXPORT BOOL WINAPI ModifyMenuW(HMENU menu, UINT item, UINT flags, UINT_PTR id,
                                      LPCWSTR content);

// -1 where there is no menu.
WINAPI_EXPORT int WINAPI GetMenuItemCount(HMENU menu);
// The number of the item at a position; (UINT)-1 where there is none or it opens a submenu.
WINAPI_EXPORT UINT WINAPI GetMenuItemID(HMENU menu, int position);
WINAPI_EXPORT HMENU WINAPI GetSubMenu(HMENU menu, int position);
// The text, cut to size - 1 units; gives its length, with a null buffer or size 0 the whole one.
WINAPI_EXPORT int WINAPI GetMenuStringW(HMENU menu, UINT item, LPWSTR text, int size, UINT flags);
// What fMask asks for. MIIM_TYPE is type and text or picture in one, and stands without
// MIIM_STRING, MIIM_BITMAP and MIIM_FTYPE; cbSize is sizeof(MENUITEMINFOW): else
// ERROR_INVALID_PARAMETER. A text goes into dwTypeData, whose room is cch units, and its length
// there into cch; without a buffer cch becomes the whole length.
WINAPI_EXPORT BOOL WINAPI GetMenuItemInfoW(HMENU menu, UINT item, BOOL byPosition,
                                           LPMENUITEMINFOW info);

// A string of a module's table, cut to size - 1 units and terminated; gives its length in the
// buffer, 0 where there is none. With size 0 the buffer is a pointer's, which then points to the
// string itself, and the call gives its length; that text has no terminator.
WINAPI_EXPORT int WINAPI LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int size);

// Tells the user something, through what the host has set (winapi_host.h). Where nothing is set
// there is nobody to answer: the text goes to standard error, and only MB_OK is known then, with
// IDOK; others fail with 0 and ERROR_NOT_SUPPORTED.
#define MB_OK 0x00000000L
#define MB_TYPEMASK 0x0000000FL
#define MB_ICONEXCLAMATION 0x00000030L
#define IDOK 1
WINAPI_EXPORT int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
// Null: no window here is in front of others.
WINAPI_EXPORT HWND WINAPI GetForegroundWindow();

// What two rectangles have in common; gives whether there is anything, else zeros. The result may
// be one of them. A rectangle without an extent has nothing in common with any.
WINAPI_EXPORT BOOL WINAPI IntersectRect(LPRECT result, const RECT* first, const RECT* second);
WINAPI_EXPORT BOOL WINAPI OffsetRect(LPRECT rect, int x, int y);

// Monitors, in pixels of the virtual screen, whose origin is the top left corner of the primary
// one. They are asked for anew by each call, and a handle stays good for as long as its monitor is
// there. Without a display, or where all monitors are off, there are none.
typedef struct tagMONITORINFO {
  DWORD cbSize;
  RECT rcMonitor;
  RECT rcWork;
  DWORD dwFlags;
} MONITORINFO, *LPMONITORINFO;
typedef struct tagMONITORINFOEXA {
  DWORD cbSize;
  RECT rcMonitor;
  RECT rcWork;
  DWORD dwFlags;
  char szDevice[CCHDEVICENAME];
} MONITORINFOEXA;
typedef struct tagMONITORINFOEXW {
  DWORD cbSize;
  RECT rcMonitor;
  RECT rcWork;
  DWORD dwFlags;
  WCHAR szDevice[CCHDEVICENAME];
} MONITORINFOEXW;
#define MONITORINFOF_PRIMARY 0x00000001

// Calls back for each monitor, or for those that a rectangle touches, with what it covers of them;
// a callback that gives FALSE ends the walk, and the call gives FALSE then. There are no device
// contexts here: one that isn't null is ERROR_INVALID_HANDLE.
typedef BOOL(CALLBACK* MONITORENUMPROC)(HMONITOR, HDC, LPRECT, LPARAM);
WINAPI_EXPORT BOOL WINAPI EnumDisplayMonitors(HDC context, LPCRECT clip, MONITORENUMPROC callback,
                                              LPARAM data);
// The monitor's area, what the window manager leaves of it for windows (all of it, where the hint
// _NET_WORKAREA isn't there), and with a MONITORINFOEXW its device, "\\.\DISPLAY1" and so on.
// Another size is ERROR_INVALID_PARAMETER, a monitor that isn't there ERROR_INVALID_MONITOR_HANDLE.
WINAPI_EXPORT BOOL WINAPI GetMonitorInfoW(HMONITOR monitor, LPMONITORINFO info);

// The monitor at a point, the one that has most of a rectangle, that of a window; where there is
// none, null or the primary or the nearest one. A window here lies on no monitor.
#define MONITOR_DEFAULTTONULL 0
#define MONITOR_DEFAULTTOPRIMARY 1
#define MONITOR_DEFAULTTONEAREST 2
WINAPI_EXPORT HMONITOR WINAPI MonitorFromPoint(POINT point, DWORD flags);
WINAPI_EXPORT HMONITOR WINAPI MonitorFromRect(LPCRECT rect, DWORD flags);
WINAPI_EXPORT HMONITOR WINAPI MonitorFromWindow(HWND window, DWORD flags);

// Size of the primary monitor, place and size of the virtual screen, number of monitors; 0 without
// one, and for other numbers.
#define SM_CXSCREEN 0
#define SM_CYSCREEN 1
#define SM_XVIRTUALSCREEN 76
#define SM_YVIRTUALSCREEN 77
#define SM_CXVIRTUALSCREEN 78
#define SM_CYVIRTUALSCREEN 79
#define SM_CMONITORS 80
WINAPI_EXPORT int WINAPI GetSystemMetrics(int index);
// The work area of the primary monitor, a RECT; there are no other parameters
// (ERROR_INVALID_SPI_VALUE). Fails without a monitor.
#define SPI_GETWORKAREA 0x0030
WINAPI_EXPORT BOOL WINAPI SystemParametersInfoA(UINT action, UINT number, PVOID value, UINT flags);

// The devices that monitors are on, one each; with the name of a device the monitor on it, of which
// DeviceString is the name that the X server has for it. False where there is no further one.
#define DISPLAY_DEVICE_ATTACHED_TO_DESKTOP 0x00000001
#define DISPLAY_DEVICE_ACTIVE 0x00000001
#define DISPLAY_DEVICE_PRIMARY_DEVICE 0x00000004
typedef struct _DISPLAY_DEVICEW {
  DWORD cb;
  WCHAR DeviceName[32];
  WCHAR DeviceString[128];
  DWORD StateFlags;
  WCHAR DeviceID[128];
  WCHAR DeviceKey[128];
} DISPLAY_DEVICEW, *PDISPLAY_DEVICEW;
WINAPI_EXPORT BOOL WINAPI EnumDisplayDevicesW(LPCWSTR device, DWORD number, PDISPLAY_DEVICEW info,
                                              DWORD flags);
}
