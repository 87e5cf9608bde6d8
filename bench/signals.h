// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace vocafade::bench {

/// A stereo stream to feed the engine with.
struct Stereo {
    std::vector<float> left;
    std::vector<float> right;
};

/// White noise in [-0.5, 0.5), the same on every machine.
class Noise {
  public:
    float operator()() {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<float>(state_ >> 40U) / 16777216.0f - 0.5f;
    }

  private:
    std::uint64_t state_ = 0x9e3779b97f4a7c15ULL;
};

/// Something like a song: a swelling voice of many harmonics in the middle, a chord at each side, a little
/// noise; `seconds` of it at 44.1 kHz.
inline Stereo Song(int seconds) {
    const auto count = static_cast<std::size_t>(seconds) * 44100;
    Stereo song{std::vector<float>(count), std::vector<float>(count)};
    Noise noise;
    double voice = 0.0;
    double chordL = 0.0;
    double chordR = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / 44100.0;
        voice += 6.283185307179586 * (180.0 + 60.0 * std::sin(1.3 * t)) / 44100.0;
        chordL += 6.283185307179586 * 261.6 / 44100.0;
        chordR += 6.283185307179586 * 392.0 / 44100.0;
        double middle = 0.0;
        for (int harmonic = 1; harmonic <= 8; ++harmonic) {
            middle += std::sin(harmonic * voice) / harmonic;
        }
        middle *= 0.1 * (1.0 + std::sin(2.1 * t));
        song.left[i] = static_cast<float>(middle + 0.1 * std::sin(chordL) + 0.05 * std::sin(2.0 * chordL)) +
                       0.02f * noise();
        song.right[i] = static_cast<float>(middle + 0.1 * std::sin(chordR) + 0.05 * std::sin(2.0 * chordR)) +
                        0.02f * noise();
    }
    return song;
}

} // namespace vocafade::bench
