// SPDX-License-Identifier: MIT
#pragma once

#include "effect/identity.h"

#include <array>
#include <cstdint>
#include <vector>

namespace vocafade {

/// Puts the untouched sound, as late as the engine's, in the place of the engine's and back, without a click
/// and without a jump in time: hosts make up for the delay whether the effect is on or off.
class Bypass {
  public:
    /// [main-thread] `rate` in Hz; it gives the length of the blend, 20 ms.
    explicit Bypass(double rate);

    /// [main-thread, no audio] Forgets what is in the delay; the next block starts on or off, without a
    /// blend.
    void Reset();
    /// [audio-thread] Takes a block of the untouched sound, left and right, and puts what belongs into the
    /// engine's output: with `on` that stays as it is, bit by bit. Allocates nothing.
    void Process(bool on, const float* const* dry, float* const* wet, std::uint32_t count);

  private:
    std::array<std::vector<float>, 2> delay_; ///< a ring of the last samples, for each channel
    std::size_t place_ = 0;
    float step_;         ///< of the blend, a sample
    float share_ = 1.0f; ///< of the engine's sound: 1 on, 0 off, between them while one blends into the other
    bool started_ = false;
};

} // namespace vocafade
