// SPDX-License-Identifier: MIT
#pragma once

#include "base/file.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace vocafade::command {

/// A chunk that goes into the new file as it stands.
struct CarriedChunk {
    std::uint32_t id = 0;      ///< first character highest
    std::int64_t position = 0; ///< of its bytes in the file
    std::int64_t size = 0;
};

/// What there is to know of a WAV or AIFF file beyond what libsndfile tells.
struct FileChunks {
    enum class Kind { other, wav, aiff };
    Kind kind = Kind::other;
    /// What other programs put there that stays true when the samples change. Of AIFF files all texts are
    /// among it: a file may have several of a kind, and comments with their times.
    std::vector<CarriedChunk> carried;
    /// How much of the sound that the file announces is there; less than 1 in a file that was cut.
    double soundShare = 1.0;
};

/// [any-thread] Reads the chunk list of `path`; of a damaged or other file as much as can be read.
FileChunks ReadFileChunks(const std::filesystem::path& path);

/// [any-thread] Puts the carried chunks of `found`, read from `source`, behind everything else in `target`, a
/// whole file of the same kind, and makes its size true. Costs no memory, however large they are. False when
/// they cannot be read or written, or when there is no room for them in the file's form.
bool AppendChunks(CFile& target, const FileChunks& found, const std::filesystem::path& source);

} // namespace vocafade::command
