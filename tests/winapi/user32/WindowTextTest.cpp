// Windows beside and within each other, their text, classes and styles. On Windows these tests need
// a desktop.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <thread>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

HWND Create(const WCHAR* className, const WCHAR* text, DWORD style, HWND parent,
            LONG_PTR idOrMenu = 0) {
  const HWND window = CreateWindowExW(0, className, text, style, 0, 0, 80, 20, parent,
                                      reinterpret_cast<HMENU>(idOrMenu), nullptr, nullptr);
  EXPECT_NE(window, nullptr) << "last error " << GetLastError();
  return window;
}

Wide TextOf(HWND window) {
  WCHAR text[64] = WTEXT("untouched");
  EXPECT_EQ(GetWindowTextW(window, text, 64), GetWindowTextLengthW(window));
  return text;
}

Wide ClassOf(HWND window) {
  WCHAR name[64];
  const int length = GetClassNameW(window, name, 64);
  return Wide(name, static_cast<std::size_t>(length));
}

// A top-level window that goes with its scope, and all that it holds with it.
struct TopWindow {
  explicit TopWindow(DWORD style = WS_POPUP, HWND owner = nullptr)
      : handle(Create(WTEXT("static"), WTEXT("Top"), style, owner)) {}
  ~TopWindow() { DestroyWindow(handle); }
  TopWindow(const TopWindow&) = delete;
  TopWindow& operator=(const TopWindow&) = delete;

  const HWND handle;
};

TEST(WindowText, ControlsOfTheSystemKeepTextAndStyle) {
  const TopWindow top;
  const struct {
    const WCHAR* asked;
    const WCHAR* name;
    DWORD style;
  } cases[] = {{WTEXT("BUTTON"), WTEXT("Button"), BS_AUTOCHECKBOX | WS_TABSTOP},
               {WTEXT("static"), WTEXT("Static"), SS_RIGHT},
               {WTEXT("Edit"), WTEXT("Edit"), 0},
               {WTEXT("comboBox"), WTEXT("ComboBox"), CBS_DROPDOWN},
               {WTEXT("listbox"), WTEXT("ListBox"), 0}};
  LONG_PTR id = 100;
  for (const auto& c : cases) {
    const HWND control = Create(c.asked, WTEXT("born"), WS_CHILD | c.style, top.handle, ++id);
    EXPECT_EQ(ClassOf(control), c.name);
    // The text of the combo box is that of a control within it.
    EXPECT_TRUE(TextOf(control) == WTEXT("born") || Wide(c.name) == WTEXT("ComboBox"));
    EXPECT_TRUE(SetWindowTextW(control, WTEXT("citt\x00E0")));
    EXPECT_EQ(TextOf(control), WTEXT("citt\x00E0"));
    EXPECT_TRUE(SetWindowTextW(control, nullptr));
    EXPECT_EQ(GetWindowTextLengthW(control), 0);

    const LONG style = GetWindowLongW(control, GWL_STYLE);
    EXPECT_EQ(static_cast<DWORD>(style) & (WS_CHILD | WS_POPUP | c.style), WS_CHILD | c.style);
    EXPECT_EQ(static_cast<LONG>(GetWindowLongPtrW(control, GWL_STYLE)), style);
    EXPECT_EQ(GetWindowLongW(control, GWLP_ID), static_cast<LONG>(id));
    EXPECT_EQ(GetParent(control), top.handle);
  }
}

TEST(WindowText, TextIsCutToTheBuffer) {
  const TopWindow top;
  SetWindowTextW(top.handle, WTEXT("theodolite"));
  for (int size = 1; size <= 12; ++size) {
    WCHAR text[13];
    std::fill_n(text, 13, WTEXT('?'));
    const int length = std::min(size - 1, 10);
    EXPECT_EQ(GetWindowTextW(top.handle, text, size), length);
    EXPECT_EQ(Wide(text), Wide(WTEXT("theodolite")).substr(0, static_cast<std::size_t>(length)));
    EXPECT_EQ(text[length + 1], WTEXT('?'));

    EXPECT_EQ(GetClassNameW(top.handle, text, size), std::min(size - 1, 6));
    EXPECT_EQ(Wide(text), Wide(WTEXT("Static")).substr(0, static_cast<std::size_t>(size - 1)));
  }
  WCHAR text[2] = {WTEXT('?'), 0};
  EXPECT_EQ(GetWindowTextW(top.handle, text, 0), 0);
  EXPECT_EQ(text[0], WTEXT('?'));
  EXPECT_EQ(ErrorOf(GetClassNameW(top.handle, text, 0)), ERROR_INSUFFICIENT_BUFFER);
}

TEST(WindowText, IsReadAndSetFromOtherThreads) {
  const TopWindow top;
  std::thread other([&] {
    EXPECT_EQ(TextOf(top.handle), WTEXT("Top"));
    EXPECT_TRUE(SetWindowTextW(top.handle, WTEXT("theirs")));
    PostMessageW(top.handle, WM_APP, 0, 0);
  });
  MSG message;
  while (GetMessageW(&message, nullptr, WM_APP, WM_APP) > 0 && message.message != WM_APP) {
  }
  other.join();
  EXPECT_EQ(TextOf(top.handle), WTEXT("theirs"));
}

TEST(WindowText, WindowsStandBesideAndWithinEachOther) {
  const TopWindow top;
  EXPECT_EQ(GetWindow(top.handle, GW_CHILD), nullptr);
  HWND children[3], grandchildren[2];
  for (HWND& child : children) child = Create(WTEXT("Static"), nullptr, WS_CHILD, top.handle);
  for (HWND& child : grandchildren) child = Create(WTEXT("Button"), nullptr, WS_CHILD, children[1]);

  EXPECT_EQ(GetWindow(top.handle, GW_CHILD), children[0]);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(GetWindow(children[i], GW_HWNDNEXT), i < 2 ? children[i + 1] : nullptr);
    EXPECT_EQ(GetWindow(children[i], GW_HWNDPREV), i > 0 ? children[i - 1] : nullptr);
    EXPECT_EQ(GetWindow(children[i], GW_HWNDFIRST), children[0]);
    EXPECT_EQ(GetWindow(children[i], GW_HWNDLAST), children[2]);
    EXPECT_EQ(GetWindow(children[i], GW_OWNER), nullptr);
    EXPECT_EQ(GetWindow(children[i], GW_CHILD), i == 1 ? grandchildren[0] : nullptr);
  }
  EXPECT_EQ(GetParent(grandchildren[1]), children[1]);

  DestroyWindow(children[1]);
  EXPECT_FALSE(IsWindow(grandchildren[0]));
  EXPECT_EQ(GetWindow(children[0], GW_HWNDNEXT), children[2]);
  DestroyWindow(children[0]);
  EXPECT_EQ(GetWindow(top.handle, GW_CHILD), children[2]);
}

TEST(WindowText, TopLevelWindowsHaveOwners) {
  const TopWindow top;
  const HWND child = Create(WTEXT("Static"), nullptr, WS_CHILD, top.handle);
  const TopWindow popup(WS_POPUP, child);
  const TopWindow overlapped(WS_OVERLAPPED, top.handle);
  EXPECT_EQ(GetWindow(popup.handle, GW_OWNER), top.handle) << "a child owns nothing";
  EXPECT_EQ(GetWindow(overlapped.handle, GW_OWNER), top.handle);
  EXPECT_EQ(GetParent(popup.handle), top.handle);
  EXPECT_EQ(GetParent(overlapped.handle), nullptr);
  EXPECT_EQ(GetParent(top.handle), nullptr);
  EXPECT_EQ(GetWindow(top.handle, GW_CHILD), child) << "what it owns is no child";
  DestroyWindow(top.handle);
  EXPECT_FALSE(IsWindow(popup.handle));
}

TEST(WindowText, AMenuGoesWithItsWindow) {
  const HMENU menu = CreateMenu();
  AppendMenuW(menu, MF_STRING, 1, WTEXT("Point"));
  const HWND window =
      Create(WTEXT("Static"), nullptr, WS_OVERLAPPED, nullptr, reinterpret_cast<LONG_PTR>(menu));
  EXPECT_EQ(GetMenu(window), menu);
  DestroyWindow(window);
  EXPECT_FALSE(IsMenu(menu));
}

// Its text is always "own", and what it is given goes nowhere.
LRESULT CALLBACK OwnText(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_SETTEXT) return FALSE;
  if (message == WM_GETTEXT) std::copy_n(WTEXT("own"), 4, reinterpret_cast<WCHAR*>(lParam));
  if (message == WM_GETTEXT || message == WM_GETTEXTLENGTH) return 3;
  return DefWindowProcW(window, message, wParam, lParam);
}

TEST(WindowText, AProgramsClassGoesBeforeTheSystems) {
  WNDCLASSW c{};
  c.lpfnWndProc = OwnText;
  c.lpszClassName = WTEXT("bUTTON");
  ASSERT_NE(RegisterClassW(&c), 0);
  EXPECT_EQ(ErrorOf(RegisterClassW(&c)), ERROR_CLASS_ALREADY_EXISTS);
  const HWND own = Create(WTEXT("Button"), WTEXT("Button"), WS_POPUP, nullptr);
  EXPECT_EQ(ClassOf(own), WTEXT("bUTTON"));
  EXPECT_FALSE(SetWindowTextW(own, WTEXT("other"))) << "the procedure has the say";
  EXPECT_EQ(TextOf(own), WTEXT("own"));
  DestroyWindow(own);
  EXPECT_TRUE(UnregisterClassW(WTEXT("BUTTON"), GetModuleHandleW(nullptr)));

  const HWND systems = Create(WTEXT("Button"), WTEXT("text"), WS_POPUP, nullptr);
  EXPECT_EQ(TextOf(systems), WTEXT("text"));
  DestroyWindow(systems);
  // Wine lets go of the system's too.
  EXPECT_TRUE(UnderWine() || !UnregisterClassW(WTEXT("Button"), nullptr));
}

TEST(WindowText, WhatIsNoWindowHasNothing) {
  HWND gone;
  {
    const TopWindow top;
    gone = top.handle;
    EXPECT_EQ(ErrorOf(GetWindowLongPtrW(gone, 4000)), ERROR_INVALID_INDEX);
    const HWND none = GetWindow(gone, 77);
    EXPECT_EQ(none, nullptr);
    EXPECT_TRUE(ErrorOf(none) == ERROR_INVALID_GW_COMMAND || UnderWine());
  }
  WCHAR text[8] = WTEXT("?");
  const auto fails = [](auto result) {  // Wine doesn't set the last error in every call
    return ErrorOf(result) == ERROR_INVALID_WINDOW_HANDLE ||
           (UnderWine() && result == decltype(result){});
  };
  for (const HWND window : {gone, HWND{}}) {
    EXPECT_TRUE(fails(GetWindowTextLengthW(window)));
    EXPECT_TRUE(fails(GetWindowTextW(window, text, 8)));
    EXPECT_TRUE(fails(SetWindowTextW(window, text)));
    EXPECT_TRUE(fails(GetClassNameW(window, text, 8)));
    EXPECT_TRUE(fails(GetParent(window)));
    EXPECT_TRUE(fails(GetWindow(window, GW_CHILD)));
    EXPECT_TRUE(fails(GetWindowLongW(window, GWL_STYLE)));
    EXPECT_TRUE(fails(GetMenu(window)));
  }
}

}  // namespace
