#include "kelp0lang/TranslateWindow.h"

#include <tchar.h>

#include <cwchar>

#include "kelp0lang/String.h"
#include "kelp0lang/Translate.h"

namespace kelp {
namespace {

constexpr const WChar* kFilledLater = KTEXT("#static");

WString TextOf(HWND window) {
  const int length = GetWindowTextLengthW(window);
  WString text;
  WChar* const buffer = text.GetBufferAsCString(length);
  text.ReleaseBuffer(GetWindowTextW(window, buffer, length + 1));
  return text;
}

void XlateControl(HWND control) {
  const WString text = TextOf(control);
  const WString shown = text == kFilledLater ? WString() : Xlate(text.c_str());
  SetWindowTextW(control, shown.c_str());
}

// Icons, bitmaps and their kin.
bool ShowsPicture(HWND staticControl) {
  const LONG style = GetWindowLongW(staticControl, GWL_STYLE);
  return (style & 0x3) == 0x3 || (style & 0xE) == 0xE;
}

WString ItemText(HMENU menu, UINT position) {
  const int length = GetMenuStringW(menu, position, nullptr, 0, MF_BYPOSITION);
  WString text;
  WChar* const buffer = text.GetBufferAsCString(length);
  text.ReleaseBuffer(GetMenuStringW(menu, position, buffer, length + 1, MF_BYPOSITION));
  return text;
}

bool HasText(const MENUITEMINFOW& item) {
  constexpr UINT kNoText = MFT_SEPARATOR | MFT_MENUBREAK | MFT_MENUBARBREAK;
  return item.hSubMenu != nullptr || (item.fType & kNoText) == 0;
}

void XlateItem(HMENU menu, UINT position, UINT state) {
  // The high byte beside MF_POPUP may be a count of items.
  const bool isPopup = (state & MF_POPUP) != 0;
  if (isPopup) state &= 0xFF;
  const WString text = ItemText(menu, position);
  const WString shown = Xlate(text.c_str());
  if (shown.Compare(text.c_str()) == 0) return;
  const int index = static_cast<int>(position);
  const UINT_PTR target =
      isPopup ? reinterpret_cast<UINT_PTR>(GetSubMenu(menu, index)) : GetMenuItemID(menu, index);
  ModifyMenuW(menu, position, state | MF_BYPOSITION, target, shown.c_str());
}

}  // namespace

int IsTranslatable(HWND window) {
  if (window == nullptr) return 0;
  constexpr int kNameSize = 32;
  WChar name[kNameSize] = {};
  GetClassNameW(window, name, kNameSize);
  const auto isClass = [&name](const WChar* other) { return _wcsicmp(name, other) == 0; };
  if (isClass(KTEXT("button"))) return GetWindowTextLengthW(window) > 0;
  if (isClass(KTEXT("static"))) return !ShowsPicture(window);
  return !isClass(KTEXT("combobox")) && !isClass(KTEXT("edit")) && !isClass(KTEXT("listbox"));
}

int XlateWndTitle(HWND window) {
  if (window == nullptr) return -1;
  const WString text = TextOf(window);
  const WString shown = Xlate(text.c_str());
  if (shown.Compare(text.c_str()) != 0) SetWindowTextW(window, shown.c_str());
  return 0;
}

int XlateWnd(HWND window) {
  if (XlateWndTitle(window) < 0) return -1;
  int children = 0;
  for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
       child = GetWindow(child, GW_HWNDNEXT)) {
    ++children;
    if (IsTranslatable(child)) XlateControl(child);
  }
  return children;
}

int XlateMenu(HMENU menu) {
  for (int position = 0; position < GetMenuItemCount(menu); ++position) {
    const auto index = static_cast<UINT>(position);
    MENUITEMINFOW item{};
    item.cbSize = sizeof(item);
    item.fMask = MIIM_STATE | MIIM_SUBMENU | MIIM_TYPE;
    if (!GetMenuItemInfoW(menu, index, TRUE, &item) || !HasText(item)) continue;
    XlateItem(menu, index, item.fState);
    if (item.hSubMenu != nullptr) XlateMenu(item.hSubMenu);
  }
  return 0;
}

}  // namespace kelp
