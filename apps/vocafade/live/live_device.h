// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/live/former_default.h"
#include "apps/vocafade/live/pipewire_library.h"
#include "apps/vocafade/shared/live_effect.h"

#include <array>
#include <atomic>
#include <functional>
#include <optional>
#include <pipewire/extensions/metadata.h>
#include <spa/param/latency-utils.h>
#include <string>

namespace vocafade::command {

/// An output device of a PipeWire desktop. What programs play into it goes through the effect and on to the
/// loudspeakers: two streams of one group, so that the sound takes one block longer and never changes clocks.
class LiveDevice {
  public:
    static constexpr const char* kName = "vocafade";

    /// [main-thread] Makes the device; with `makeDefault` the one that programs play into when nothing else is chosen.
    /// Throws `Failure` when there is no PipeWire. The effect outlives it.
    LiveDevice(LiveEffect& effect, bool makeDefault);
    /// [main-thread] Gives back what was the default.
    ~LiveDevice();
    LiveDevice(const LiveDevice&) = delete;
    LiveDevice& operator=(const LiveDevice&) = delete;

    /// [main-thread] To be called some thirty times a second: follows the rate of the graph, and starts the effect
    /// anew behind a pause.
    void Tick();
    /// [main-thread] Why the device is no more, or nothing while all is well.
    std::optional<std::string> Loss();

  private:
    class Locked;
    struct Callbacks;
    enum Side : std::size_t { kCapture, kPlayback };
    struct Stream {
        LiveDevice* device = nullptr;
        Side side = kCapture;
        pw_stream* stream = nullptr;
        spa_hook listener{};
    };

    void Connect();
    void MakeStream(Side side);
    void OfferRate();
    void TellLatency(const Stream& to, spa_latency_info latency);
    void WaitFor(const std::function<bool()>& done);
    void Synchronise();
    void TakeUpFormerDefault(bool makeDefault);
    void GiveBackDefault();
    void SetDefault(const char* value);
    void FollowDefault();
    void Close();
    void Process();

    const PipeWireLibrary& library_;
    LiveEffect& effect_;
    int rate_ = 48000; ///< Hz, of the effect; what the streams offer

    // With the loop's lock, or on its thread.
    pw_thread_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    pw_core* core_ = nullptr;
    spa_hook coreListener_{};
    pw_registry* registry_ = nullptr;
    spa_hook registryListener_{};
    pw_metadata* metadata_ = nullptr;
    spa_hook metadataListener_{};
    std::array<Stream, 2> streams_;
    int wantedSync_ = 0;
    int doneSync_ = 0;
    std::string loss_;
    bool madeDefault_ = false; ///< by us
    bool isChosen_ = false;    ///< this device is the chosen default, by us or by another run
    std::string
        configured_; ///< what the user had chosen as the default before, as the session manager writes it
    FormerDefault former_; ///< the same, for the next run
    std::string default_;  ///< the device that is the default
    std::string speakers_; ///< the same, or the last one that was not this device

    std::atomic<spa_io_position*> position_{nullptr};
    std::atomic<int> graphRate_{0};  ///< Hz, 0 before it is known
    std::atomic<bool> stale_{false}; ///< the effect holds sound from before a pause
    std::atomic<bool> busy_{false};  ///< one of two threads is at the effect
};

} // namespace vocafade::command
