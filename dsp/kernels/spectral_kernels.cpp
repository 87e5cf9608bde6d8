// SPDX-License-Identifier: MIT
#include "dsp/kernels/spectral_kernels.h"

#include "dsp/constants.h"

#include <cmath>

namespace vocafade::kernels {

void WindowFrame(const float* input, const float* window, int size, float* frame) {
    for (int i = 0; i < size; ++i) {
        frame[2 * i] = input[i] * window[i];
        frame[2 * i + 1] = 0.0f;
    }
}

void AnalyseChannel(const VocoderConstants& constants, const float* spectrum, float* previousPhase,
                    float* magnitude, float* trueFrequency) {
    for (int k = 0; k < constants.bins; ++k) {
        const float re = spectrum[2 * k];
        const float im = spectrum[2 * k + 1];
        const float bin = static_cast<float>(k);
        magnitude[k] = std::sqrt(im * im + re * re);
        const float phase = static_cast<float>(std::atan2(static_cast<double>(im), static_cast<double>(re)));
        float d = phase - previousPhase[k];
        previousPhase[k] = phase;
        d = d - bin * constants.expectedPhaseAdvance;
        // Take off the even number of half turns that brings the deviation nearest to zero.
        int q = static_cast<int>(d / kPi);
        q = q >= 0 ? q + (q & 1) : q - (q & 1);
        d = d - static_cast<float>(q) * kPi;
        trueFrequency[k] = ((d * constants.overlap / kTwoPi) + bin) * constants.binWidth;
    }
}

void RemoveCentre(const VocoderConstants& constants, const Removal& removal, float* left, float* right) {
    const bool scaleLeft = removal.balance > 1.0f;
    const float scale = scaleLeft ? 1.0f / removal.balance : removal.balance;
    for (int k = 0; k < constants.bins; ++k) {
        // A bin is judged by the frequency of its upper neighbour.
        const auto hertz = static_cast<std::uint32_t>(static_cast<float>(k + 1) * constants.binWidth);
        if (hertz < removal.lowHertz || hertz > removal.highHertz) continue;
        const float a = scaleLeft ? left[k] * scale : left[k];
        const float c = scaleLeft ? right[k] : right[k] * scale;
        left[k] = a - c;
        right[k] = c - a;
    }
}

void ResynthesiseChannel(const VocoderConstants& constants, const float* amplitude,
                         const float* trueFrequency, float* phaseSum, float* spectrum) {
    for (int k = 0; k < constants.bins; ++k) {
        const float bin = static_cast<float>(k);
        // The deviation from the bin's centre, in bins, turned back into a phase advance for one hop.
        const float deviation = (trueFrequency[k] - bin * constants.binWidth) / constants.binWidth;
        float sum = phaseSum[k];
        sum += deviation * kTwoPi / constants.overlap + bin * constants.expectedPhaseAdvance;
        sum -= std::nearbyint(sum / kTwoPi) * kTwoPi;
        phaseSum[k] = sum;
        const double phase = sum;
        spectrum[2 * k] = static_cast<float>(std::cos(phase)) * amplitude[k];
        spectrum[2 * k + 1] = static_cast<float>(std::sin(phase)) * amplitude[k];
    }
}

void OverlapAdd(const float* frame, const float* window, int first, int size, float overlap,
                float* accumulator) {
    for (int i = first; i < size; ++i) {
        accumulator[i] += frame[2 * i] * 4.0f * window[i] / overlap;
    }
}

} // namespace vocafade::kernels
