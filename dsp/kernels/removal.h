// SPDX-License-Identifier: MIT
#pragma once

// In the band, with a and c the scaled magnitudes of left and right: left = a - c, right = c - a.
//
// Included through kernel_set_body.h, after the lanes.

namespace vocafade::kernels {
namespace {

void Remove(const Removal& removal, int bins, float* left, float* right) {
    const Floats first = Broadcast(static_cast<float>(removal.firstBin));
    const Floats last = Broadcast(static_cast<float>(removal.lastBin));
    const Floats scaleLeft = Broadcast(removal.scaleLeft);
    const Floats scaleRight = Broadcast(removal.scaleRight);
    for (int k = 0; k < bins; k += Floats::kLanes) {
        const Floats bin = Broadcast(static_cast<float>(k)) + LaneNumbers();
        const Floats inBand = Minimum(bin - first, last - bin); // negative outside
        const Floats l = Load(left + k);
        const Floats r = Load(right + k);
        const Floats a = l * scaleLeft;
        const Floats c = r * scaleRight;
        Store(left + k, WhereNegative(inBand, l, a - c));
        Store(right + k, WhereNegative(inBand, r, c - a));
    }
}

} // namespace
} // namespace vocafade::kernels
