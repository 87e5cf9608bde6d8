// SPDX-License-Identifier: MIT
#pragma once

#include "ui/geometry.h"

#include <vector>

namespace vocafade {

/// A set of pixels, kept as rectangles that do not overlap.
class CRgn {
  public:
    CRgn() = default;
    explicit CRgn(const CRect& rect) { Add(rect); }

    void DeleteObject() { rects_.clear(); }
    void Intersect(const CRect& rect) { Intersect(CRgn(rect)); }
    void Intersect(const CRgn& other);
    void Subtract(const CRect& rect);
    void Add(const CRect& rect);
    void OffsetRgn(CPoint by);
    bool IsEmpty() const { return rects_.empty(); }
    /// The smallest rectangle around the region.
    CRect GetRgnBox() const;
    const std::vector<CRect>& rects() const { return rects_; }

  private:
    std::vector<CRect> rects_;
};

} // namespace vocafade
