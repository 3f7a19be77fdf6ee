// Menus and their items.
#include <algorithm>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <windows.h>

#include "CopyText.h"
#include "Fail.h"

namespace {

constexpr UINT kContentTypes = MFT_BITMAP | MFT_OWNERDRAW | MFT_SEPARATOR;  // none: text
constexpr UINT kTypes = kContentTypes | MFT_MENUBARBREAK | MFT_MENUBREAK | MFT_RADIOCHECK |
                        MFT_RIGHTORDER | MFT_RIGHTJUSTIFY;
constexpr UINT kStates = MFS_GRAYED | MFS_CHECKED | MFS_HILITE;

struct Item {
  UINT type;
  UINT state;
  UINT id;
  HMENU subMenu = nullptr;
  ULONG_PTR data = 0;
  HBITMAP bitmap = nullptr;
  std::u16string text = {};
};

using Items = std::vector<Item>;

struct Menus {
  std::mutex mutex;
  std::map<HMENU, Items> menus;
};

// It outlives all static objects.
Menus& All() {
  static Menus* const menus = new Menus;
  return *menus;
}

// With the lock held, as all below. Null with the last error.
Items* ItemsOf(HMENU menu) {
  const auto found = All().menus.find(menu);
  if (found != All().menus.end()) return &found->second;
  return Fail<Items*>(ERROR_INVALID_MENU_HANDLE);
}

struct Place {
  Items* items = nullptr;
  std::size_t index = 0;

  explicit operator bool() const { return items != nullptr; }
  Item& operator*() const { return (*items)[index]; }
};

// In a menu or the submenus of its items.
Place FindId(HMENU menu, UINT id) {
  const auto found = All().menus.find(menu);
  if (found == All().menus.end()) return {};
  Items& items = found->second;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (const Place inside = FindId(items[i].subMenu, id)) return inside;
    if (items[i].id == id) return {&items, i};
  }
  return {};
}

// Nowhere with the last error.
Place FindItem(HMENU menu, UINT item, bool byPosition) {
  Items* const items = ItemsOf(menu);
  if (items == nullptr) return {};
  Place place;
  if (!byPosition) {
    place = FindId(menu, item);
  } else if (item < items->size()) {
    place = {items, item};
  }
  if (!place) SetLastError(ERROR_MENU_ITEM_NOT_FOUND);
  return place;
}

// Where it is the menu itself, or one that this opens.
bool Holds(HMENU menu, HMENU wanted) {
  if (menu == wanted) return true;
  const auto found = All().menus.find(menu);
  return found != All().menus.end() &&
         std::any_of(found->second.begin(), found->second.end(),
                     [wanted](const Item& item) { return Holds(item.subMenu, wanted); });
}

bool CanOpen(HMENU menu, UINT flags, UINT_PTR id) {
  if ((flags & MF_POPUP) == 0) return true;
  const auto subMenu = reinterpret_cast<HMENU>(id);
  if (All().menus.contains(subMenu) && !Holds(subMenu, menu)) return true;
  return Fail(ERROR_INVALID_PARAMETER);
}

Item MakeItem(UINT flags, UINT_PTR id, LPCWSTR content) {
  if ((flags & kContentTypes) == 0 && content == nullptr) flags |= MFT_SEPARATOR;
  if ((flags & MFT_SEPARATOR) != 0) flags |= MFS_GRAYED;
  Item item{flags & kTypes, flags & kStates, static_cast<UINT>(id)};
  if ((flags & MF_POPUP) != 0) item.subMenu = reinterpret_cast<HMENU>(id);
  if ((flags & MFT_OWNERDRAW) != 0) {
    item.data = reinterpret_cast<ULONG_PTR>(content);
  } else if ((flags & MFT_BITMAP) != 0) {
    item.bitmap = reinterpret_cast<HBITMAP>(const_cast<LPWSTR>(content));
  } else if ((flags & MFT_SEPARATOR) == 0) {
    item.text = content;
  }
  return item;
}

void Destroy(HMENU menu) {
  const auto node = All().menus.extract(menu);
  if (node.empty()) return;
  for (const Item& item : node.mapped()) Destroy(item.subMenu);
}

HMENU NewMenu() {
  const std::lock_guard lock(All().mutex);
  // A handle is never given twice, so that a stale one stays invalid.
  static ULONG_PTR last = 0x20000;
  const auto menu = reinterpret_cast<HMENU>(last += 2);
  All().menus[menu];
  return menu;
}

void GiveText(const Item& item, MENUITEMINFOW& info) {
  if (info.dwTypeData == nullptr || info.cch == 0) {
    info.cch = static_cast<UINT>(item.text.size());
  } else {
    info.cch = static_cast<UINT>(CopyText(item.text, info.dwTypeData, static_cast<int>(info.cch)));
  }
}

// Type and content in one member, as MIIM_TYPE has them.
void GiveTypeAndContent(const Item& item, MENUITEMINFOW& info) {
  info.fType = item.type;
  if ((item.type & kContentTypes) == 0) return GiveText(item, info);
  info.dwTypeData = reinterpret_cast<LPWSTR>(item.bitmap);
  info.cch = 0;
}

void GiveInfo(const Item& item, MENUITEMINFOW& info) {
  const auto asks = [&info](UINT mask) { return (info.fMask & mask) != 0; };
  if (asks(MIIM_STATE)) info.fState = item.state;
  if (asks(MIIM_ID)) info.wID = item.id;
  if (asks(MIIM_SUBMENU)) info.hSubMenu = item.subMenu;
  if (asks(MIIM_CHECKMARKS)) info.hbmpChecked = info.hbmpUnchecked = nullptr;
  if (asks(MIIM_DATA)) info.dwItemData = item.data;
  if (asks(MIIM_FTYPE)) info.fType = item.type;
  if (asks(MIIM_BITMAP)) info.hbmpItem = item.bitmap;
  if (asks(MIIM_STRING)) GiveText(item, info);
  if (asks(MIIM_TYPE)) GiveTypeAndContent(item, info);
}

}  // namespace

HMENU WINAPI CreateMenu() {
  return NewMenu();
}

HMENU WINAPI CreatePopupMenu() {
  return NewMenu();
}

BOOL WINAPI IsMenu(HMENU menu) {
  const std::lock_guard lock(All().mutex);
  return All().menus.contains(menu);
}

BOOL WINAPI DestroyMenu(HMENU menu) {
  const std::lock_guard lock(All().mutex);
  if (ItemsOf(menu) == nullptr) return FALSE;
  Destroy(menu);
  return TRUE;
}

BOOL WINAPI AppendMenuW(HMENU menu, UINT flags, UINT_PTR id, LPCWSTR content) {
  return InsertMenuW(menu, static_cast<UINT>(-1), flags | MF_BYPOSITION, id, content);
}

BOOL WINAPI InsertMenuW(HMENU menu, UINT before, UINT flags, UINT_PTR id, LPCWSTR content) {
  const std::lock_guard lock(All().mutex);
  Items* const items = ItemsOf(menu);
  if (items == nullptr || !CanOpen(menu, flags, id)) return FALSE;
  Place place = (flags & MF_BYPOSITION) != 0
                    ? Place{items, std::min<std::size_t>(before, items->size())}
                    : FindId(menu, before);
  if (!place) place = {items, items->size()};
  place.items->insert(place.items->begin() + static_cast<std::ptrdiff_t>(place.index),
                      MakeItem(flags, id, content));
  return TRUE;
}

BOOL WINAPI ModifyMenuW(HMENU menu, UINT item, UINT flags, UINT_PTR id, LPCWSTR content) {
  const std::lock_guard lock(All().mutex);
  const Place place = FindItem(menu, item, (flags & MF_BYPOSITION) != 0);
  if (!place || !CanOpen(menu, flags, id)) return FALSE;
  Item changed = MakeItem(flags, id, content);
  const HMENU before = (*place).subMenu;
  if ((flags & MF_POPUP) == 0) changed.subMenu = before;
  if (changed.subMenu != before) Destroy(before);
  *place = std::move(changed);
  return TRUE;
}

int WINAPI GetMenuItemCount(HMENU menu) {
  const std::lock_guard lock(All().mutex);
  const Items* const items = ItemsOf(menu);
  return items != nullptr ? static_cast<int>(items->size()) : -1;
}

UINT WINAPI GetMenuItemID(HMENU menu, int position) {
  const std::lock_guard lock(All().mutex);
  const Place place = FindItem(menu, static_cast<UINT>(position), true);
  if (!place || (*place).subMenu != nullptr) return static_cast<UINT>(-1);
  return (*place).id;
}

HMENU WINAPI GetSubMenu(HMENU menu, int position) {
  const std::lock_guard lock(All().mutex);
  const Place place = FindItem(menu, static_cast<UINT>(position), true);
  return place ? (*place).subMenu : nullptr;
}

int WINAPI GetMenuStringW(HMENU menu, UINT item, LPWSTR text, int size, UINT flags) {
  if (text != nullptr && size > 0) text[0] = 0;
  const std::lock_guard lock(All().mutex);
  const Place place = FindItem(menu, item, (flags & MF_BYPOSITION) != 0);
  if (!place) return 0;
  if (text == nullptr || size == 0) return static_cast<int>((*place).text.size());
  return CopyText((*place).text, text, size);
}

BOOL WINAPI GetMenuItemInfoW(HMENU menu, UINT item, BOOL byPosition, LPMENUITEMINFOW info) {
  const bool mixed = (info->fMask & MIIM_TYPE) != 0 &&
                     (info->fMask & (MIIM_STRING | MIIM_BITMAP | MIIM_FTYPE)) != 0;
  if (info->cbSize != sizeof(MENUITEMINFOW) || mixed) return Fail(ERROR_INVALID_PARAMETER);
  const std::lock_guard lock(All().mutex);
  const Place place = FindItem(menu, item, byPosition != FALSE);
  if (!place) return FALSE;
  GiveInfo(*place, *info);
  return TRUE;
}
