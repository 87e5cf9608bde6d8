// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>

namespace vocafade {

/// Width and height in pixels.
struct CSize {
    int cx = 0;
    int cy = 0;
    friend constexpr bool operator==(const CSize&, const CSize&) = default;
};

/// A place in pixels, x to the right, y downwards.
struct CPoint {
    int x = 0;
    int y = 0;

    constexpr CPoint() = default;
    constexpr CPoint(int px, int py) : x(px), y(py) {}
    /// The place that a mouse message carries in its second argument: x in the low, y in the next 16 bits,
    /// both signed (a captured mouse may be left of or above the window).
    static constexpr CPoint FromMessage(std::intptr_t lParam) {
        return {static_cast<std::int16_t>(lParam & 0xFFFF),
                static_cast<std::int16_t>((lParam >> 16) & 0xFFFF)};
    }
    /// The second argument of a mouse message for this place.
    constexpr std::intptr_t ToMessage() const {
        return static_cast<std::intptr_t>((static_cast<std::uint32_t>(y & 0xFFFF) << 16) |
                                          static_cast<std::uint32_t>(x & 0xFFFF));
    }
    friend constexpr bool operator==(const CPoint&, const CPoint&) = default;
    friend constexpr CPoint operator+(CPoint a, CPoint b) { return {a.x + b.x, a.y + b.y}; }
    friend constexpr CPoint operator-(CPoint a, CPoint b) { return {a.x - b.x, a.y - b.y}; }
};

/// A rectangle in pixels; the right and bottom edges lie outside it.
struct CRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    constexpr CRect() = default;
    constexpr CRect(int l, int t, int r, int b) : left(l), top(t), right(r), bottom(b) {}
    constexpr CRect(CPoint place, CSize size)
        : left(place.x), top(place.y), right(place.x + size.cx), bottom(place.y + size.cy) {}

    constexpr int Width() const { return right - left; }
    constexpr int Height() const { return bottom - top; }
    constexpr CSize Size() const { return {Width(), Height()}; }
    constexpr CPoint TopLeft() const { return {left, top}; }
    constexpr CPoint CenterPoint() const { return {(left + right) / 2, (top + bottom) / 2}; }
    constexpr bool IsRectEmpty() const { return right <= left || bottom <= top; }
    /// True inside; the right and bottom edges are outside.
    constexpr bool PtInRect(CPoint p) const {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    constexpr void OffsetRect(int dx, int dy) {
        left += dx;
        right += dx;
        top += dy;
        bottom += dy;
    }
    constexpr void OffsetRect(CPoint by) { OffsetRect(by.x, by.y); }
    /// Moves it by as little as brings it inside `area`; where it is too large, its left and top.
    constexpr void MoveInside(const CRect& area) {
        OffsetRect(std::min(0, area.right - right), std::min(0, area.bottom - bottom));
        OffsetRect(std::max(0, area.left - left), std::max(0, area.top - top));
    }
    constexpr void InflateRect(int dx, int dy) {
        left -= dx;
        right += dx;
        top -= dy;
        bottom += dy;
    }
    constexpr void DeflateRect(int dx, int dy) { InflateRect(-dx, -dy); }
    /// Becomes what `a` and `b` share; false and empty when that is nothing.
    constexpr bool IntersectRect(const CRect& a, const CRect& b) {
        *this = CRect(std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                      std::min(a.bottom, b.bottom));
        if (IsRectEmpty()) *this = CRect();
        return !IsRectEmpty();
    }
    /// Becomes the smallest rectangle around `a` and `b`; an empty one counts for nothing.
    constexpr bool UnionRect(const CRect& a, const CRect& b) {
        if (a.IsRectEmpty()) {
            *this = b;
        } else if (b.IsRectEmpty()) {
            *this = a;
        } else {
            *this = CRect(std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                          std::max(a.bottom, b.bottom));
        }
        return !IsRectEmpty();
    }
    friend constexpr bool operator==(const CRect&, const CRect&) = default;
};

} // namespace vocafade
