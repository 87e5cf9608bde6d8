// SPDX-License-Identifier: MIT
#pragma once

#include "base/cstring.h"
#include "ui/winuser.h"

#include <functional>
#include <vector>

namespace vocafade {

class CWnd;

/// A popup menu. Every operation is [main-thread].
///
/// A plug-in cannot wait inside the host's idle call, so `TrackPopupMenu` shows the menu and returns; what
/// would have stood behind it goes into the function that it is given:
///
///     button.SetValue(1, false);      // drawn down while the menu is open
///     CMenu menu;                     // a local will do, the items are copied
///     menu.CreatePopupMenu();
///     menu.AppendMenu(MF_STRING, 1010, "First");
///     menu.TrackPopupMenu(TPM_RIGHTBUTTON, 91, 13, this, [this] {
///         button.SetValue(0, false);  // the menu is gone
///     });
///
/// The order is the classic one: the menu disappears, the function runs, and then the chosen command arrives
/// as WM_COMMAND (none when the user chose nothing), WM_EXITMENULOOP after it. When the owner goes away first
/// the menu goes with it, and neither comes.
class CMenu {
  public:
    struct Item {
        UINT flags = MF_STRING;
        UINT id = 0;
        CString text;
        CString margin; ///< a few characters before the text, that are not chosen by
    };

    bool CreatePopupMenu();
    /// Adds an item at the end; `flags` is MF_STRING with any of MF_CHECKED, MF_GRAYED and MF_DISABLED. The
    /// text is UTF-8, and so is what stands before it in the menu's margin, flush right.
    bool AppendMenu(UINT flags, UINT id, const char* text, const char* margin = "");

    /// [main-thread] Shows the menu with its top left at (x, y) of `owner`'s client area (moved so that all
    /// of it is on the screen; in columns, or scrolling, where it is too long) and returns at once. False
    /// when there is nothing to show or the owner is not shown on a display; `closed` does not run then. A
    /// menu that is open in the same editor closes first.
    bool TrackPopupMenu(UINT flags, int x, int y, CWnd* owner, std::function<void()> closed = {}) const;

  private:
    std::vector<Item> items_;
};

} // namespace vocafade
