// SPDX-License-Identifier: MIT
#pragma once

#include "ui/geometry.h"

#include <cmath>

/// The one rule by which logical pixels become device pixels and the other way round.
namespace vocafade::platform {

/// The device edge of a logical edge: halves go up, so that neighbours meet without a gap or an overlap.
inline int ToDevice(int edge, double scale) { return static_cast<int>(std::floor(edge * scale + 0.5)); }
inline CPoint ToDevice(CPoint p, double scale) { return {ToDevice(p.x, scale), ToDevice(p.y, scale)}; }
inline CRect ToDevice(const CRect& r, double scale) {
    return {ToDevice(r.left, scale), ToDevice(r.top, scale), ToDevice(r.right, scale),
            ToDevice(r.bottom, scale)};
}
/// Of what stands at the origin.
inline CSize ToDevice(CSize s, double scale) { return {ToDevice(s.cx, scale), ToDevice(s.cy, scale)}; }

/// The logical pixel that the device pixel lies in: a press on any pixel of a drawn rectangle is in it.
inline int ToLogical(int pixel, double scale) {
    return static_cast<int>(std::ceil((pixel + 0.5) / scale)) - 1;
}
inline CPoint ToLogical(CPoint p, double scale) { return {ToLogical(p.x, scale), ToLogical(p.y, scale)}; }
/// The smallest logical rectangle that covers the device one.
inline CRect ToLogicalAround(const CRect& r, double scale) {
    if (r.IsRectEmpty()) return {};
    return {ToLogical(r.left, scale), ToLogical(r.top, scale), ToLogical(r.right - 1, scale) + 1,
            ToLogical(r.bottom - 1, scale) + 1};
}
/// The logical size whose device size comes nearest.
inline CSize ToLogicalSize(CSize s, double scale) {
    return {static_cast<int>(std::lround(s.cx / scale)), static_cast<int>(std::lround(s.cy / scale))};
}

/// A scale that the editor can be drawn at, in steps of a quarter from 1 to 4, next to `wanted`. What is no
/// scale (NaN, infinite, 0, negative) gives 0.
inline double SteppedScale(double wanted) {
    if (!std::isfinite(wanted) || wanted <= 0.0) return 0.0;
    return std::clamp(std::floor(wanted * 4.0 + 0.5) / 4.0, 1.0, 4.0);
}

} // namespace vocafade::platform
