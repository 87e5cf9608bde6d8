// SPDX-License-Identifier: MIT
#pragma once

// accumulator[i - hop] = accumulator[i] + frame[i] / N * 4 * window[i] / overlap: the frame is added and the
// accumulator moves on in one walk. (4 / N is a power of two, so both factors round as one.)
//
// Included through kernel_set_body.h, after the lanes.

namespace vocafade::kernels {
namespace {

void OverlapAdd(const float* frame, const float* window, int hop, int lead, int size, float overlap,
                float* accumulator) {
    int i = hop;
    for (; i < lead; ++i) {
        accumulator[i - hop] = accumulator[i];
    }
    const Floats scale = Broadcast(4.0f / static_cast<float>(size));
    const Floats divisor = Broadcast(overlap);
    for (; i < size; i += Floats::kLanes) {
        const Floats added = Load(frame + i) * scale * Load(window + i) / divisor;
        Store(accumulator + (i - hop), Load(accumulator + i) + added);
    }
}

} // namespace
} // namespace vocafade::kernels
