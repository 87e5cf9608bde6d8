// SPDX-License-Identifier: MIT
#pragma once

#include "editor/bitmap_control.h"

namespace vocafade {

/// A knob drawn from a strip of frames, which follows the pointer's angle around its centre.
class CKVBNewBitmapTumamiDC : public BitmapControl {
  public:
    /// `stripImage` holds `frames` pictures below each other, each of `knobRect`'s size. Angles are in
    /// degrees clockwise from straight down. `spare` is kept and not used. The knob starts in the middle of
    /// its range.
    void Make(const CRect& knobRect, const CRect& readoutRect, CWnd* parent, CKVBBitmap* stripImage,
              float minimum, float maximum, unsigned id, int frames, float angleMin, float angleMax,
              int spare, bool logTaper, ControlCallbackFunction callback, void* context);

    /// Sets the value, clamped to the range. Does nothing at all when the value stays.
    void SetValue(float value, CDC* dc, bool notify);
    /// Turns the knob towards `point` and reports the value, also an unchanged one. A point at the centre
    /// has no angle and changes nothing.
    void SetValue(CPoint point);
    float GetValue() const { return value_; }
    /// The value in steps from the minimum, rounded up.
    int GetIndexValue() const;
    void Draw(CDC* dc) override;

    /// True when the knob is hit; it then follows the mouse until `OnLButtonUp`.
    bool PtInTumami(CPoint point);
    bool Press(CPoint point) override;
    void Show(float value) override { SetValue(value, nullptr, false); }
    void Change(float value, CDC* dc) override { SetValue(value, dc, true); }

    /// The frame that shows the value.
    int Frame() const;
    /// The knob's angle in degrees.
    double Angle() const { return angle_; }

  private:
    double AngleTowards(int dx, int dy) const;
    void Follow(CPoint point) override { SetValue(point); }
    void DragEnded() override;

    CKVBBitmap* stripImage_ = nullptr;
    float min_ = 0.0f;
    float max_ = 1.0f;
    float value_ = 0.0f;
    float angleMin_ = 0.0f;
    float angleMax_ = 360.0f;
    int spare_ = 0;
    double angle_ = 0.0;
    float lastValue_ = 0.0f; ///< of this drag, which must not jump from one end to the other
    float step_ = 1.0f;
    int frames_ = 1;
    bool logTaper_ = false;
};

} // namespace vocafade
