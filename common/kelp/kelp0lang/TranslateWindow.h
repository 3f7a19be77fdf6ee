// Windows and menus into the user's language, in place: what they show is taken for source texts.
//
//   kelp::XlateWnd(dialog);  // as its first work in WM_INITDIALOG
//   kelp::XlateMenu(GetMenu(mainWindow));
//
// Texts are translated by Xlate. What has been translated once is no source text any more, so each
// window and menu is translated once.
//
// Threads: on the thread that owns the window.
#pragma once

#include <windows.h>

#include "kelp0lang/Export.h"

namespace kelp {

// 1 for a control that shows a text of the program, else 0: a button with text, a static control
// that shows no picture, and any other control, but no text or list of the user's (edit control,
// list box, combo box). A null window gives 0.
KELP0LANG_API int IsTranslatable(HWND window);

// The text of the window itself. -1 for a null window, else 0.
KELP0LANG_API int XlateWndTitle(HWND window);

// The title of a window and the texts of its translatable children, without what they hold in turn.
// A text "#static", which the program fills in later, becomes empty. Gives the number of children,
// the others among them; -1 for a null window.
KELP0LANG_API int XlateWnd(HWND window);

// The items of a menu and of its submenus, which keep number and state. Separators and items that
// begin a column are left as they are. Gives 0.
KELP0LANG_API int XlateMenu(HMENU menu);

}  // namespace kelp
