// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// The engine's arithmetic, one function a step, free of any streaming. Every function works on arrays of
/// `bins` elements unless it says otherwise, allocates nothing and may run on the audio thread.
namespace vocafade::kernels {

/// What the phase vocoder needs to know of the frame, all in single precision as the steps use it.
struct VocoderConstants {
    int bins;                   ///< half the frame size
    float expectedPhaseAdvance; ///< radians that bin 1's centre frequency turns in one hop
    float binWidth;             ///< Hz
    float overlap;              ///< frames over each sample
};

/// What is removed: where the two channels' magnitudes stand in the ratio `balance` inside the band.
struct Removal {
    float balance;          ///< left magnitude times min(1, 1/balance) against right times min(1, balance)
    std::uint32_t lowHertz; ///< band limits, both inclusive
    std::uint32_t highHertz;
};

/// frame[2i] = input[i] * window[i], frame[2i+1] = 0 for `size` samples.
void WindowFrame(const float* input, const float* window, int size, float* frame);

/// Phase-vocoder analysis of one channel. `spectrum` holds `bins` complex values, interleaved. Writes each
/// bin's magnitude and true frequency (Hz) and replaces the phase of the previous frame by this one's.
void AnalyseChannel(const VocoderConstants& constants, const float* spectrum, float* previousPhase,
                    float* magnitude, float* trueFrequency);

/// Turns both channels' magnitudes into what remains of them. In the band, left becomes left minus scaled
/// right and right the negative of that (a negative amplitude turns a bin's phase by half a turn).
void RemoveCentre(const VocoderConstants& constants, const Removal& removal, float* left, float* right);

/// Lets each bin's phase run on by its true frequency for one hop and writes `bins` complex values with the
/// given amplitudes into `spectrum`. The sums are kept within half a turn by taking off whole turns of the
/// single-precision 2 pi, so that they stay as precise after hours as in the first second.
void ResynthesiseChannel(const VocoderConstants& constants, const float* amplitude,
                         const float* trueFrequency, float* phaseSum, float* spectrum);

/// accumulator[i] += real(frame[i]) * 4 * window[i] / overlap for i from `first` below `size`.
void OverlapAdd(const float* frame, const float* window, int first, int size, float overlap,
                float* accumulator);

} // namespace vocafade::kernels
