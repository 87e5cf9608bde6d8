// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

namespace vocafade::test {

using Samples = std::vector<float>;

struct StereoSamples {
    Samples left;
    Samples right;
    bool operator==(const StereoSamples&) const = default;
};

inline Samples Noise(std::size_t count, unsigned seed, float amplitude = 0.5f) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> sample(-amplitude, amplitude);
    Samples samples(count);
    for (float& s : samples) {
        s = sample(random);
    }
    return samples;
}

inline StereoSamples StereoNoise(std::size_t count, unsigned seed = 1, float amplitude = 0.5f) {
    return {Noise(count, seed, amplitude), Noise(count, seed + 1, amplitude)};
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

/// What stands in an output before something is written there.
constexpr float kUnwritten = 9.0f;

/// What comes out when `process`, called as effects are, gets a sound in blocks of these sizes in turn.
template <typename Process>
StereoSamples InBlocks(StereoSamples in, const std::vector<std::size_t>& sizes, Process process) {
    const std::size_t all = in.left.size();
    StereoSamples out{Samples(all, kUnwritten), Samples(all, kUnwritten)};
    for (std::size_t done = 0, turn = 0; done < all; ++turn) {
        const std::size_t count = std::min(sizes[turn % sizes.size()], all - done);
        float* inputs[] = {&in.left[done], &in.right[done]};
        float* outputs[] = {&out.left[done], &out.right[done]};
        process(inputs, outputs, static_cast<std::int32_t>(count));
        done += count;
    }
    return out;
}

/// Whether the first `count` agree in every bit: zeros of different signs do not.
inline bool SameBits(const Samples& a, const Samples& b, std::size_t count) {
    return std::memcmp(a.data(), b.data(), count * sizeof(float)) == 0;
}

inline bool AllFinite(const Samples& samples, std::size_t from = 0) {
    return std::all_of(samples.data() + from, samples.data() + samples.size(),
                       [](float sample) { return std::isfinite(sample); });
}

/// The greatest magnitude; NaN does not count.
inline float Peak(const Samples& samples, std::size_t from = 0) {
    float peak = 0.0f;
    for (std::size_t i = from; i < samples.size(); ++i)
        peak = std::max(peak, std::fabs(samples[i]));
    return peak;
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

/// The same of the channel that fits worse, where the output is late by some samples.
inline double FitDb(const StereoSamples& reference, const StereoSamples& output, std::size_t late) {
    const std::size_t count = reference.left.size() - late;
    return std::min(FitDb(reference.left.data(), output.left.data() + late, count),
                    FitDb(reference.right.data(), output.right.data() + late, count));
}

} // namespace vocafade::test
