// SPDX-License-Identifier: MIT
#include "ui/region.h"

namespace vocafade {
namespace {

/// What is left of `from` without `hole`: at most four rectangles.
void AppendDifference(std::vector<CRect>& to, const CRect& from, const CRect& hole) {
    CRect shared;
    if (!shared.IntersectRect(from, hole)) {
        to.push_back(from);
        return;
    }
    const CRect parts[] = {{from.left, from.top, from.right, shared.top},
                           {from.left, shared.top, shared.left, shared.bottom},
                           {shared.right, shared.top, from.right, shared.bottom},
                           {from.left, shared.bottom, from.right, from.bottom}};
    for (const CRect& part : parts)
        if (!part.IsRectEmpty()) to.push_back(part);
}

} // namespace

void CRgn::Intersect(const CRgn& other) {
    std::vector<CRect> both;
    for (const CRect& mine : rects_)
        for (const CRect& others : other.rects_) {
            CRect shared;
            if (shared.IntersectRect(mine, others)) both.push_back(shared);
        }
    rects_ = std::move(both);
}

void CRgn::Subtract(const CRect& rect) {
    if (rect.IsRectEmpty()) return;
    std::vector<CRect> left;
    for (const CRect& r : rects_)
        AppendDifference(left, r, rect);
    rects_ = std::move(left);
}

void CRgn::Add(const CRect& rect) {
    if (rect.IsRectEmpty()) return;
    for (const CRect& r : rects_) {
        CRect shared;
        if (shared.IntersectRect(r, rect) && shared == rect) return;
    }
    Subtract(rect);
    rects_.push_back(rect);
}

void CRgn::OffsetRgn(CPoint by) {
    for (CRect& r : rects_)
        r.OffsetRect(by);
}

CRect CRgn::GetRgnBox() const {
    CRect box;
    for (const CRect& r : rects_)
        box.UnionRect(box, r);
    return box;
}

} // namespace vocafade
