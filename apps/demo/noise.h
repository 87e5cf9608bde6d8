// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vocafade {

/// White noise that is the same on every run and every machine: a linear congruential generator, its upper
/// bits, evenly spread from -1 to 1.
class Noise {
  public:
    explicit Noise(std::uint32_t seed) : state_(seed) {}
    float Next() {
        state_ = state_ * 1664525U + 1013904223U;
        return static_cast<float>(static_cast<std::int32_t>(state_)) * 0x1p-31F;
    }

  private:
    std::uint32_t state_;
};

} // namespace vocafade
