// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/audio_watch.h"
#include "apps/validate/noise_player.h"

#include <atomic>
#include <thread>

namespace vocafade::validate {

/// An audio thread that feeds one effect with noise until it is stopped, block after block at once, and
/// watches itself meanwhile.
class AudioRunner {
  public:
    AudioRunner(RawEffect& effect, std::int32_t block, std::uint32_t seed)
        : player_(effect, block, seed), thread_([this] { Run(); }) {}
    ~AudioRunner() { Stop(); }
    AudioRunner(const AudioRunner&) = delete;
    AudioRunner& operator=(const AudioRunner&) = delete;

    void Stop() {
        stop_ = true;
        if (thread_.joinable()) thread_.join();
    }
    /// [main-thread] Waits until some more blocks have gone by, so that what was just done met sound.
    void LetPass(std::int64_t blocks) const {
        const std::int64_t until = blocks_ + blocks;
        while (blocks_ < until)
            std::this_thread::yield();
    }
    std::int64_t blocks() const { return blocks_; }
    /// After `Stop`.
    bool wasFinite() const { return finite_; }
    const AudioWatch::Counts& counts() const { return counts_; }

  private:
    void Run() {
        while (!stop_) {
            AudioWatch watch;
            player_.Play();
            counts_ += watch.Stop();
            finite_ = finite_ && player_.isFinite();
            ++blocks_;
        }
    }

    NoisePlayer<float> player_;
    std::atomic<bool> stop_{false};
    std::atomic<std::int64_t> blocks_{0};
    bool finite_ = true;
    AudioWatch::Counts counts_;
    std::thread thread_;
};

} // namespace vocafade::validate
