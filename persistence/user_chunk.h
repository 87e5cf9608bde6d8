// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vocafade {

/// One sub-chunk of the user chunk, in memory.
struct KVBFILECHUNKINFO {
    std::uint32_t id = 0;                ///< the four-character code as a number, first character highest
    std::uint32_t size = 0;              ///< bytes at `data`
    const unsigned char* data = nullptr; ///< the caller's; null only when `size` is 0
};

/// What became of a write of the user chunk. Except after `writeFailed` the file is untouched or complete.
enum class UserChunkResult {
    done,
    cannotOpen, ///< there is no such file, or it may not be written to
    notAiff,    ///< it is not a plain (uncompressed) AIFF file
    damaged,    ///< its chunks do not lead to its end, so there is no safe place for a further one
    tooLarge,   ///< the sub-chunks together need 4 GiB or more, or one of them has no data
    writeFailed ///< the disk took only a part; the sizes in the file still leave that part out
};

/// [main-thread] Puts one user chunk ("WVL4") that holds `first` and then `second` into the AIFF file at
/// `path` (a path or a `file:` URL), in the place of the old one. Both empty: there is no user chunk
/// afterwards. Works in place, so a file of any length costs only the chunk itself, and never touches the
/// sound or other chunks: a user chunk that has others behind it and does not fit where it was goes to the
/// end of the file, and its old place becomes a filler ("FLLR"). The sizes in the headers of form and sound,
/// and the frame count of a recording that was never finished, are put right.
UserChunkResult PutUserChunk(const char* path, std::span<const KVBFILECHUNKINFO> first,
                             std::span<const KVBFILECHUNKINFO> second);

/// [main-thread] `PutUserChunk` for two lists of `count1` and `count2` entries. True when the file could be
/// opened, whatever came of it.
bool WriteUserChunk(const char* path, KVBFILECHUNKINFO* list1, int count1, KVBFILECHUNKINFO* list2,
                    int count2);

/// [any-thread] The sub-chunks in the payload of a user chunk, pointing into it; nothing when the last one is
/// cut short, so that nobody writes back less than was there. Fewer than eight zero bytes behind the last are
/// left out.
std::optional<std::vector<KVBFILECHUNKINFO>> ParseUserChunk(std::span<const unsigned char> payload);

} // namespace vocafade
