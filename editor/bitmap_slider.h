// SPDX-License-Identifier: MIT
#pragma once

#include "editor/bitmap_control.h"

namespace vocafade {

/// A fader drawn from bitmaps.
class CKVBBitmapSliderDC : public BitmapControl {
  public:
    /// `startPoint` and `endPoint` are the thumb's centre at `minimum` and `maximum`, in the track image; only the coordinate along the travel counts, the other one of
    /// `startPoint` is where the thumb image begins. `altImage` (may be null) is laid over the track of a
    /// horizontal fader up to the thumb. `logTaper` is the decade taper; `inverted` swaps the ends for
    /// presses beyond them; `twoPosition` makes every drag end at one end or the other.
    void Make(const CRect& trackRect, const CRect& readoutRect, CWnd* parent, CKVBBitmap* trackImage,
              CKVBBitmap* altImage, CKVBBitmap* thumbImage, float minimum, float maximum, CPoint startPoint,
              CPoint endPoint, unsigned id, int vertical, bool logTaper, bool inverted, bool hideThumb,
              bool twoPosition, ControlCallbackFunction callback, void* context);

    /// Sets the value, clamped to the range; NaN changes nothing. Draws on `dc` unless it is
    /// null, and marks the read-out for painting even when the value stayed.
    void SetValue(float value, CDC* dc, bool notify);
    float GetValue() const { return value_; }
    void DrawSlider(CDC* dc);

    /// True when the fader is hit; it then follows the mouse until `OnLButtonUp`.
    bool PtInSwitch(CPoint point);
    /// Moves the thumb to `point`; true when that changed the value, which was then reported.
    bool SetValueByPoint(CPoint point);
    void Enable(bool enable) { enabled_ = enable; }

    bool Press(CPoint point) override;
    void Show(float value) override { SetValue(value, nullptr, false); }
    void Change(float value, CDC* dc) override { SetValue(value, dc, true); }
    void Draw(CDC* dc) override { DrawSlider(dc); }

    /// The value that a press at `point` of the parent gives.
    float ValueAt(CPoint point) const;
    /// Where the thumb image begins in the track image.
    CPoint ThumbPlace() const;

  private:
    double ValueAlong(int place, int start, int end) const;
    double Fraction() const;
    void Follow(CPoint point) override { SetValueByPoint(point); }

    float min_ = 0.0f;
    float max_ = 1.0f;
    CPoint startPoint_;
    CPoint endPoint_;
    int vertical_ = 1;
    CKVBBitmap* trackImage_ = nullptr;
    CKVBBitmap* thumbImage_ = nullptr;
    CKVBBitmap* altImage_ = nullptr;
    float value_ = 0.0f;
    bool hideThumb_ = false;
    bool logTaper_ = false;
    bool inverted_ = false;
    bool twoPosition_ = false;
    int imageWidth_ = 0;
    int imageHeight_ = 0;
    bool enabled_ = false;
};

} // namespace vocafade
