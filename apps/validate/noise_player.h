// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/channels.h"
#include "apps/validate/raw_effect.h"
#include "apps/validate/report.h"

#include <string_view>

namespace vocafade::validate {

/// Noise for one effect, and what it makes of it.
template <typename Sample>
class NoisePlayer {
  public:
    /// `frames`: of the largest block.
    NoisePlayer(RawEffect& effect, std::int32_t frames, std::uint32_t seed, Sample amplitude = Sample(0.5))
        : effect_(effect), frames_(frames), in_(effect->numInputs, frames), out_(effect->numOutputs, frames),
          random_(seed) {
        Fill(amplitude);
    }

    /// New noise.
    void Fill(Sample amplitude) { in_.FillWithNoise(random_, amplitude); }
    /// [audio-thread] One block.
    void PlayBlock(std::int32_t frames) { effect_.Process(in_.pointers(), out_.pointers(), frames); }
    /// [audio-thread] Largest blocks, each the same.
    void Play(int blocks = 1) {
        for (int i = 0; i < blocks; ++i)
            PlayBlock(frames_);
    }
    /// Whether what came out last is free of NaN and infinity.
    bool isFinite() const { return out_.AreFinite(frames_); }
    Channels<Sample>& in() { return in_; }
    Channels<Sample>& out() { return out_; }

  private:
    RawEffect& effect_;
    std::int32_t frames_;
    Channels<Sample> in_;
    Channels<Sample> out_;
    std::mt19937 random_;
};

/// The usual block, in samples.
inline constexpr std::int32_t kBlock = 512;

/// Plays blocks of noise; a fault, told with the situation, when the last of them has NaN or infinity in it.
inline void PlayFinite(RawEffect& effect, Report& report, std::string_view situation, int blocks = 20) {
    NoisePlayer<float> player(effect, kBlock, 1);
    player.Play(blocks);
    if (!player.isFinite()) report.Fault("{}: its output is NaN or infinite", situation);
}

} // namespace vocafade::validate
