// SPDX-License-Identifier: MIT
#pragma once

// A bin's phase runs on by its true frequency for one hop, and is folded into half a turn either way:
//
//   s += (f - k binWidth) / binWidth * 2 pi / overlap + k e,   s -= nearest(s / 2 pi) * 2 pi
//   s += folded(phi - s) / 16
//   Y[k] = amplitude * (cos s + i sin s)
//
// Only magnitudes are changed between analysis and resynthesis, so s and the analysed phase phi are equal but
// for rounding: k e reaches 1071, where floats stand 1.2e-4 apart, and on a steady tone every frame rounds
// the same way. The pull towards phi keeps that from adding up; 1/16 holds s within 16 roundings of phi.
//
// Included through kernel_set_body.h, after the lanes.

#include "dsp/constants.h"
#include "dsp/kernels/sine_cosine.h"

namespace vocafade::kernels {
namespace {

/// The nearest whole number, halves to the even one, by the rounding of a sum whose last place is 1.
/// |x| < 2^22.
VOCAFADE_ALWAYS_INLINE Floats NearestWhole(Floats x) {
    const Floats large = Broadcast(12582912.0f); // 1.5 * 2^23
    return (x + large) - large;
}

void Resynthesise(const VocoderConstants& constants, const float* amplitude, const float* trueFrequency,
                  const float* phase, float* phaseSum, float* re, float* im) {
    const Floats advance = Broadcast(constants.expectedPhaseAdvance);
    const Floats binWidth = Broadcast(constants.binWidth);
    const Floats overlap = Broadcast(constants.overlap);
    const Floats twoPi = Broadcast(kTwoPi);
    const Floats turnsPerRadian = Broadcast(1.0f / kTwoPi);
    const Floats pull = Broadcast(1.0f / 16.0f);
    // Two walks over the bins: the processor overlaps the turns of a short loop, not those of a long one.
    for (int k = 0; k < constants.bins; k += Floats::kLanes) {
        const Floats bin = Broadcast(static_cast<float>(k)) + LaneNumbers();
        const Floats deviation = (Load(trueFrequency + k) - bin * binWidth) / binWidth;
        Floats sum = Load(phaseSum + k) + (deviation * twoPi / overlap + bin * advance);
        sum = sum - NearestWhole(sum / twoPi) * twoPi;
        Floats apart = Load(phase + k) - sum; // next to nothing, or next to one turn
        apart = apart - NearestWhole(apart * turnsPerRadian) * twoPi;
        Store(phaseSum + k, sum + apart * pull);
    }
    for (int k = 0; k < constants.bins; k += Floats::kLanes) {
        const SineCosine at = OfFoldedPhase(Load(phaseSum + k));
        const Floats size = Load(amplitude + k);
        Store(re + k, at.cosine * size);
        Store(im + k, at.sine * size);
    }
}

} // namespace
} // namespace vocafade::kernels
