// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>
#include <vector>

namespace vocafade::test {

using Samples = std::vector<float>;

inline Samples Noise(std::size_t count, unsigned seed, float amplitude = 0.5f) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> sample(-amplitude, amplitude);
    Samples samples(count);
    for (float& s : samples) {
        s = sample(random);
    }
    return samples;
}

inline Samples Sine(std::size_t count, double hertz, double rate, float amplitude = 0.5f) {
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double turn = 2.0 * std::numbers::pi * hertz * static_cast<double>(i) / rate;
        samples[i] = amplitude * static_cast<float>(std::sin(turn));
    }
    return samples;
}

/// One second of thirteen steady tones of 55 Hz to 15 kHz, evenly spaced in pitch. Their frequencies are
/// whole, so seconds joined to each other make no edge. `start` in radians sets the tones' phases.
inline Samples Chord(double rate, double start) {
    Samples samples(static_cast<std::size_t>(rate));
    for (int tone = 0; tone < 13; ++tone) {
        const double hertz = std::round(55.0 * std::pow(15000.0 / 55.0, tone / 12.0));
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double turn = 2.0 * std::numbers::pi * hertz * static_cast<double>(i) / rate;
            samples[i] += 0.06f * static_cast<float>(std::sin(turn + start * (tone + 1)));
        }
    }
    return samples;
}

/// Mean square of samples `from` to the end.
inline double Power(const Samples& samples, std::size_t from = 0) {
    double sum = 0.0;
    for (std::size_t i = from; i < samples.size(); ++i) {
        sum += static_cast<double>(samples[i]) * samples[i];
    }
    return sum / static_cast<double>(samples.size() - from);
}

inline double Db(double powerRatio) { return 10.0 * std::log10(powerRatio); }

/// How well `output` is a scaled copy of `reference`, both `count` long: signal to everything else, in dB.
inline double FitDb(const float* reference, const float* output, std::size_t count) {
    double cross = 0.0;
    double own = 0.0;
    double out = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        cross += static_cast<double>(reference[i]) * output[i];
        own += static_cast<double>(reference[i]) * reference[i];
        out += static_cast<double>(output[i]) * output[i];
    }
    const double explained = cross * cross / own;
    return Db(explained / (out - explained));
}

} // namespace vocafade::test
