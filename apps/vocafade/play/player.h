// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/play/block_ring.h"
#include "apps/vocafade/shared/live_effect.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>

namespace vocafade::command {

/// Makes what is heard out of the blocks that are read ahead: joins them, blends where the song is wound or paused, and
/// sends them through the effect. Knows which place of which song comes out when.
class Player {
  public:
    /// [main-thread, no audio] For an output of `rate` Hz. Both outlive it.
    Player(LiveEffect& effect, BlockRing& ring, int rate);

    /// [audio-thread] Makes the next `frames` interleaved stereo frames. Never waits and never allocates: where
    /// nothing has been read in time, silence takes the place, and it is counted.
    void Fill(float* samples, std::size_t frames);

    /// [main-thread] Plays the blocks of this request from now on, as soon as there are some.
    void Follow(std::uint32_t request) { wanted_ = request; }
    /// [main-thread] Holds the song, or lets it go on from there.
    void Pause(bool paused) { paused_ = paused; }
    /// [any-thread] True when a pause has taken hold: only silence comes out.
    bool isSilent() const { return silent_; }
    /// [any-thread] True when nothing more comes, and the effect has given all that it held.
    bool isOver() const { return over_ == wanted_; }
    /// [any-thread] How often the song was not there in time.
    int gaps() const { return gaps_; }

    /// A place in a song.
    struct Place {
        std::uint32_t request = 0; ///< that brought it here
        std::size_t song = 0;
        double seconds = 0.0;
    };
    /// [main-thread] What is heard when what leaves here is heard `outputSeconds` later.
    Place Heard(double outputSeconds);

  private:
    /// From frame `count` of all that went into the effect on, what goes in is the song from `frame` on.
    struct Passage {
        std::int64_t count = 0;
        std::uint32_t request = 0;
        std::size_t song = 0;
        std::int64_t frame = 0;
    };

    bool HasBegun();
    std::size_t Take(float* samples, std::size_t frames);
    bool LeaveOldRequest(float* samples, std::size_t frames, std::size_t& done);
    std::size_t TakeFrom(Block& block, float* samples, std::size_t frames, float goal);
    void Note(const Block& block, std::int64_t count);

    LiveEffect& effect_;
    BlockRing& ring_;
    const double rate_;
    const float step_; ///< of a blend, a frame

    // Of the audio thread.
    bool begun_ = false;
    std::uint32_t request_ = 0; ///< whose blocks are played
    std::size_t used_ = 0;      ///< frames of the front block that have been taken
    float songLevel_ = 1.0f;    ///< of the song's blend, before the effect
    float outLevel_ = 1.0f;     ///< of the pause's blend, behind it
    bool ended_ = false;        ///< the last block has been taken
    bool inGap_ = false;
    std::int64_t tail_ = 0; ///< frames of silence that went in behind the last block
    Passage noted_;

    std::atomic<std::uint32_t> wanted_{0};
    std::atomic<bool> paused_{false};
    std::atomic<bool> silent_{false};
    std::atomic<std::uint32_t> over_{0}; ///< the request that has been played to its end
    std::atomic<int> gaps_{0};
    std::atomic<std::int64_t> count_{0};      ///< frames that went into the effect
    std::atomic<std::int64_t> sincePause_{0}; ///< frames that came out since a pause, or since the beginning

    Ring<Passage, 256> passages_;
    std::deque<Passage> known_; ///< of the main thread
};

} // namespace vocafade::command
