// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <numbers>

namespace vocafade {

/// A first-order low-pass; one minus it is the high-pass.
class OnePole {
  public:
    OnePole(double cutoffHz, double rate)
        : keep_(static_cast<float>(std::exp(-2.0 * std::numbers::pi * cutoffHz / rate))) {}
    float LowPass(float sample) { return state_ = sample + (state_ - sample) * keep_; }
    float HighPass(float sample) { return sample - LowPass(sample); }

  private:
    float keep_;
    float state_ = 0.0F;
};

/// A vocal-tract resonance: two poles at a frequency and a bandwidth, with unity gain at 0 Hz, so that a
/// chain of them gives every vowel's formants their natural levels. (The digital resonator of formant
/// synthesis: y = a x + b y1 + c y2 with c = -exp(-2 pi B T), b = 2 exp(-pi B T) cos(2 pi F T), a = 1 - b -
/// c.)
class Resonator {
  public:
    void Tune(double frequencyHz, double bandwidthHz, double rate) {
        const double radius = std::exp(-std::numbers::pi * bandwidthHz / rate);
        c_ = -radius * radius;
        b_ = 2.0 * radius * std::cos(2.0 * std::numbers::pi * frequencyHz / rate);
        a_ = 1.0 - b_ - c_;
    }
    double Run(double sample) {
        const double out = a_ * sample + b_ * previous_ + c_ * beforePrevious_;
        beforePrevious_ = previous_;
        previous_ = out;
        return out;
    }

  private:
    double a_ = 1.0;
    double b_ = 0.0;
    double c_ = 0.0;
    double previous_ = 0.0;
    double beforePrevious_ = 0.0;
};

} // namespace vocafade
