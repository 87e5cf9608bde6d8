// SPDX-License-Identifier: MIT
#include "editor/bitmap_control.h"

namespace vocafade {

void BitmapControl::Make(const CRect& rect, const CRect& readoutRect, CWnd* parent, unsigned id,
                         ControlCallbackFunction callback, void* context) {
    SetNewRect(rect, readoutRect);
    parent_ = parent;
    id_ = id;
    callback_ = callback;
    context_ = context;
    tracking_ = false;
}

void BitmapControl::SetNewRect(const CRect& rect, const CRect& readoutRect) {
    rect_ = rect;
    readoutRect_ = readoutRect;
}

bool BitmapControl::Track(CPoint point) {
    if (!rect_.PtInRect(point)) return false;
    tracking_ = true;
    if (parent_ != nullptr) parent_->SetCapture();
    return true;
}

void BitmapControl::OnMouseMove(CPoint point, CDC* dc) {
    if (!tracking_) return;
    Follow(point);
    Draw(dc);
}

void BitmapControl::OnLButtonUp(CPoint point, CDC* dc) {
    if (!tracking_) return;
    tracking_ = false; // first: the end of the capture would cancel the drag
    if (parent_ != nullptr) parent_->ReleaseCapture();
    Follow(point);
    DragEnded();
    Draw(dc);
}

void BitmapControl::CancelTracking() {
    if (!tracking_) return;
    tracking_ = false;
    DragEnded();
}

void BitmapControl::InvalidateReadout() {
    if (parent_ != nullptr && !readoutRect_.IsRectEmpty()) parent_->InvalidateRect(&readoutRect_, true);
}

void BitmapControl::Notify(float value) {
    if (callback_ != nullptr) callback_(static_cast<int>(id_), value, context_);
}

} // namespace vocafade
