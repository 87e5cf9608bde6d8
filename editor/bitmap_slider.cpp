// SPDX-License-Identifier: MIT
#include "editor/bitmap_slider.h"

#include "editor/taper.h"

#include <algorithm>
#include <cmath>

namespace vocafade {

void CKVBBitmapSliderDC::Make(const CRect& trackRect, const CRect& readoutRect, CWnd* parent,
                              CKVBBitmap* trackImage, CKVBBitmap* altImage, CKVBBitmap* thumbImage,
                              float minimum, float maximum, CPoint startPoint, CPoint endPoint, unsigned id,
                              int vertical, bool logTaper, bool inverted, bool hideThumb, bool twoPosition,
                              ControlCallbackFunction callback, void* context) {
    BitmapControl::Make(trackRect, readoutRect, parent, id, callback, context);
    min_ = minimum;
    max_ = maximum;
    startPoint_ = startPoint;
    endPoint_ = endPoint;
    vertical_ = vertical;
    trackImage_ = trackImage;
    thumbImage_ = thumbImage;
    altImage_ = altImage;
    value_ = minimum;
    hideThumb_ = hideThumb;
    logTaper_ = logTaper;
    inverted_ = inverted;
    twoPosition_ = twoPosition;
    imageWidth_ = trackImage != nullptr ? trackImage->Width() : 0;
    imageHeight_ = trackImage != nullptr ? trackImage->Height() : 0;
    enabled_ = true;
}

void CKVBBitmapSliderDC::SetValue(float value, CDC* dc, bool notify) {
    if (std::isnan(value)) value = value_;
    value = std::clamp(value, min_, max_);
    if (value != value_) {
        value_ = value;
        if (notify) Notify(value_);
    }
    if (dc != nullptr) DrawSlider(dc);
    InvalidateReadout();
}

bool CKVBBitmapSliderDC::PtInSwitch(CPoint point) { return enabled_ && Track(point); }

bool CKVBBitmapSliderDC::Press(CPoint point) {
    if (!PtInSwitch(point)) return false;
    SetValueByPoint(point);
    return true;
}

double CKVBBitmapSliderDC::ValueAlong(int place, int start, int end) const {
    if (start == end) return min_;
    const double travel = static_cast<double>(place - start) / (end - start);
    const double range = static_cast<double>(max_) - min_;
    return min_ + range * (vertical_ != 0 && logTaper_ ? TaperedFraction(travel) : travel);
}

float CKVBBitmapSliderDC::ValueAt(CPoint point) const {
    const int place = vertical_ != 0 ? point.y - rect().top : point.x - rect().left;
    const int start = vertical_ != 0 ? startPoint_.y : startPoint_.x;
    const int end = vertical_ != 0 ? endPoint_.y : endPoint_.x;
    // Up is more: a vertical fader starts at the greater coordinate, unless it is inverted.
    const bool startIsHigh = (vertical_ != 0) != inverted_;
    const bool beforeStart = startIsHigh ? place > start : place < start;
    const bool beyondEnd = startIsHigh ? place < end : place > end;
    float value = min_;
    if (beyondEnd && !beforeStart) {
        value = max_;
    } else if (!beforeStart) {
        value = static_cast<float>(ValueAlong(place, start, end));
    }
    if (twoPosition_) value = value < (min_ + max_) / 2 ? min_ : max_;
    return value;
}

bool CKVBBitmapSliderDC::SetValueByPoint(CPoint point) {
    if (!enabled_) return false;
    const float value = ValueAt(point);
    if (value == value_) return false;
    value_ = value;
    InvalidateReadout();
    Notify(value_);
    return true;
}

double CKVBBitmapSliderDC::Fraction() const {
    return max_ != min_ ? (static_cast<double>(value_) - min_) / (static_cast<double>(max_) - min_) : 0.0;
}

CPoint CKVBBitmapSliderDC::ThumbPlace() const {
    const int width = thumbImage_ != nullptr ? thumbImage_->Width() : 0;
    const int height = thumbImage_ != nullptr ? thumbImage_->Height() : 0;
    if (vertical_ == 0) {
        const double travel = Fraction() * (endPoint_.x - startPoint_.x);
        return {static_cast<int>(startPoint_.x + travel - 0.5 * width), startPoint_.y};
    }
    if (logTaper_) {
        const double travel = TaperedTravel(Fraction()) * (endPoint_.y - startPoint_.y);
        const double centre = startPoint_.y + travel + 0.5; // rounded by the cut that follows
        return {startPoint_.x, static_cast<int>(centre) - height / 2};
    }
    const double travel = Fraction() * (startPoint_.y - endPoint_.y);
    return {startPoint_.x, static_cast<int>(startPoint_.y - travel - 0.5 * height)};
}

void CKVBBitmapSliderDC::DrawSlider(CDC* dc) {
    if (!enabled_ || dc == nullptr || trackImage_ == nullptr) return;
    const CPoint at = rect().TopLeft();
    const CDC::Within limit(*dc, {at, {imageWidth_, imageHeight_}});
    CDC source;
    source.CreateCompatibleDC(dc);
    source.SelectObject(trackImage_);
    dc->StretchBlt(at.x, at.y, imageWidth_, imageHeight_, &source, 0, 0, trackImage_->Width(),
                   trackImage_->Height(), SRCCOPY);
    const CPoint thumb = ThumbPlace();
    if (vertical_ == 0 && altImage_ != nullptr) {
        const int filled = thumb.x + (thumbImage_ != nullptr ? thumbImage_->Width() / 2 : 0);
        source.SelectObject(altImage_);
        dc->BitBlt(at.x, at.y, std::min(filled, altImage_->Width()), altImage_->Height(), &source, 0, 0,
                   SRCCOPY);
    }
    if (hideThumb_ || thumbImage_ == nullptr) return;
    source.SelectObject(thumbImage_);
    dc->BitBlt(at.x + thumb.x, at.y + thumb.y, thumbImage_->Width(), thumbImage_->Height(), &source, 0, 0,
               SRCCOPY);
}

} // namespace vocafade
