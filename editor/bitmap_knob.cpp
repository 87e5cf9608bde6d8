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
/// Cut short on purpose (docs/compatibility.md).
constexpr double kShortPi = 3.141592653;

} // namespace

void CKVBNewBitmapTumamiDC::Make(const CRect& knobRect, const CRect& readoutRect, CWnd* parent,
                                 CKVBBitmap* stripImage, float minimum, float maximum, unsigned id,
                                 int frames, float angleMin, float angleMax, int spare, bool logTaper,
                                 ControlCallbackFunction callback, void* context) {
    BitmapControl::Make(knobRect, readoutRect, parent, id, callback, context);
    stripImage_ = stripImage;
    min_ = minimum;
    max_ = maximum;
    angleMin_ = angleMin;
    angleMax_ = angleMax;
    spare_ = spare;
    logTaper_ = logTaper;
    lastValue_ = kNoValue;
    value_ = kNoValue;
    SetValue(min_ + 0.5f * (max_ - min_), nullptr, false);
    frames_ = std::max(frames, 1);
    step_ = frames_ > 1 ? (max_ - min_) / static_cast<float>(frames_ - 1) : 0.0f;
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
    if (notify) Notify(value_);
    if (dc != nullptr) Draw(dc);
    InvalidateReadout();
}

double CKVBNewBitmapTumamiDC::AngleTowards(int dx, int dy) const {
    double angle = dy < 0 ? 180.0 : 0.0;
    if (dx != 0) angle = -std::atan2(dx, dy) * 180.0 / kShortPi;
    if (dx > 0) angle += 360.0;
    // Across the gap at the bottom the knob stays at the end that it has reached.
    if (dx >= 0 && lastValue_ == min_) angle = angleMin_;
    if (dx <= 0 && lastValue_ == max_) angle = angleMax_;
    return std::clamp(angle, static_cast<double>(angleMin_), static_cast<double>(angleMax_));
}

void CKVBNewBitmapTumamiDC::SetValue(CPoint point) {
    const int dx = point.x - rect().left - rect().Width() / 2;
    const int dy = point.y - rect().top - rect().Height() / 2;
    if (dx == 0 && dy == 0) return;
    angle_ = AngleTowards(dx, dy);
    const double sweep = static_cast<double>(angleMax_) - angleMin_;
    const double travel = sweep != 0.0 ? (angle_ - angleMin_) / sweep : 0.0;
    const double range = static_cast<double>(max_) - min_;
    value_ = static_cast<float>(min_ + range * (logTaper_ ? TaperedFraction(travel) : travel));
    lastValue_ = value_;
    InvalidateReadout();
    Notify(value_);
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
    dc->BitBlt(rect().left, rect().top, rect().Width(), rect().Height(), &source, 0,
               Frame() * rect().Height(), SRCCOPY);
}

bool CKVBNewBitmapTumamiDC::PtInTumami(CPoint point) { return Track(point); }

bool CKVBNewBitmapTumamiDC::Press(CPoint point) {
    if (!PtInTumami(point)) return false;
    SetValue(point);
    return true;
}

void CKVBNewBitmapTumamiDC::DragEnded() { lastValue_ = kDragEnded; }

} // namespace vocafade
