// Menus and their items.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr UINT kNone = static_cast<UINT>(-1);

// A menu that goes with its scope.
struct Menu {
  ~Menu() { DestroyMenu(handle); }
  Menu() = default;
  Menu(const Menu&) = delete;
  Menu& operator=(const Menu&) = delete;

  BOOL Append(UINT flags, UINT_PTR id, const WCHAR* text) const {
    return AppendMenuW(handle, flags, id, text);
  }
  const HMENU handle = CreateMenu();
};

HMENU Popup(std::initializer_list<UINT> ids) {
  const HMENU menu = CreatePopupMenu();
  for (const UINT id : ids) AppendMenuW(menu, MF_STRING, id, WTEXT("in popup"));
  return menu;
}

UINT_PTR IdOf(HMENU menu) {
  return reinterpret_cast<UINT_PTR>(menu);
}

MENUITEMINFOW InfoOf(HMENU menu, UINT item, UINT mask, BOOL byPosition = TRUE) {
  MENUITEMINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = mask;
  EXPECT_TRUE(GetMenuItemInfoW(menu, item, byPosition, &info)) << item;
  return info;
}

Wide TextOf(HMENU menu, UINT item, UINT flags = MF_BYPOSITION) {
  WCHAR text[32] = WTEXT("?");
  GetMenuStringW(menu, item, text, 32, flags);
  return text;
}

std::vector<UINT> Ids(HMENU menu) {
  std::vector<UINT> ids;
  for (int i = 0; i < GetMenuItemCount(menu); ++i) ids.push_back(GetMenuItemID(menu, i));
  return ids;
}

TEST(MenuCalls, ItemsHaveTypeStateAndContent) {
  static_assert(sizeof(MENUITEMINFOW) == 80);
  const Menu menu;
  const HMENU popup = Popup({11, 12});
  const auto data = reinterpret_cast<const WCHAR*>(UINT_PTR{0x1234});
  const struct {
    UINT flags;
    UINT_PTR id;
    const WCHAR* content;
    UINT type, state;
  } cases[] = {
      {MF_STRING, 1, WTEXT("Open"), MFT_STRING, 0},
      {MF_STRING | MF_CHECKED, 2, WTEXT("Grid"), MFT_STRING, MFS_CHECKED},
      {MF_GRAYED, 3, WTEXT("Undo"), MFT_STRING, MF_GRAYED},
      {MF_DISABLED | MF_HILITE, 4, WTEXT("Redo"), MFT_STRING, MF_DISABLED | MFS_HILITE},
      {MF_SEPARATOR, 0, nullptr, MFT_SEPARATOR, MFS_GRAYED},
      {MF_STRING, 6, nullptr, MFT_SEPARATOR, MFS_GRAYED},
      {MF_MENUBREAK, 7, WTEXT("Column"), MFT_MENUBREAK, 0},
      {MF_MENUBARBREAK, 8, WTEXT("Bar"), MFT_MENUBARBREAK, 0},
      {MF_OWNERDRAW, 9, data, MFT_OWNERDRAW, 0},
      {MF_POPUP, IdOf(popup), WTEXT("More"), MFT_STRING, 0},
  };
  UINT position = 0;
  for (const auto& c : cases) {
    ASSERT_TRUE(menu.Append(c.flags, c.id, c.content));
    const MENUITEMINFOW info =
        InfoOf(menu.handle, position, MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_SUBMENU | MIIM_DATA);
    const auto id = static_cast<UINT>(c.id);
    EXPECT_EQ(std::tuple(info.fType, info.fState, info.wID), std::tuple(c.type, c.state, id));
    EXPECT_EQ(info.hSubMenu, c.flags == MF_POPUP ? popup : nullptr) << position;
    EXPECT_EQ(info.dwItemData, c.content == data ? 0x1234u : 0u) << position;
    EXPECT_EQ(InfoOf(menu.handle, position, MIIM_TYPE).fType, c.type) << position;

    const bool isText = c.content != nullptr && c.content != data;
    EXPECT_EQ(TextOf(menu.handle, position), isText ? c.content : WTEXT("")) << position;
    const int place = static_cast<int>(position++);
    EXPECT_EQ(GetMenuItemID(menu.handle, place), c.flags == MF_POPUP ? kNone : id);
    EXPECT_EQ(GetSubMenu(menu.handle, place), c.flags == MF_POPUP ? popup : nullptr);
  }
  EXPECT_EQ(GetMenuItemCount(menu.handle), static_cast<int>(position));
  EXPECT_EQ(GetMenuItemCount(popup), 2);
}

TEST(MenuCalls, TextIsCutToTheBuffer) {
  const Menu menu;
  const Wide text = WTEXT("Stazione\tF2");
  menu.Append(MF_STRING, 1, text.c_str());
  const int whole = static_cast<int>(text.size());
  for (int size = 1; size <= whole + 2; ++size) {
    const int length = std::min(size - 1, whole);
    for (const UINT mask : {0u, UINT{MIIM_STRING}, UINT{MIIM_TYPE}}) {
      WCHAR buffer[16];
      std::fill_n(buffer, 16, WTEXT('?'));
      MENUITEMINFOW info{};
      info.cbSize = sizeof(info);
      info.fMask = mask;
      info.dwTypeData = buffer;
      info.cch = static_cast<UINT>(size);
      if (mask == 0) {
        EXPECT_EQ(GetMenuStringW(menu.handle, 1, buffer, size, MF_BYCOMMAND), length);
      } else {
        EXPECT_TRUE(GetMenuItemInfoW(menu.handle, 0, TRUE, &info));
        EXPECT_EQ(info.cch, static_cast<UINT>(length));
      }
      EXPECT_EQ(Wide(buffer), text.substr(0, static_cast<std::size_t>(length)));
      EXPECT_EQ(buffer[length + 1], WTEXT('?'));
    }
  }
  for (const int room : {0, 5}) {
    EXPECT_EQ(GetMenuStringW(menu.handle, 0, nullptr, room, MF_BYPOSITION), whole);
  }
  EXPECT_EQ(InfoOf(menu.handle, 0, MIIM_STRING).cch, static_cast<UINT>(whole));
  EXPECT_EQ(InfoOf(menu.handle, 0, MIIM_TYPE).cch, static_cast<UINT>(whole));
}

TEST(MenuCalls, ItemsAreInsertedByPositionOrNumber) {
  const Menu menu;
  menu.Append(MF_STRING, 1, WTEXT("a"));
  const HMENU popup = Popup({11, 12});
  menu.Append(MF_POPUP, IdOf(popup), WTEXT("b"));
  const struct {
    UINT before, flags, id;
  } cases[] = {{0, MF_BYPOSITION, 2},  {99, MF_BYPOSITION, 3}, {1, MF_BYCOMMAND, 4},
               {12, MF_BYCOMMAND, 13}, {77, MF_BYCOMMAND, 5},  {kNone, MF_BYPOSITION, 6}};
  for (const auto& c : cases) {
    EXPECT_TRUE(InsertMenuW(menu.handle, c.before, c.flags | MF_STRING, c.id, WTEXT("new")));
  }
  EXPECT_EQ(Ids(menu.handle), (std::vector<UINT>{2, 4, 1, kNone, 3, 5, 6}));
  EXPECT_EQ(Ids(popup), (std::vector<UINT>{11, 13, 12}));
  EXPECT_EQ(TextOf(menu.handle, 13, MF_BYCOMMAND), WTEXT("new"));
  EXPECT_EQ(InfoOf(menu.handle, 12, MIIM_ID, FALSE).wID, 12u);
}

TEST(MenuCalls, AChangedItemKeepsItsSubmenu) {
  const Menu menu;
  const HMENU first = Popup({11});
  const HMENU nested = Popup({21});
  AppendMenuW(first, MF_POPUP, IdOf(nested), WTEXT("nested"));
  menu.Append(MF_POPUP | MF_GRAYED, IdOf(first), WTEXT("old"));

  const auto modify = [&](UINT flags, UINT_PTR id, const WCHAR* text) {
    EXPECT_TRUE(ModifyMenuW(menu.handle, 0, MF_BYPOSITION | flags, id, text));
    EXPECT_EQ(TextOf(menu.handle, 0), text);
    return GetSubMenu(menu.handle, 0);
  };
  EXPECT_EQ(modify(MF_CHECKED, kNone, WTEXT("text")), first);
  EXPECT_EQ(InfoOf(menu.handle, 0, MIIM_STATE).fState, UINT{MFS_CHECKED}) << "not added to the old";
  EXPECT_EQ(modify(MF_POPUP, IdOf(first), WTEXT("the same")), first);
  EXPECT_TRUE(IsMenu(nested));

  const HMENU second = Popup({12});
  EXPECT_EQ(modify(MF_POPUP, IdOf(second), WTEXT("other")), second);
  if (UnderWine()) DestroyMenu(first);  // which Wine leaves
  EXPECT_FALSE(IsMenu(first) || IsMenu(nested));

  EXPECT_TRUE(ModifyMenuW(menu.handle, 12, MF_BYCOMMAND | MF_SEPARATOR, 0, nullptr));
  EXPECT_EQ(InfoOf(second, 0, MIIM_FTYPE).fType, UINT{MFT_SEPARATOR});
  EXPECT_TRUE(TextOf(second, 0).empty() || UnderWine()) << "which keeps the text";
}

TEST(MenuCalls, SubmenusGoWithTheirMenu) {
  const HMENU menu = CreateMenu();
  const HMENU popup = Popup({1}), nested = Popup({2});
  AppendMenuW(popup, MF_POPUP, IdOf(nested), WTEXT("n"));
  AppendMenuW(menu, MF_POPUP, IdOf(popup), WTEXT("p"));
  EXPECT_FALSE(AppendMenuW(nested, MF_POPUP, IdOf(menu), WTEXT("a ring")));
  EXPECT_FALSE(AppendMenuW(menu, MF_POPUP, IdOf(menu), WTEXT("itself")));
  EXPECT_TRUE(UnderWine() || !AppendMenuW(menu, MF_POPUP, 0x7777, WTEXT("nothing")));
  EXPECT_TRUE(DestroyMenu(menu));
  for (const HMENU gone : {menu, popup, nested}) EXPECT_FALSE(IsMenu(gone));
}

// A call failed with the last error; Wine doesn't set that in these calls.
template <class Result>
void ExpectFailure(long error, Result result, Result failure = {}) {
  const long last = ErrorOf(result, failure);
  EXPECT_EQ(result, failure);
  EXPECT_TRUE(last == error || UnderWine()) << last;
}

TEST(MenuCalls, WhatIsNoMenuOrItemFails) {
  const HMENU gone = CreateMenu();
  DestroyMenu(gone);
  const Menu menu;
  menu.Append(MF_STRING, 1, WTEXT("a"));
  MENUITEMINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = MIIM_STATE;
  WCHAR text[4];
  SetLastError(0);
  for (const HMENU none : {gone, HMENU{}}) {
    constexpr long kError = ERROR_INVALID_MENU_HANDLE;
    ExpectFailure(kError, GetMenuItemCount(none), -1);
    ExpectFailure(kError, DestroyMenu(none));
    ExpectFailure(kError, AppendMenuW(none, MF_STRING, 1, WTEXT("a")));
    ExpectFailure(kError, GetMenuItemInfoW(none, 0, TRUE, &info));
    ExpectFailure(kError, GetMenuStringW(none, 0, text, 4, MF_BYPOSITION));
    ExpectFailure(kError, GetSubMenu(none, 0));
    ExpectFailure(kError, GetMenuItemID(none, 0), kNone);
  }
  constexpr long kError = ERROR_MENU_ITEM_NOT_FOUND;
  ExpectFailure(kError, GetMenuItemInfoW(menu.handle, 1, TRUE, &info));
  ExpectFailure(kError, ModifyMenuW(menu.handle, 7, MF_BYCOMMAND, 7, WTEXT("b")));
  ExpectFailure(kError, GetMenuStringW(menu.handle, 7, text, 4, MF_BYCOMMAND));
  ExpectFailure(kError, GetSubMenu(menu.handle, -1));
  ExpectFailure(kError, GetMenuItemID(menu.handle, -1), kNone);

  const auto infoError = [&](UINT mask, UINT size) {
    info.fMask = mask;
    info.cbSize = size;
    return ErrorOf(GetMenuItemInfoW(menu.handle, 0, TRUE, &info));
  };
  for (const UINT mask : {MIIM_STRING, MIIM_BITMAP, MIIM_FTYPE}) {
    EXPECT_EQ(infoError(MIIM_TYPE | mask, sizeof(info)), ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(infoError(MIIM_STATE, sizeof(info) - 4), ERROR_INVALID_PARAMETER);
}

}  // namespace
