// SPDX-License-Identifier: MIT
#pragma once

// A bin's magnitude and true frequency, from its value and its phase a hop ago:
//
//   phi = angle(X[k]),  d = phi - phi' - k e,  d -= q pi,  f = (d * overlap / 2 pi + k) * binWidth
//
// with e the expected advance of bin 1 and q the even number of half turns that brings d nearest to zero.
//
// Included through kernel_set_body.h, after the lanes.

#include "dsp/constants.h"
#include "dsp/kernels/arctangent.h"

namespace vocafade::kernels {
namespace {

void Analyse(const VocoderConstants& constants, const float* re, const float* im, float* phase,
             float* magnitude, float* trueFrequency) {
    const Floats advance = Broadcast(constants.expectedPhaseAdvance);
    const Floats binWidth = Broadcast(constants.binWidth);
    const Floats overlap = Broadcast(constants.overlap);
    const Floats pi = Broadcast(kPi);
    const Floats twoPi = Broadcast(kTwoPi);
    for (int k = 0; k < constants.bins; k += Floats::kLanes) {
        const Floats x = Load(re + k);
        const Floats y = Load(im + k);
        Store(magnitude + k, SquareRoot(y * y + x * x));
    }
    Angles(im, re, constants.bins, trueFrequency);
    for (int k = 0; k < constants.bins; k += Floats::kLanes) {
        const Floats bin = Broadcast(static_cast<float>(k)) + LaneNumbers();
        const Floats angle = Load(trueFrequency + k);
        Floats d = angle - Load(phase + k);
        Store(phase + k, angle);
        d = d - bin * advance;
        d = d - EvenWhole(d / pi) * pi;
        Store(trueFrequency + k, (d * overlap / twoPi + bin) * binWidth);
    }
}

} // namespace
} // namespace vocafade::kernels
