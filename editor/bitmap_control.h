// SPDX-License-Identifier: MIT
#pragma once

#include "editor/control_callback.h"
#include "ui/dc.h"
#include "ui/gdi.h"
#include "ui/wnd.h"

namespace vocafade {

/// What the controls that are drawn from bitmaps have in common. None is a window: its parent passes it
/// presses and moves, and the context to draw on. Every operation is [main-thread]; the `Make` of the kind
/// comes first. Images, parent and context outlive the control.
class BitmapControl {
  public:
    virtual ~BitmapControl() = default;

    /// Does what a press at `point` of the parent means; false when the control is not hit.
    virtual bool Press(CPoint point) = 0;
    /// Takes a value that does not come from the user, and reports nothing.
    virtual void Show(float value) = 0;
    /// Takes a value of the user's, and reports it where it is another one.
    virtual void Change(float value, CDC* dc) = 0;
    virtual void Draw(CDC* dc) = 0;

    /// While it is being dragged the control follows the mouse, and reports.
    void OnMouseMove(CPoint point, CDC* dc);
    void OnLButtonUp(CPoint point, CDC* dc);
    bool IsTracking() const { return tracking_; }
    /// Lets go of the mouse without a value, when it was taken away.
    void CancelTracking();

    /// Where the control stands in its parent.
    void GetRect(CRect* rect) const { *rect = rect_; }
    /// Moves the control, and the place where its value is shown.
    void SetNewRect(const CRect& rect, const CRect& readoutRect = {});

  protected:
    BitmapControl() = default;
    BitmapControl(const BitmapControl&) = default;
    BitmapControl& operator=(const BitmapControl&) = default;

    /// `rect` is where the control stands and is pressed; `readoutRect` is where the parent shows its value
    /// (empty for nowhere). `callback` may be null.
    void Make(const CRect& rect, const CRect& readoutRect, CWnd* parent, unsigned id,
              ControlCallbackFunction callback, void* context);
    /// True when the control is hit; it then has the mouse until `OnLButtonUp`.
    bool Track(CPoint point);
    /// The mouse is at `point` during a drag.
    virtual void Follow(CPoint /*point*/) {}
    virtual void DragEnded() {}
    void Notify(float value);
    void InvalidateReadout();
    const CRect& rect() const { return rect_; }

  private:
    CRect rect_;
    CRect readoutRect_;
    CWnd* parent_ = nullptr;
    unsigned id_ = 0;
    ControlCallbackFunction callback_ = nullptr;
    void* context_ = nullptr;
    bool tracking_ = false;
};

} // namespace vocafade
