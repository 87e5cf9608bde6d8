// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
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
    unreadable, ///< the sub-chunks that are to be changed are damaged, or take more than 2 GiB
    tooLarge,   ///< the sub-chunks together take more than 2 GiB, or one of them has no data
    writeFailed ///< the disk took only a part; the sizes in the file still leave that part out
};

/// [main-thread] Puts one user chunk ("WVL4") that holds `first` and then `second` into the AIFF file at
/// `path` (a path or a `file:` URL), in the place of the old one. Both empty: there is no user chunk
/// afterwards. Works in place, so a file of any length costs only the chunk itself, and never touches the
/// sound or other chunks: a user chunk that has others behind it and does not fit where it was goes to the
/// end of the file, and its old place becomes a filler ("FLLR"). The sizes in the headers of form and sound,
/// and a frame count that the sound does not have, are put right. What is left of a longer user chunk stays
/// behind the end of the form; where it could be taken for other chunks, two bytes are appended that tell it
/// from them. The file is locked from the first look at it to the last byte, and other changes wait.
UserChunkResult PutUserChunk(const char* path, std::span<const KVBFILECHUNKINFO> first,
                             std::span<const KVBFILECHUNKINFO> second);

/// [main-thread] The same with the sub-chunks that `change` makes of those in the file, so that of two
/// programs that change the same file neither loses what the other stored. The data of what it adds outlive
/// the call. Whatever it throws leaves the file as it was.
UserChunkResult ChangeUserChunk(const char* path,
                                const std::function<void(std::vector<KVBFILECHUNKINFO>&)>& change);

/// [main-thread] `PutUserChunk` for two lists of `count1` and `count2` entries. True when the file could be
/// opened, whatever came of it.
bool WriteUserChunk(const char* path, KVBFILECHUNKINFO* list1, int count1, KVBFILECHUNKINFO* list2,
                    int count2);

/// [any-thread] The sub-chunks in the payload of a user chunk, pointing into it; nothing when the last one is
/// cut short, so that nobody writes back less than was there. Fewer than eight zero bytes behind the last are
/// left out.
std::optional<std::vector<KVBFILECHUNKINFO>> ParseUserChunk(std::span<const unsigned char> payload);

} // namespace vocafade
