// SPDX-License-Identifier: MIT
#pragma once

#include "ui/menu.h"
#include "ui/wnd.h"

#include <functional>
#include <memory>

namespace vocafade {

/// The window of a menu, and the list of a combo box: items in one column, in several where they would not
/// fit below each other on the screen, or scrolled.
class PopupWnd : public CWnd {
  public:
    /// Called once, with the index of the chosen item or -1, when the window has gone.
    using Done = std::function<void(int index)>;

    /// Opens it with its top left at `place` of `owner`'s client area, at least `width` wide; `height` is
    /// what it must not cover when it has to open upwards. Item `current` (-1: none) is marked from the
    /// start. False when the owner is on no display.
    static bool Open(CWnd& owner, CPoint place, int width, int height, std::vector<CMenu::Item> items,
                     int current, Done done);

    /// Closes the one that is open for `owner`, if one is.
    static void CloseFor(CWnd& owner);

    PopupWnd(CWnd& owner, std::vector<CMenu::Item> items, int current, Done done);
    CWnd* owner() const { return owner_; }
    /// Closes without a choice, telling so.
    void Cancel() { Finish(-1); }
    bool WantsKeyboard() const override { return true; }
    const char* ClassName() const override { return "PopupWnd"; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    bool CreateNative(Desktop& desktop, const CRect& bounds);
    CSize Arrange(const CRect& area, int width);
    void Paint();
    void PaintItem(CDC& dc, int index);
    void Mark(int index);
    void Step(int direction);
    void StepColumn(int direction);
    void Reveal(int index);
    CRect Shown(int index) const;
    void JumpTo(UINT character);
    void Scroll(int pixels);
    void Finish(int index);
    int ItemAt(CPoint point) const;
    bool CanChoose(int index) const;
    int itemCount() const { return static_cast<int>(items_.size()); }

    CWnd* owner_;
    std::vector<CMenu::Item> items_;
    std::vector<CRect> places_; ///< of the items, without scrolling
    std::unique_ptr<CFont> font_;
    Done done_;
    int marked_;
    int scroll_ = 0;
    int contentHeight_ = 0;
    bool armed_ = false; ///< the pointer has been over an item: a release chooses
    CPoint lastPoint_{-1, -1};
};

} // namespace vocafade
