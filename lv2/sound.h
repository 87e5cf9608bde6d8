// SPDX-License-Identifier: MIT
#pragma once

#include "effect/avocafade.h"
#include "effect/bypass.h"
#include "lv2/ports.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace vocafade::lv2 {

/// What the audio thread tells the main thread: single values, each atomic, none waited for.
struct SoundReport {
    std::array<std::atomic<float>, kParameterCount> ports; ///< what the ports said last; NaN before
    std::array<std::atomic<float>, 4> meters;              ///< peaks of the last block: in L, R, out L, R
    std::atomic<std::uint32_t> blocks{0};                  ///< counts them
};

/// The audio thread's half of an instance. It has an effect of its own, which no other thread touches while
/// audio runs, so that its two locks are always free: the audio thread never waits for the editor. What the
/// user does in the editor comes in through the ports, as the host's automation does.
class Sound {
  public:
    /// [main-thread] `rate` in Hz.
    explicit Sound(double rate);

    /// [audio-thread] Null takes a port away.
    void Connect(std::uint32_t port, void* data);
    /// [main-thread, no audio] Empties engine and delay. The next block sends all six values again: the
    /// engine itself returns to the middle when it starts anew, whatever Position says.
    void Activate();
    /// [audio-thread] Processes `count` samples, in place where the host wants it so. Allocates nothing.
    void Run(std::uint32_t count);

    /// [any-thread] What the audio thread has met so far.
    const SoundReport& report() const { return report_; }

  private:
    void FollowPorts();

    std::array<float*, kPortCount> ports_{};
    std::array<float, kParameterCount> values_{}; ///< what the effect was sent last, as ports say it
    bool sendAll_ = true;
    AVocafade effect_;
    Bypass bypass_;
    SoundReport report_;
};

} // namespace vocafade::lv2
