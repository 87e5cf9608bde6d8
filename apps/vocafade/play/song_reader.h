// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/play/block_ring.h"
#include "apps/vocafade/shared/audio_input.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vocafade::command {

/// A passage that is to be repeated, in seconds.
struct Passage {
    double from = 0.0;
    double to = 0.0;
};

/// What is known of a song once it has been opened.
struct SongInfo {
    std::string title;
    int rate = 0;         ///< Hz
    double seconds = 0.0; ///< 0 when the file does not tell
};

/// Reads songs ahead, one after the other, in a thread of its own.
class SongReader {
  public:
    /// [main-thread] Fills `ring`, which outlives it.
    SongReader(std::vector<std::string> songs, std::optional<Passage> loop, BlockRing& ring);
    ~SongReader();
    SongReader(const SongReader&) = delete;
    SongReader& operator=(const SongReader&) = delete;

    /// [main-thread] From now on reads `song` from `seconds` on, for an output that runs at `rate` Hz (0: there is none
    /// yet). Answers the number that the blocks will carry. A song that cannot be read is told of and the next one
    /// taken.
    std::uint32_t Request(std::size_t song, double seconds, int rate);

    /// Where it stopped for want of an output of another rate.
    struct Stop {
        std::size_t song = 0;
        double seconds = 0.0;
        int rate = 0; ///< Hz that it needs
    };
    /// [main-thread] That, or nothing when it has not stopped or the songs are over.
    std::optional<Stop> stop() const;
    /// [main-thread] True when all that was asked for has been read, to the end of the last song.
    bool isAtEnd() const;
    /// [main-thread] Nothing before the song has been opened.
    std::optional<SongInfo> info(std::size_t song) const;
    /// [main-thread] Songs that could not be read since the last call: number and reason.
    std::vector<std::pair<std::size_t, std::string>> TakeFailures();

    std::size_t songs() const { return songs_.size(); }

  private:
    struct Wish {
        std::uint32_t number = 0;
        std::size_t song = 0;
        double seconds = 0.0;
        int rate = 0;
    };

    void Run();
    bool Open(std::size_t song);
    void Begin();
    void ReadBlock(Block& block);
    void EndBlock(Block& block, std::optional<Stop> stop);
    void Fail(const std::string& reason);

    const std::vector<std::string> songs_;
    const std::optional<Passage> loop_;
    BlockRing& ring_;

    mutable std::mutex mutex_; ///< for the six below
    std::condition_variable changed_;
    bool over_ = false;
    bool atEnd_ = false;
    Wish wish_;
    std::optional<Stop> stop_;
    std::vector<std::optional<SongInfo>> infos_;
    std::vector<std::pair<std::size_t, std::string>> failures_;

    // Of the reading thread.
    Wish now_;
    std::optional<AudioInput> input_;
    std::size_t song_ = 0;
    std::int64_t frame_ = 0;
    std::int64_t fadeIn_ = 0; ///< frames that have sounded since the passage began anew
    bool idle_ = true;        ///< everything that was asked for has been read

    std::thread thread_;
};

} // namespace vocafade::command
