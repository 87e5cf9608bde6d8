// SPDX-License-Identifier: MIT
#pragma once

// The greatest |x| * gain of a block, at least 0. NaN is passed over.
//
// Included through phase_vocoder.h, after the lanes.

#include "dsp/kernels/inlining.h"

namespace vocafade::kernels {
namespace {

float Peak(const float* samples, int count, float gain) {
    // Several maxima side by side, since each waits for the one before.
    constexpr int rows = 4;
    constexpr int step = rows * Floats::kLanes;
    const Floats factor = Broadcast(gain);
    Floats peaks[rows] = {Broadcast(0.0f), Broadcast(0.0f), Broadcast(0.0f), Broadcast(0.0f)};
    int i = 0;
    for (; i + step <= count; i += step) {
        for (int row = 0; row < rows; ++row) {
            const Floats scaled = Absolute(Load(samples + i + row * Floats::kLanes)) * factor;
            peaks[row] = Maximum(scaled, peaks[row]);
        }
    }
    float lanes[Floats::kLanes];
    Store(lanes, Maximum(Maximum(peaks[0], peaks[1]), Maximum(peaks[2], peaks[3])));
    float peak = 0.0f;
    for (const float lane : lanes) {
        peak = lane > peak ? lane : peak;
    }
    for (; i < count; ++i) {
        const float scaled = __builtin_fabsf(samples[i]) * gain;
        peak = scaled > peak ? scaled : peak;
    }
    return peak;
}

} // namespace
} // namespace vocafade::kernels
