// SPDX-License-Identifier: MIT
#include "ui/gdi.h"

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

bool CRgn::CreateRectRgn(int left, int top, int right, int bottom) {
    SetRectRgn({left, top, right, bottom});
    return true;
}

void CRgn::SetRectRgn(const CRect& rect) {
    rects_.clear();
    if (!rect.IsRectEmpty()) rects_.push_back(rect);
}

void CRgn::Intersect(const CRect& rect) {
    std::size_t kept = 0;
    for (const CRect& r : rects_) {
        CRect shared;
        if (shared.IntersectRect(r, rect)) rects_[kept++] = shared;
    }
    rects_.resize(kept);
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

void CRgn::CombineRgn(const CRgn& a, const CRgn& b, int mode) {
    std::vector<CRect> result;
    switch (mode) {
    case RGN_AND:
        for (const CRect& r : a.rects_)
            for (const CRect& s : b.rects_) {
                CRect shared;
                if (shared.IntersectRect(r, s)) result.push_back(shared);
            }
        break;
    case RGN_OR: {
        CRgn sum = a;
        for (const CRect& r : b.rects_)
            sum.Add(r);
        result = std::move(sum.rects_);
        break;
    }
    case RGN_DIFF: {
        CRgn rest = a;
        for (const CRect& r : b.rects_)
            rest.Subtract(r);
        result = std::move(rest.rects_);
        break;
    }
    default:
        result = a.rects_;
        break;
    }
    rects_ = std::move(result);
}

void CRgn::OffsetRgn(int dx, int dy) {
    for (CRect& r : rects_)
        r.OffsetRect(dx, dy);
}

bool CRgn::PtInRegion(CPoint point) const {
    return std::any_of(rects_.begin(), rects_.end(), [point](const CRect& r) { return r.PtInRect(point); });
}

CRect CRgn::GetRgnBox() const {
    CRect box;
    for (const CRect& r : rects_)
        box.UnionRect(box, r);
    return box;
}

} // namespace vocafade
