// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/render/file_chunks.h"
#include "apps/vocafade/shared/audio_input.h"
#include "base/file_replacement.h"

#include <cstdint>
#include <filesystem>
#include <sndfile.h>
#include <vector>

namespace vocafade::command {

/// A sound file in the making. It appears under its name only by `Finish`, whole; before that, and when it is
/// given up, the name stays with what it had.
class AudioOutput {
  public:
    /// Begins `path` in `format` (see `ChooseFormat`) like `input`, whose chunks are `chunks`, with its
    /// tags. Throws `Failure`.
    AudioOutput(const std::filesystem::path& path, int format, const AudioInput& input,
                const FileChunks& chunks);
    ~AudioOutput();
    AudioOutput(const AudioOutput&) = delete;
    AudioOutput& operator=(const AudioOutput&) = delete;

    /// Writes `frames` interleaved stereo frames. Integer formats round to the nearest step and hold at full
    /// scale. Throws `Failure` when the target is full or cannot be written.
    void Write(const float* samples, std::int64_t frames);
    void Write(const double* samples, std::int64_t frames);
    /// Completes the file and gives it its name. Throws `Failure`.
    void Finish();

    /// The format that the file has: a song that WAV could hold after all is one. Final after `Finish`.
    int format() const { return info_.format; }
    /// Samples (not frames) beyond full scale so far; always 0 for formats that can hold them.
    std::int64_t clipped() const { return clipped_; }

  private:
    template <typename Sample>
    void WriteAny(const Sample* samples, std::int64_t frames);
    template <typename Sample>
    void Quantise(const Sample* samples, std::size_t count);
    void CheckTaken(std::int64_t taken, std::int64_t frames);
    void SetQuality();
    void NoteDowngradeToWav();
    [[noreturn]] void Refuse() const;

    static sf_count_t Length(void* self);
    static sf_count_t Seek(sf_count_t offset, int whence, void* self);
    static sf_count_t ReadBytes(void* bytes, sf_count_t count, void* self);
    static sf_count_t WriteBytes(const void* bytes, sf_count_t count, void* self);
    static sf_count_t Tell(void* self);

    std::filesystem::path path_;
    std::filesystem::path source_; ///< the input, whose chunks are carried over at the end
    FileChunks carried_;
    SampleKind kind_;
    SF_INFO info_{};
    std::int64_t clipped_ = 0;
    int writeError_ = 0; ///< the system's first error at writing, 0 while all is well
    std::vector<int> integers_;
    FileReplacement replacement_;
    SoundFile sound_; // after `replacement_`: closing it still writes there
};

} // namespace vocafade::command
