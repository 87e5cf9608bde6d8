// SPDX-License-Identifier: MIT
#include "editor/bitmap_knob.h"

#include "editor/taper.h"

#include <algorithm>
#include <cmath>

namespace vocafade {
namespace {

/// No value of any knob.
constexpr float kNoValue = 65535.0f;
/// Tells a new drag that it may begin anywhere.
constexpr float kDragEnded = -1.0f;
/// Cut short as it always was; the values of saved automation hang on it.
constexpr double kPi = 3.141592653;

} // namespace

void CKVBNewBitmapTumamiDC::Make(const CRect& knobRect, const CRect& readoutRect, CWnd* parent,
                                 CKVBBitmap* stripImage, float minimum, float maximum, unsigned id,
                                 int frames, float angleMin, float angleMax, int spare, bool logTaper,
                                 ControlCallbackFunction callback, void* context) {
    id_ = id;
    stripImage_ = stripImage;
    parent_ = parent;
    min_ = minimum;
    max_ = maximum;
    knobRect_ = knobRect;
    angleMin_ = angleMin;
    angleMax_ = angleMax;
    spare_ = spare;
    logTaper_ = logTaper;
    callback_ = callback;
    context_ = context;
    readoutRect_ = readoutRect;
    lastValue_ = kNoValue;
    value_ = kNoValue;
    SetValue(min_ + 0.5f * (max_ - min_), nullptr, false);
    frames_ = std::max(frames, 1);
    step_ = frames_ > 1 ? (max_ - min_) / static_cast<float>(frames_ - 1) : 0.0f;
    tracking_ = false;
}

void CKVBNewBitmapTumamiDC::SetNewRect(const CRect& knobRect, const CRect& readoutRect) {
    knobRect_ = knobRect;
    readoutRect_ = readoutRect;
}

void CKVBNewBitmapTumamiDC::InvalidateReadout() {
    if (parent_ != nullptr && !readoutRect_.IsRectEmpty()) parent_->InvalidateRect(&readoutRect_, true);
}

void CKVBNewBitmapTumamiDC::SetValue(float value, CDC* dc, bool notify) {
    if (std::isnan(value)) return;
    value = std::clamp(value, min_, max_);
    if (value == value_) return;
    value_ = value;
    const double fraction =
        max_ != min_ ? (static_cast<double>(value) - min_) / (static_cast<double>(max_) - min_) : 0.0;
    angle_ = angleMin_ + (static_cast<double>(angleMax_) - angleMin_) * fraction;
    lastValue_ = value;
    if (notify && callback_ != nullptr) callback_(static_cast<int>(id_), value_, context_);
    if (dc != nullptr) Draw(dc);
    InvalidateReadout();
}

double CKVBNewBitmapTumamiDC::AngleTowards(int dx, int dy) const {
    double angle = dy < 0 ? 180.0 : 0.0;
    if (dx != 0) angle = -std::atan2(dx, dy) * 180.0 / kPi;
    if (dx > 0) angle += 360.0;
    // Across the gap at the bottom the knob stays at the end that it has reached.
    if (dx >= 0 && lastValue_ == min_) angle = angleMin_;
    if (dx <= 0 && lastValue_ == max_) angle = angleMax_;
    return std::clamp(angle, static_cast<double>(angleMin_), static_cast<double>(angleMax_));
}

void CKVBNewBitmapTumamiDC::SetValue(CPoint point) {
    const int dx = point.x - knobRect_.left - knobRect_.Width() / 2;
    const int dy = point.y - knobRect_.top - knobRect_.Height() / 2;
    if (dx == 0 && dy == 0) return;
    angle_ = AngleTowards(dx, dy);
    const double sweep = static_cast<double>(angleMax_) - angleMin_;
    const double travel = sweep != 0.0 ? (angle_ - angleMin_) / sweep : 0.0;
    const double range = static_cast<double>(max_) - min_;
    value_ = static_cast<float>(min_ + range * (logTaper_ ? TaperedFraction(travel) : travel));
    lastValue_ = value_;
    InvalidateReadout();
    if (callback_ != nullptr) callback_(static_cast<int>(id_), value_, context_);
}

int CKVBNewBitmapTumamiDC::Frame() const {
    if (step_ == 0.0f) return 0;
    double place = static_cast<double>(value_) - min_;
    if (logTaper_) place = TaperedTravel(place / (static_cast<double>(max_) - min_));
    return std::clamp(static_cast<int>(std::floor(place / step_ + 0.5)), 0, frames_ - 1);
}

int CKVBNewBitmapTumamiDC::GetIndexValue() const {
    if (step_ == 0.0f) return 0;
    return static_cast<int>(std::ceil((value_ - min_) / step_));
}

void CKVBNewBitmapTumamiDC::Draw(CDC* dc) {
    if (dc == nullptr || stripImage_ == nullptr) return;
    CDC source;
    source.CreateCompatibleDC(dc);
    source.SelectObject(stripImage_);
    dc->BitBlt(knobRect_.left, knobRect_.top, knobRect_.Width(), knobRect_.Height(), &source, 0,
               Frame() * knobRect_.Height(), SRCCOPY);
}

bool CKVBNewBitmapTumamiDC::PtInTumami(CPoint point) {
    if (!knobRect_.PtInRect(point)) return false;
    if (parent_ != nullptr) parent_->SetCapture();
    tracking_ = true;
    return true;
}

void CKVBNewBitmapTumamiDC::OnMouseMove(CPoint point, CDC* dc) {
    if (!tracking_) return;
    SetValue(point);
    Draw(dc);
}

void CKVBNewBitmapTumamiDC::OnLButtonUp(CPoint point, CDC* dc) {
    if (!tracking_) return;
    tracking_ = false; // before the capture goes, so that its loss does not look like a cancelled drag
    if (parent_ != nullptr) parent_->ReleaseCapture();
    SetValue(point);
    lastValue_ = kDragEnded;
    Draw(dc);
}

void CKVBNewBitmapTumamiDC::CancelTracking() {
    if (!tracking_) return;
    tracking_ = false;
    lastValue_ = kDragEnded;
}

} // namespace vocafade
