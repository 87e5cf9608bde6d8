// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/shared/editor_window.h"
#include "apps/vocafade/shared/sound_options.h"
#include "effect/bypass.h"
#include "host/effect.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace vocafade::command {

/// The plug-in on sound that is heard while it is made. There are two effects: one sounds, and the audio thread has
/// it for itself, so that the editor never holds it up; the other is shown and set. Before each part of the sound the
/// one is told what has changed in the other. While ON/OFF is off, the untouched sound is heard, as late as the
/// effect's, and both blend into one another.
class LiveEffect {
  public:
    /// [main-thread] Throws `UsageError`, `Failure` or `host::HostError` for what cannot be.
    LiveEffect(const std::filesystem::path& plugin, const SoundOptions& options);

    /// [main-thread, no audio] Starts anew at `rate` Hz. What is shown stays as it is, and all of it is sent again: an
    /// effect that starts anew forgets Position.
    void Restart(double rate);
    /// [audio-thread] Takes the voice out of `frames` interleaved stereo frames, in place. Allocates nothing.
    void Process(float* samples, std::size_t frames);

    /// The effect that is shown and set.
    host::Effect& shown() { return shown_; }
    /// Frames by which what comes out lies behind what went in.
    std::int64_t latency() const { return latency_; }
    /// [any-thread] Whether the voice is taken out; switches it.
    bool isOn() { return !IsOff(shown_); }
    void Switch(bool on);
    /// [any-thread] With `watched`, the effect that is shown gets the sound too, so that its meters move.
    void setWatched(bool watched) { watched_ = watched; }
    /// [any-thread] The highest levels, left and right, that came out since the last call.
    std::array<float, 2> TakePeaks();

  private:
    void SendChanges();

    static constexpr std::size_t kPart = 512;
    using Part = std::array<std::array<float, kPart>, 2>;

    host::Effect shown_;
    host::Effect sounding_;
    SoundSettings settings_;
    std::int64_t latency_;
    bool switches_; ///< whether ON/OFF is known to be what it is in the plug-in of this command
    bool started_ = false;
    bool sendAll_ = true;
    std::vector<float> sent_; ///< of each parameter, what the effect that sounds was told last
    std::optional<Bypass> bypass_;
    std::atomic<bool> watched_{false};
    std::array<std::atomic<float>, 2> peaks_{};
    Part dry_{};
    Part wet_{};
    Part unheard_{};
};

/// [main-thread] A window with the editor of the effect that is shown, whose meters then move. Null without a display;
/// when there is one that cannot be used, that is said.
std::unique_ptr<EditorWindow> OpenWindow(LiveEffect& effect);

} // namespace vocafade::command
