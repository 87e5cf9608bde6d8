// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/play/keys.h"
#include "apps/vocafade/play/player.h"
#include "apps/vocafade/play/pulse_output.h"
#include "apps/vocafade/play/song_reader.h"
#include "apps/vocafade/shared/editor_window.h"
#include "apps/vocafade/shared/live_effect.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vocafade::command {

/// What a session plays, and how.
struct PlaySettings {
    std::vector<std::string> songs;
    std::optional<Passage> loop;
    double bufferSeconds = 0.0;
    bool window = true; ///< when there is a display
    bool quiet = false;
};

/// Plays songs until they are over or the user ends it. Everything is [main-thread].
class PlaySession {
  public:
    PlaySession(LiveEffect& effect, const PlaySettings& settings);

    /// Answers an `ExitCode`. Throws `Failure` when nothing can be heard, and `Interrupted`.
    int Run();

  private:
    using Clock = std::chrono::steady_clock;

    bool Tick();
    void TellFailures();
    bool FollowReader();
    bool FollowOutput();
    bool Reconnect();
    bool IsHeardToTheEnd();
    void OpenOutput(int rate);
    void Go(std::size_t song, double seconds);
    bool Press(Key key);
    void Wind(double seconds);
    void HoldWhilePaused();
    Player::Place Now();
    void Show(const Player::Place& now);
    int Gaps() const;
    void TellGaps();
    void Tell(const std::string& sentence);
    bool RunWindow();

    LiveEffect& effect_;
    const PlaySettings& settings_;
    const bool line_; ///< a line stands on the terminal
    bool drawn_ = false;
    Keys keys_;
    std::unique_ptr<EditorWindow> window_;
    BlockRing ring_;
    SongReader reader_;
    std::optional<Player> player_;
    std::optional<PulseOutput> output_; // ends before what it calls

    std::uint32_t request_ = 0;
    std::size_t song_ = 0; ///< where that began
    double seconds_ = 0.0; ///< likewise
    int rate_ = 0;         ///< of the output, also of one that has gone; 0 before the first
    bool paused_ = false;
    bool held_ = false;
    int failures_ = 0;
    int gaps_ = 0;                          ///< of outputs that are no more
    std::optional<std::size_t> shown_;      ///< the song whose title is shown
    std::optional<Clock::time_point> lost_; ///< since when there is no output
    Clock::time_point lastTry_{};
    std::optional<std::int64_t> end_;     ///< frames filled in when the last of the song had been
    std::optional<std::int64_t> silence_; ///< likewise the last before a pause
};

} // namespace vocafade::command
