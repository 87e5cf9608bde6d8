// SPDX-License-Identifier: MIT
#pragma once

#include "editor/control_callback.h"
#include "ui/dc.h"
#include "ui/gdi.h"
#include "ui/wnd.h"

namespace vocafade {

/// A button with two states, drawn from two bitmaps. Not a window: its parent passes it presses and the
/// context to draw on. Every operation is [main-thread]; `Make` comes first.
class CKVBBitmapSwitch2DC {
  public:
    /// Each image has two halves of equal height, released above pressed; both images are of one height.
    /// `latching`: once on, the switch can be neither pressed nor switched off. With `maskImage` (may be
    /// null) only what the mask leaves out is drawn. `secondRect` is kept for its owner.
    void Make(const CRect& switchRect, CWnd* parent, CKVBBitmap* offImage, CKVBBitmap* onImage, unsigned id,
              const CRect& secondRect, bool latching, CKVBBitmap* maskImage, ControlCallbackFunction callback,
              void* context);

    /// Sets the state, 0 or 1. Nothing happens when it stays, when disabled, or when latched.
    void SetValue(int state, bool notify);
    bool GetValue() const { return state_ != 0; }
    void DrawSwitch(CDC* dc);
    bool PtInSwitch(CPoint point) const { return switchRect_.PtInRect(point); }

    void LButtonDown(CDC* dc);
    void LButtonUp(CDC* dc);
    void LButtonDblClk(CDC* dc) { LButtonDown(dc); }
    void RButtonDown(CDC*) {}
    void RButtonUp(CDC*) {}
    void RButtonDblClk(CDC*) {}
    bool IsDown() const { return pressed_; }

    void SetSelect(bool selected) { selected_ = selected; }
    bool IsSelected() const { return selected_; }
    /// The whole picture of the disabled switch; null shows nothing.
    void SetDisableBmp(CKVBBitmap* image) { disabledImage_ = image; }
    void Enable(bool enable) { enabled_ = enable; }
    void SetNewRect(const CRect& switchRect) { switchRect_ = switchRect; }
    const CRect& secondRect() const { return secondRect_; }

  private:
    bool IsLatched() const { return latching_ && state_ != 0; }
    void DrawPart(CDC* dc, CKVBBitmap* image, int row, int height);

    unsigned id_ = 0;
    bool pressed_ = false;
    bool latching_ = false;
    CKVBBitmap* offImage_ = nullptr;
    CKVBBitmap* onImage_ = nullptr;
    CKVBBitmap* maskImage_ = nullptr;
    CKVBBitmap* disabledImage_ = nullptr;
    int state_ = 0;
    bool selected_ = false;
    bool enabled_ = false;
    CRect secondRect_;
    CRect switchRect_;
    CWnd* parent_ = nullptr;
    ControlCallbackFunction callback_ = nullptr;
    void* context_ = nullptr;
};

} // namespace vocafade
