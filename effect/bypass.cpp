// SPDX-License-Identifier: MIT
#include "effect/bypass.h"

#include <algorithm>

namespace vocafade {
namespace {

constexpr double kBlendSeconds = 0.02;

} // namespace

Bypass::Bypass(double rate) : step_(static_cast<float>(1.0 / std::max(1.0, kBlendSeconds * rate))) {
    for (std::vector<float>& ring : delay_)
        ring.resize(static_cast<std::size_t>(kVocafadeLatency));
}

void Bypass::Reset() {
    for (std::vector<float>& ring : delay_)
        std::fill(ring.begin(), ring.end(), 0.0f);
    place_ = 0;
    started_ = false;
}

void Bypass::Process(bool on, const float* const* dry, float* const* wet, std::uint32_t count) {
    if (count == 0) return;
    const float goal = on ? 1.0f : 0.0f;
    if (!started_) share_ = goal;
    started_ = true;
    float share = share_;
    std::size_t place = place_;
    for (std::size_t channel = 0; channel < delay_.size(); ++channel) { // both go the same way
        std::vector<float>& ring = delay_[channel];
        share = share_;
        place = place_;
        for (std::uint32_t i = 0; i < count; ++i) {
            const float late = ring[place];
            ring[place] = dry[channel][i];
            if (++place == ring.size()) place = 0;
            share = share < goal ? std::min(share + step_, goal) : std::max(share - step_, goal);
            // Not by the formula at the ends: on is the engine's bits, and off has none of its NaN.
            float& out = wet[channel][i];
            if (share <= 0.0f)
                out = late;
            else if (share < 1.0f)
                out = late + share * (out - late);
        }
    }
    share_ = share;
    place_ = place;
}

} // namespace vocafade
