// Windows and menus of the test's own, translated in place. On Windows these tests need a desktop.
#include "kelp0lang/TranslateWindow.h"

#include <string>
#include <vector>

#include "kelp0lang/Translate.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::WString;

namespace {

constexpr const char* kCatalogue =
    "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
    "msgid \"Traverse\"\nmsgstr \"Poligonale\"\n"
    "msgid \"City\"\nmsgstr \"Citt\xC3\xA0\"\n"
    "msgid \"E@@East (1 char)\"\nmsgstr \"O\"\n"
    "msgid \"Two\\nlines\"\nmsgstr \"Due\\nrighe\"\n"
    "msgid \"#static\"\nmsgstr \"never shown\"\n"
    "msgid \"&File\"\nmsgstr \"&Archivio\"\n"
    "msgid \"&Open\\tCtrl+O\"\nmsgstr \"&Apri\\tCtrl+O\"\n"
    "msgid \"Undo\"\nmsgstr \"Annulla\"\n"
    "msgid \"In\"\nmsgstr \"Avvicina\"\n"
    "msgid \"Column\"\nmsgstr \"Colonna\"\n";

int textsSet;

LRESULT CALLBACK CountTexts(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_SETTEXT) ++textsSet;
  return DefWindowProcW(window, message, wParam, lParam);
}

WString TextOf(HWND window) {
  WChar text[64];
  GetWindowTextW(window, text, 64);
  return text;
}

class TranslateWindow : public testing::Test {
 protected:
  static constexpr const WChar* kOwnClass = KTEXT("TranslateWindowTest");

  TranslateWindow() {
    WNDCLASSW c{};
    c.lpfnWndProc = CountTexts;
    c.lpszClassName = kOwnClass;
    RegisterClassW(&c);
    m_top = CreateWindowExW(0, kOwnClass, KTEXT("Traverse"), WS_OVERLAPPED, 0, 0, 200, 100, nullptr,
                            nullptr, nullptr, nullptr);
    EXPECT_NE(m_top, nullptr);
    textsSet = 0;
  }
  ~TranslateWindow() override {
    kelp::UnloadTranslateFile();
    DestroyWindow(m_top);
    UnregisterClassW(kOwnClass, nullptr);
  }

  HWND Child(const WChar* className, const WChar* text, DWORD style = 0,
             HWND parent = nullptr) const {
    const HWND child = CreateWindowExW(0, className, text, WS_CHILD | style, 0, 0, 50, 20,
                                       parent ? parent : m_top, nullptr, nullptr, nullptr);
    EXPECT_NE(child, nullptr);
    return child;
  }
  void LoadCatalogue() const {
    m_folder.Write("it.po", kCatalogue);
    ASSERT_TRUE(kelp::LoadTranslateFile(WString(m_folder.Wide(KTEXT("it.po")).c_str())));
  }

  HWND m_top;
  TempFolder m_folder;
};

TEST_F(TranslateWindow, ControlsThatShowTheProgramsTextAreTranslatable) {
  const struct {
    const WChar *className, *text;
    DWORD style;
    int translatable;
  } cases[] = {{KTEXT("BUTTON"), KTEXT("x"), BS_PUSHBUTTON, 1},
               {KTEXT("Button"), KTEXT("x"), BS_GROUPBOX, 1},
               {KTEXT("Button"), KTEXT(""), BS_AUTOCHECKBOX, 0},
               {KTEXT("STATIC"), KTEXT("x"), SS_LEFT, 1},
               {KTEXT("Static"), KTEXT(""), SS_CENTER | SS_NOPREFIX, 1},
               {KTEXT("Static"), KTEXT("x"), SS_RIGHT, 1},
               {KTEXT("Static"), KTEXT("x"), SS_ICON, 0},
               {KTEXT("Static"), KTEXT("x"), SS_BLACKFRAME, 0},
               {KTEXT("Static"), KTEXT("x"), SS_SIMPLE, 0},
               {KTEXT("Edit"), KTEXT("x"), 0, 0},
               {KTEXT("ComboBox"), KTEXT("x"), CBS_DROPDOWN, 0},
               {KTEXT("ListBox"), KTEXT("x"), 0, 0},
               {kOwnClass, KTEXT(""), 0, 1}};
  for (const auto& c : cases) {
    EXPECT_EQ(kelp::IsTranslatable(Child(c.className, c.text, c.style)), c.translatable)
        << WString(c.className).ToUtf8().c_str() << " of style " << c.style;
  }
  EXPECT_EQ(kelp::IsTranslatable(nullptr), 0);
}

TEST_F(TranslateWindow, AWindowAndItsChildrenAreTranslated) {
  LoadCatalogue();
  const struct {
    const WChar *className, *text, *shown;
    DWORD style;
  } cases[] = {{KTEXT("Static"), KTEXT("City"), KTEXT("Citt\x00E0"), SS_RIGHT},
               {KTEXT("Static"), KTEXT("City"), KTEXT("City"), SS_SIMPLE},
               {KTEXT("Button"), KTEXT("E@@East (1 char)"), KTEXT("O"), 0},
               {KTEXT("Static"), KTEXT("#static"), KTEXT(""), 0},
               {KTEXT("Static"), KTEXT("#Static"), KTEXT("#Static"), 0},
               {KTEXT("Static"), KTEXT("Two\nlines"), KTEXT("Due\nrighe"), 0},
               {KTEXT("Button"), KTEXT("N@@North (1 char)"), KTEXT("N"), 0},
               {KTEXT("Edit"), KTEXT("City"), KTEXT("City"), 0},
               {KTEXT("Button"), KTEXT(""), KTEXT(""), 0}};
  std::vector<HWND> children;
  for (const auto& c : cases) children.push_back(Child(c.className, c.text, c.style));
  const HWND grandchild = Child(KTEXT("Static"), KTEXT("City"), 0, children.front());

  EXPECT_EQ(kelp::XlateWnd(m_top), static_cast<int>(children.size()));
  EXPECT_EQ(TextOf(m_top), WString(KTEXT("Poligonale")));
  for (std::size_t i = 0; i < children.size(); ++i) {
    EXPECT_EQ(TextOf(children[i]), WString(cases[i].shown)) << i;
  }
  EXPECT_EQ(TextOf(grandchild), WString(KTEXT("City"))) << "is another window's child";
}

TEST_F(TranslateWindow, OnlyATitleThatChangesIsSet) {
  EXPECT_EQ(kelp::XlateWndTitle(nullptr), -1);
  EXPECT_EQ(kelp::XlateWnd(nullptr), -1);
  EXPECT_EQ(kelp::XlateWndTitle(m_top), 0);
  EXPECT_EQ(kelp::XlateWnd(m_top), 0);
  EXPECT_EQ(textsSet, 0);
  Child(kOwnClass, KTEXT("Angle"));
  EXPECT_EQ(kelp::XlateWnd(m_top), 1);
  EXPECT_EQ(textsSet, 1) << "the child's";
  LoadCatalogue();
  EXPECT_EQ(kelp::XlateWndTitle(m_top), 0);
  EXPECT_EQ(textsSet, 2);

  constexpr int kLong = 5000;
  const std::basic_string<WChar> title(kLong, KTEXT('t'));
  SetWindowTextW(m_top, (title + KTEXT("@@note")).c_str());
  EXPECT_EQ(kelp::XlateWndTitle(m_top), 0);
  EXPECT_EQ(GetWindowTextLengthW(m_top), kLong);
}

// The whole of a menu, such as "Open:1/8 {Recent:-/0 [First:2/0]}": text, number and state.
std::string Dump(HMENU menu) {
  std::string dump;
  for (int i = 0; i < GetMenuItemCount(menu); ++i) {
    WChar text[64] = {};
    GetMenuStringW(menu, static_cast<UINT>(i), text, 64, MF_BYPOSITION);
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_STATE | MIIM_FTYPE | MIIM_SUBMENU;
    EXPECT_TRUE(GetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &info));
    if (i > 0) dump += ' ';
    if (info.fType == MFT_SEPARATOR) {
      dump += '-';
      continue;
    }
    dump += WString(text).ToUtf8().c_str();
    if (info.hSubMenu == nullptr) dump += ':' + std::to_string(GetMenuItemID(menu, i));
    if (info.fState != 0) dump += '/' + std::to_string(info.fState);
    if (info.hSubMenu != nullptr) dump += '[' + Dump(info.hSubMenu) + ']';
  }
  return dump;
}

TEST_F(TranslateWindow, MenusAreTranslatedWithTheirSubmenus) {
  const HMENU bar = CreateMenu(), file = CreatePopupMenu(), zoom = CreatePopupMenu(),
              column = CreatePopupMenu();
  const auto popup = [](HMENU menu, UINT flags, HMENU opened, const WChar* text) {
    AppendMenuW(menu, MF_POPUP | flags, reinterpret_cast<UINT_PTR>(opened), text);
  };
  AppendMenuW(column, MF_STRING, 11, KTEXT("In"));
  AppendMenuW(zoom, MF_STRING, 10, KTEXT("In"));
  AppendMenuW(file, MF_CHECKED, 1, KTEXT("&Open\tCtrl+O"));
  AppendMenuW(file, MF_SEPARATOR, 0, nullptr);
  AppendMenuW(file, MF_GRAYED, 2, KTEXT("Undo"));
  AppendMenuW(file, MF_CHECKED, 3, KTEXT("Angle"));
  popup(file, 0, zoom, KTEXT("Zoom"));
  AppendMenuW(file, MF_STRING, 4, KTEXT("E@@East (1 char)"));
  AppendMenuW(file, MF_MENUBREAK, 5, KTEXT("Undo"));
  AppendMenuW(file, MF_MENUBARBREAK, 6, KTEXT("Undo"));
  popup(file, MF_MENUBREAK, column, KTEXT("Column"));
  popup(bar, MF_GRAYED, file, KTEXT("&File"));
  AppendMenuW(bar, MF_STRING, 7, KTEXT("S@@South (1 char)"));

  LoadCatalogue();
  EXPECT_EQ(kelp::XlateMenu(nullptr), 0);
  EXPECT_EQ(kelp::XlateMenu(bar), 0);
  EXPECT_EQ(Dump(bar),
            "&Archivio/1[&Apri\tCtrl+O:1/8 - Annulla:2/1 Angle:3/8 Zoom[Avvicina:10] O:4 Undo:5 "
            "Undo:6 Colonna[Avvicina:11]] S:7");
  DestroyMenu(bar);
}

}  // namespace
