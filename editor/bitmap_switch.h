// SPDX-License-Identifier: MIT
#pragma once

#include "editor/bitmap_control.h"

namespace vocafade {

/// A button with two states, drawn from two bitmaps.
class CKVBBitmapSwitch2DC : public BitmapControl {
  public:
    /// Each image has two halves of equal height, released above pressed; both images are of one height.
    /// `latching`: once on, the switch can be neither pressed nor switched off. With `maskImage` (may be
    /// null) only what the mask leaves out is drawn. `secondRect` has no use here.
    void Make(const CRect& switchRect, CWnd* parent, CKVBBitmap* offImage, CKVBBitmap* onImage, unsigned id,
              const CRect& secondRect, bool latching, CKVBBitmap* maskImage, ControlCallbackFunction callback,
              void* context);

    /// Sets the state, 0 or 1. Nothing happens when it stays, when disabled, or when latched.
    void SetValue(int state, bool notify);
    bool GetValue() const { return state_ != 0; }
    void DrawSwitch(CDC* dc);
    bool PtInSwitch(CPoint point) const { return rect().PtInRect(point); }

    void LButtonDown(CDC* dc);
    void LButtonUp(CDC* dc);
    void LButtonDblClk(CDC* dc) { LButtonDown(dc); }
    void RButtonDown(CDC*) {}
    void RButtonUp(CDC*) {}
    void RButtonDblClk(CDC*) {}
    bool IsDown() const { return pressed_; }

    /// Has no effect on the look.
    void SetSelect(bool selected) { selected_ = selected; }
    bool IsSelected() const { return selected_; }
    /// The whole picture of the disabled switch; null shows nothing.
    void SetDisableBmp(CKVBBitmap* image) { disabledImage_ = image; }
    void Enable(bool enable) { enabled_ = enable; }

    /// Switches over.
    bool Press(CPoint point) override;
    void Show(float value) override { SetValue(static_cast<int>(value), false); }
    void Change(float value, CDC* dc) override {
        SetValue(static_cast<int>(value), true);
        Draw(dc);
    }
    void Draw(CDC* dc) override { DrawSwitch(dc); }

  private:
    bool IsLatched() const { return latching_ && state_ != 0; }
    void DrawPart(CDC* dc, CKVBBitmap* image, int row, int height);

    bool pressed_ = false;
    bool latching_ = false;
    CKVBBitmap* offImage_ = nullptr;
    CKVBBitmap* onImage_ = nullptr;
    CKVBBitmap* maskImage_ = nullptr;
    CKVBBitmap* disabledImage_ = nullptr;
    int state_ = 0;
    bool selected_ = false;
    bool enabled_ = false;
};

} // namespace vocafade
