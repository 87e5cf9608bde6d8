// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <sndfile.h>
#include <string>

namespace vocafade::command {

/// What a sample in a file is, as far as rounding and clipping go.
struct SampleKind {
    int bits = 0;                 ///< of an integer sample; 0 when samples are fractions
    bool isCoded = false;         ///< a lossy code without a depth of its own (Vorbis, Opus, MP3)
    bool doublePrecision = false; ///< fractions of 64 bits
};

/// The kind of the samples in a libsndfile format number.
SampleKind SampleKindOf(int format);

/// The endings that can be written, for messages.
std::string KnownEndings();

/// True when `ending` (without dot, any case) names a format.
bool IsKnownEnding(const std::string& ending);

/// True when files of this ending (without dot, in lower case) are sound files that can be read, as a rule.
bool IsSoundEnding(const std::string& ending);

/// The format in which a song read as `input` is written under an ending: the very same format when the
/// ending stands for it, else that ending's format with the depth nearest to the input's that does not lose
/// any. An empty ending, or one that is the input's own, means the input's format. Throws `Failure` when that
/// format cannot be written or cannot hold this rate, saying what would do. Plain WAV turns to RF64 when
/// `frames` (negative: unknown) would go over its 4 GB.
int ChooseFormat(const SF_INFO& input, const std::string& inputEnding, const std::string& ending,
                 std::int64_t frames);

/// Bytes that the sound will take; nothing for compressed formats, of which it cannot be said before.
std::optional<double> SoundBytes(int format, int channels, std::int64_t frames);

/// The ending of a path without its dot, in lower case.
std::string EndingOf(const std::filesystem::path& path);

/// "FLAC, 24 bit" for messages.
std::string FormatText(int format);

} // namespace vocafade::command
