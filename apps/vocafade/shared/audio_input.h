// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <sndfile.h>

namespace vocafade::command {

/// A libsndfile handle that closes itself.
struct CloseSound {
    void operator()(SNDFILE* sound) const { sf_close(sound); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseSound>;

/// Opens `path` for reading. Throws `Failure`, without the name, for what is missing, not readable, not audio
/// or empty.
SoundFile OpenSound(const std::filesystem::path& path, SF_INFO& info);

/// A stereo sound file that is read.
class AudioInput {
  public:
    /// Opens `path`. Throws `Failure` for what is missing, not readable, not audio, empty or not stereo.
    explicit AudioInput(const std::filesystem::path& path);

    const std::filesystem::path& path() const { return path_; }
    /// What the file says of itself.
    const SF_INFO& info() const { return info_; }
    /// Frames announced, or -1 when the file does not know.
    std::int64_t frames() const { return frames_; }
    SNDFILE* sound() const { return sound_.get(); }

    /// Reads at most `frames` interleaved frames; fewer only at the end. Throws `Failure` on damage.
    std::int64_t Read(float* samples, std::int64_t frames);
    std::int64_t Read(double* samples, std::int64_t frames);

    /// The next frame to be read is `frame`. False when the file cannot be wound.
    bool Seek(std::int64_t frame);

  private:
    std::int64_t Checked(std::int64_t got, std::int64_t wanted);

    std::filesystem::path path_;
    SF_INFO info_{};
    std::int64_t frames_ = 0;
    std::int64_t done_ = 0;
    SoundFile sound_;
};

} // namespace vocafade::command
