// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vocafade::command {

/// One peak of an envelope with the valleys on both sides.
struct FormantPeak {
    double hz = 0.0;
    double decibels = 0.0;
    double fromHz = 0.0;
    double toHz = 0.0;
};

/// The spectral envelope of a moment of a song. Levels are in dB, a sine at full scale being 0; element k of
/// a curve belongs to k x rate / points Hz.
struct FormantAnalysis {
    double seconds = 0.0;              ///< the middle of what was looked at
    double rate = 0.0;                 ///< Hz
    int points = 0;                    ///< of a frame
    int order = 0;                     ///< cepstral coefficients kept at each end
    bool stereo = false;               ///< there is a difference between left and right
    std::vector<float> middle;         ///< spectrum of (left + right) / 2
    std::vector<float> middleEnvelope; ///< its envelope, of which `peaks` are
    std::vector<float> sideEnvelope;   ///< envelope of (left - right) / 2; empty unless `stereo`
    std::vector<FormantPeak> peaks;    ///< by frequency
    /// The widest stretch with a peak where the middle stands at least 3 dB above the sides, small gaps
    /// aside.
    std::optional<double> bandFromHz, bandToHz;

    double Hz(std::size_t k) const { return static_cast<double>(k) * rate / points; }
};

/// [main-thread] Analyses a sound file of any number of channels (the first two count) at `seconds`, or where
/// its middle is loudest, with `order` cepstral coefficients, or as many as keep formants and drop the
/// harmonics of a voice. Throws `Failure` for what cannot be read or is too short, `UsageError` for an order
/// that makes no sense.
FormantAnalysis AnalyzeFormants(const std::string& path, std::optional<double> seconds,
                                std::optional<int> order);

} // namespace vocafade::command
