// SPDX-License-Identifier: MIT
#pragma once

// What is done to a frame between its two transforms, and how frames are added up: analysis, removal,
// resynthesis, overlap-add. k is a bin, e the expected advance of bin 1's phase in a hop, and every bin passes
// through the same operations in the same order on every instruction set.
//
// The kernels are written once. Each kernel_set_*.cpp includes its lanes first and then this file; it is
// compiled for its own processors, so nothing here may leave a symbol that another file could pick up: all is
// in unnamed namespaces, and no template or inline function of the standard library is used.

#include "dsp/constants.h"
#include "dsp/kernels/kernel_set.h"
#include "dsp/kernels/peak.h"
#include "dsp/kernels/transforms.h"
#include "dsp/kernels/trigonometry.h"

namespace vocafade::kernels {
namespace {

// A bin's magnitude and true frequency, from its value and its phase a hop ago:
//
//   phi = angle(X[k]),  d = phi - phi' - k e,  d -= q pi,  f = (d * overlap / 2 pi + k) * binWidth
//
// where q is the even number of half turns that brings d nearest to zero.

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

// In the band, with a and c the scaled magnitudes of left and right: left = a - c, right = c - a.

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

// A bin's phase runs on by its true frequency for one hop, and is folded into half a turn either way:
//
//   s += (f - k binWidth) / binWidth * 2 pi / overlap + k e,   s -= nearest(s / 2 pi) * 2 pi
//   s += folded(phi - s) / 16
//   Y[k] = amplitude * (cos s + i sin s)
//
// Only magnitudes are changed between analysis and resynthesis, so s and the analysed phase phi are equal but
// for rounding: k e reaches 1071, where floats stand 1.2e-4 apart, and on a steady tone every frame rounds
// the same way. The pull towards phi keeps that from adding up; 1/16 holds s within 16 roundings of phi.

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

// accumulator[i - hop] = accumulator[i] + frame[i] / N * 4 * window[i] / overlap: the frame is added and the
// accumulator moves on in one walk. (4 / N is a power of two, so both factors round as one.)

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

constexpr KernelSet MakeKernelSet(const char* name) {
    return {name, Forward, Analyse, Remove, Resynthesise, Inverse, OverlapAdd, Peak};
}

} // namespace
} // namespace vocafade::kernels
