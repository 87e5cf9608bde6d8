// SPDX-License-Identifier: MIT
#include "editor/bitmap_switch.h"

namespace vocafade {

void CKVBBitmapSwitch2DC::Make(const CRect& switchRect, CWnd* parent, CKVBBitmap* offImage,
                               CKVBBitmap* onImage, unsigned id, const CRect& /*secondRect*/, bool latching,
                               CKVBBitmap* maskImage, ControlCallbackFunction callback, void* context) {
    BitmapControl::Make(switchRect, {}, parent, id, callback, context);
    pressed_ = false;
    latching_ = latching;
    offImage_ = offImage;
    onImage_ = onImage;
    maskImage_ = maskImage;
    disabledImage_ = nullptr;
    state_ = 0;
    selected_ = false;
    enabled_ = true;
}

void CKVBBitmapSwitch2DC::SetValue(int state, bool notify) {
    if (!enabled_ || IsLatched() || state == state_) return;
    state_ = state;
    if (notify) Notify(static_cast<float>(state));
}

bool CKVBBitmapSwitch2DC::Press(CPoint point) {
    if (!PtInSwitch(point)) return false;
    SetValue(state_ != 0 ? 0 : 1, true);
    return true;
}

void CKVBBitmapSwitch2DC::LButtonDown(CDC* dc) {
    if (!enabled_ || IsLatched()) return;
    pressed_ = true;
    DrawSwitch(dc);
}

void CKVBBitmapSwitch2DC::LButtonUp(CDC* dc) {
    if (!enabled_ || IsLatched() || !pressed_) return;
    pressed_ = false;
    DrawSwitch(dc);
}

void CKVBBitmapSwitch2DC::DrawPart(CDC* dc, CKVBBitmap* image, int row, int height) {
    if (image == nullptr) return;
    const int x = rect().left;
    const int y = rect().top;
    CDC source;
    source.CreateCompatibleDC(dc);
    source.SelectObject(image);
    if (maskImage_ == nullptr) {
        dc->BitBlt(x, y, image->Width(), height, &source, 0, row, SRCCOPY);
        return;
    }
    // Where the mask is black the image replaces what is there, where it is white the ground stays.
    CDC mask;
    mask.CreateCompatibleDC(dc);
    mask.SelectObject(maskImage_);
    dc->BitBlt(x, y, image->Width(), height, &source, 0, row, SRCINVERT);
    dc->BitBlt(x, y, image->Width(), height, &mask, 0, row, SRCAND);
    dc->BitBlt(x, y, image->Width(), height, &source, 0, row, SRCINVERT);
}

void CKVBBitmapSwitch2DC::DrawSwitch(CDC* dc) {
    if (dc == nullptr) return;
    if (!enabled_) {
        DrawPart(dc, disabledImage_, 0, disabledImage_ != nullptr ? disabledImage_->Height() : 0);
        return;
    }
    // One height for both images: the released one's.
    const int half = offImage_ != nullptr ? offImage_->Height() / 2 : 0;
    DrawPart(dc, state_ != 0 ? onImage_ : offImage_, pressed_ ? half : 0, half);
}

} // namespace vocafade
