// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/guarded_memory.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fmt/format.h>
#include <memory>
#include <random>
#include <vector>

namespace vocafade::validate {

/// The channels of one side of an effect, each with room for `frames` samples.
template <typename Sample>
class Channels {
  public:
    Channels(std::int32_t count, std::int32_t frames)
        : storage_(static_cast<std::size_t>(count)), pointers_(static_cast<std::size_t>(count)) {
        for (std::size_t c = 0; c < storage_.size(); ++c) {
            storage_[c].resize(static_cast<std::size_t>(std::max(frames, 1)));
            pointers_[c] = storage_[c].data();
        }
    }
    Channels(const Channels&) = delete;
    Channels& operator=(const Channels&) = delete;

    /// As an effect takes it. Effects may change the pointers, so they are made anew at every call.
    Sample** pointers() {
        for (std::size_t c = 0; c < storage_.size(); ++c)
            pointers_[c] = storage_[c].data();
        return pointers_.data();
    }
    std::size_t count() const { return storage_.size(); }
    std::vector<Sample>& operator[](std::size_t channel) { return storage_[channel]; }
    bool operator==(const Channels& other) const { return storage_ == other.storage_; }

    void FillWithNoise(std::mt19937& random, Sample amplitude) {
        std::uniform_real_distribution<Sample> sample(-amplitude, amplitude);
        for (std::vector<Sample>& channel : storage_)
            for (Sample& s : channel)
                s = sample(random);
    }
    void Fill(Sample value) {
        for (std::vector<Sample>& channel : storage_)
            std::fill(channel.begin(), channel.end(), value);
    }
    /// True when the first `frames` samples of every channel are neither NaN nor infinite.
    bool AreFinite(std::int32_t frames) const {
        for (const std::vector<Sample>& channel : storage_)
            if (!std::all_of(channel.begin(), channel.begin() + frames,
                             [](Sample s) { return std::isfinite(s); }))
                return false;
        return true;
    }
    Sample Peak(std::int32_t frames) const {
        Sample peak = 0;
        for (const std::vector<Sample>& channel : storage_)
            for (std::int32_t i = 0; i < frames; ++i)
                peak = std::max(peak, std::fabs(channel[static_cast<std::size_t>(i)]));
        return peak;
    }

  private:
    std::vector<std::vector<Sample>> storage_;
    std::vector<Sample*> pointers_;
};

/// Channels that lie against guard pages.
template <typename Sample>
class GuardedChannels {
  public:
    GuardedChannels(std::int32_t count, std::int32_t frames, GuardedMemory::Against against,
                    const char* side) {
        for (std::int32_t c = 0; c < count; ++c) {
            storage_.push_back(
                std::make_unique<GuardedMemory>(static_cast<std::size_t>(frames) * sizeof(Sample), against,
                                                fmt::format("{} {}", side, c + 1)));
            pointers_.push_back(storage_.back()->template as<Sample>());
        }
    }
    Sample** pointers() { return pointers_.data(); }
    std::size_t count() const { return pointers_.size(); }

  private:
    std::vector<std::unique_ptr<GuardedMemory>> storage_;
    std::vector<Sample*> pointers_;
};

} // namespace vocafade::validate
