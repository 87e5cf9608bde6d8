// SPDX-License-Identifier: MIT
#pragma once

#include "editor/control_callback.h"
#include "ui/dc.h"
#include "ui/gdi.h"
#include "ui/wnd.h"

namespace vocafade {

/// A fader drawn from bitmaps. Not a window: its parent passes it presses and moves, and the context to draw
/// on. Every operation is [main-thread]; `Make` comes first.
class CKVBBitmapSliderDC {
  public:
    /// `trackRect` is where the fader stands and is pressed; `readoutRect` is where the parent shows its
    /// value (empty for nowhere). `startPoint` and `endPoint` are the thumb's centre at `minimum` and
    /// `maximum`, in the track image; only the coordinate along the travel counts, the other one of
    /// `startPoint` is where the thumb image begins. `altImage` (may be null) is laid over the track of a
    /// horizontal fader up to the thumb. `logTaper` is the decade taper; `inverted` swaps the ends for
    /// presses beyond them; `twoPosition` makes every drag end at one end or the other. Images, parent and
    /// context outlive the fader.
    void Make(const CRect& trackRect, const CRect& readoutRect, CWnd* parent, CKVBBitmap* trackImage,
              CKVBBitmap* altImage, CKVBBitmap* thumbImage, float minimum, float maximum, CPoint startPoint,
              CPoint endPoint, unsigned id, int vertical, bool logTaper, bool inverted, bool hideThumb,
              bool twoPosition, ControlCallbackFunction callback, void* context);

    /// Sets the value, clamped to the range; what is no number changes nothing. Draws on `dc` unless it is
    /// null, and marks the read-out for painting even when the value stayed.
    void SetValue(float value, CDC* dc, bool notify);
    float GetValue() const { return value_; }
    void DrawSlider(CDC* dc);

    /// True when the fader is hit; it then follows the mouse until `OnLButtonUp`.
    bool PtInSwitch(CPoint point);
    /// Moves the thumb to `point`; true when that changed the value, which was then reported.
    bool SetValueByPoint(CPoint point);
    void OnMouseMove(CPoint point, CDC* dc);
    void OnLButtonUp(CPoint point, CDC* dc);
    bool IsTracking() const { return tracking_; }
    /// Lets go of the mouse without a value, when it was taken away.
    void CancelTracking() { tracking_ = false; }

    void Enable(bool enable) { enabled_ = enable; }
    void GetRect(CRect* rect) const { *rect = trackRect_; }
    void SetNewRect(const CRect& trackRect, const CRect& readoutRect);

    /// The value that a press at `point` of the parent gives.
    float ValueAt(CPoint point) const;
    /// Where the thumb image begins in the track image.
    CPoint ThumbPlace() const;

  private:
    double ValueAlong(int place, int start, int end) const;
    double Fraction() const;
    void InvalidateReadout();
    void Notify();

    float min_ = 0.0f;
    float max_ = 1.0f;
    CPoint startPoint_;
    CPoint endPoint_;
    unsigned id_ = 0;
    int vertical_ = 1;
    CKVBBitmap* trackImage_ = nullptr;
    CKVBBitmap* thumbImage_ = nullptr;
    CKVBBitmap* altImage_ = nullptr;
    bool tracking_ = false;
    float value_ = 0.0f;
    bool hideThumb_ = false;
    bool logTaper_ = false;
    bool inverted_ = false;
    bool twoPosition_ = false;
    int imageWidth_ = 0;
    int imageHeight_ = 0;
    CRect trackRect_;
    CWnd* parent_ = nullptr;
    ControlCallbackFunction callback_ = nullptr;
    void* context_ = nullptr;
    bool enabled_ = false;
    CRect readoutRect_;
};

} // namespace vocafade
