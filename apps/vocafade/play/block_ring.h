// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vocafade::command {

/// A ring between one thread that fills and one that empties it, without a lock. What is put in is visible to the
/// other side as a whole.
template <typename Thing, std::size_t kPlaces>
class Ring {
  public:
    /// [filling thread] The place to fill next, or null when all are taken. `Filled` hands it over.
    Thing* Free() {
        return filled_.load(std::memory_order_relaxed) - emptied_.load(std::memory_order_acquire) < kPlaces
                   ? &things_[filled_.load(std::memory_order_relaxed) % kPlaces]
                   : nullptr;
    }
    void Filled() { filled_.fetch_add(1, std::memory_order_release); }

    /// [emptying thread] The oldest thing, or null. `Emptied` gives its place back.
    Thing* Front() {
        return emptied_.load(std::memory_order_relaxed) != filled_.load(std::memory_order_acquire)
                   ? &things_[emptied_.load(std::memory_order_relaxed) % kPlaces]
                   : nullptr;
    }
    void Emptied() { emptied_.fetch_add(1, std::memory_order_release); }

  private:
    std::vector<Thing> things_ = std::vector<Thing>(kPlaces);
    std::atomic<std::size_t> filled_{0};
    std::atomic<std::size_t> emptied_{0};
};

/// A piece of a song on its way from its file to the loudspeakers.
struct Block {
    static constexpr std::size_t kFrames = 1024;
    std::uint32_t request =
        0; ///< what it is an answer to: what answers an older request is not played any more
    std::size_t song = 0;
    std::int64_t first = 0; ///< its first frame in the song
    std::size_t frames = 0;
    bool last = false; ///< nothing more comes after it: the last song is over, or another rate is needed
    std::array<float, 2 * kFrames> samples; ///< interleaved
};

/// Almost three seconds at 44.1 kHz: more than a disk that must wake up keeps a song waiting in its middle, as a rule.
using BlockRing = Ring<Block, 128>;

} // namespace vocafade::command
