// SPDX-License-Identifier: MIT
#pragma once

#include "ui/control.h"
#include "ui/menu.h"

#include <functional>
#include <memory>

namespace vocafade {

/// The next entry of `count`, after entry `from` and then from the first on, whose text begins with the
/// letter of a WM_CHAR with these arguments, whatever its case; -1 when there is none. `textOf` gives null
/// for what cannot be chosen.
int NextWithLetter(WPARAM wParam, LPARAM lParam, int from, int count,
                   const std::function<const CString*(int index)>& textOf);

/// The window of a menu, and the list of a combo box: items in one column, in several where they would not
/// fit below each other on the screen, or scrolled.
class PopupWnd : public Control {
  public:
    /// Called once, with the index of the chosen item or -1, when the window has gone.
    using Done = std::function<void(int index)>;

    /// Opens it with its top left at `place` of `owner`'s client area, at least `width` wide; `height` is
    /// what it must not cover when it has to open upwards. Item `current` (-1: none) is marked from the
    /// start. False when the owner is on no display.
    static bool Open(CWnd& owner, CPoint place, int width, int height, std::vector<CMenu::Item> items,
                     int current, Done done);

    PopupWnd(CWnd& owner, std::vector<CMenu::Item> items, int current, Done done);
    CWnd* owner() const { return owner_; }
    /// Closes without a choice, telling so.
    void Cancel() { Finish(-1); }
    bool WantsKeyboard() const override { return true; }
    const char* ClassName() const override { return "PopupWnd"; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    bool CreateNative(WindowSession& session, const CRect& bounds);
    CSize Arrange(const CRect& area, int width);
    /// Of `rows_` items each: no wider than what stands in them.
    std::vector<int> ColumnWidths(const CDC& measure) const;
    void Paint();
    void PaintItem(CDC& dc, int index);
    void Mark(int index);
    void Step(int direction);
    void StepColumn(int direction);
    void Reveal(int index);
    CRect Shown(int index) const;
    void Scroll(int pixels);
    void Finish(int index);
    int ItemAt(CPoint point) const;
    bool CanChoose(int index) const;
    int itemCount() const { return static_cast<int>(items_.size()); }

    CWnd* owner_;
    std::vector<CMenu::Item> items_;
    std::vector<CRect> places_; ///< of the items, without scrolling
    Done done_;
    int marked_;
    int scroll_ = 0;
    int contentHeight_ = 0;
    int rows_ = 1;
    int marginWidth_ = 0;
    bool armed_ = false; ///< the pointer has been over an item: a release chooses
    CPoint lastPoint_{-1, -1};
};

} // namespace vocafade
