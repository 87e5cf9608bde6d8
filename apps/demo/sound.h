// SPDX-License-Identifier: MIT
// What the song's sounds are made of.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace vocafade {

constexpr double kTurn = 2.0 * std::numbers::pi; ///< radians

/// White noise from -1 to 1, the same on every machine: the upper bits of a linear congruential generator.
struct Noise {
    std::uint32_t state;
    float Next() {
        state = state * 1664525U + 1013904223U;
        return static_cast<float>(static_cast<std::int32_t>(state)) * 0x1p-31f;
    }
};

/// A first-order low-pass; one minus it is the high-pass.
class OnePole {
  public:
    OnePole(double cutoffHz, double rate) : keep_(std::exp(-kTurn * cutoffHz / rate)) {}
    double LowPass(double sample) { return state_ = sample + (state_ - sample) * keep_; }
    double HighPass(double sample) { return sample - LowPass(sample); }

  private:
    double keep_, state_ = 0.0;
};

/// A resonance of two poles with unity gain at 0 Hz, so that a chain of them gives every vowel's formants
/// their natural levels: y = a x + b y1 + c y2 with c = -exp(-2 pi B T), b = 2 exp(-pi B T) cos(2 pi F T),
/// a = 1 - b - c.
class Resonator {
  public:
    void Tune(double frequencyHz, double bandwidthHz, double rate) {
        const double radius = std::exp(-std::numbers::pi * bandwidthHz / rate);
        c_ = -radius * radius;
        b_ = 2.0 * radius * std::cos(kTurn * frequencyHz / rate);
    }
    double Run(double sample) {
        const double out = (1.0 - b_ - c_) * sample + b_ * previous_ + c_ * beforePrevious_;
        beforePrevious_ = previous_;
        return previous_ = out;
    }

  private:
    double b_ = 0.0, c_ = 0.0, previous_ = 0.0, beforePrevious_ = 0.0;
};

} // namespace vocafade
