// SPDX-License-Identifier: MIT
// What the song's sounds are made of.
#pragma once

#include <cmath>
#include <numbers>
#include <random>

namespace vocafade {

constexpr double kSecondsPerBeat = 60.0 / 92.0;
/// From the first beat to the last sound's fading: ten bars of four beats.
constexpr double kSongSeconds = 40.0 * kSecondsPerBeat + 1.5;
constexpr double kTurn = 2.0 * std::numbers::pi; ///< radians

/// The frequency in Hz of a MIDI note number (69 is the A of 440 Hz); fractions are parts of a semitone.
inline double NoteFrequency(double note) { return 440.0 * std::exp2((note - 69.0) / 12.0); }

/// White noise from -1 to 1, the same on every machine.
inline double Noise(std::minstd_rand& random) { return random() * 0x1p-30 - 1.0; }

/// A first-order low-pass; one minus it is the high-pass.
class OnePole {
  public:
    OnePole(double cutoffHz, double rate) : keep_(std::exp(-kTurn * cutoffHz / rate)) {}
    double LowPass(double sample) { return state_ = sample + (state_ - sample) * keep_; }
    double HighPass(double sample) { return sample - LowPass(sample); }

  private:
    double keep_, state_ = 0.0;
};

} // namespace vocafade
