// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vocafade {

/// One instant of a stereo sound; 1.0 is full scale.
struct StereoSample {
    float left = 0.0f;
    float right = 0.0f;
};

/// A stereo sound in memory.
using StereoSound = std::vector<StereoSample>;

/// Reads a stereo file from its beginning to its end, a piece at a time.
class StereoReader {
  public:
    /// Opens `path`, any format that libsndfile reads. Throws std::runtime_error, saying what is wrong, when
    /// it cannot be read or does not hold exactly two channels.
    explicit StereoReader(const std::string& path);

    /// Fills `samples` from the file; the number of samples that were there (less only at the end).
    std::size_t Read(StereoSample* samples, std::size_t count);

    /// Samples per second.
    int rate() const { return rate_; }
    /// Length as the file states it, in samples.
    std::int64_t length() const { return length_; }

  private:
    struct Closer {
        void operator()(void* file) const;
    };
    std::unique_ptr<void, Closer> file_;
    int rate_ = 0;
    std::int64_t length_ = 0;
};

/// Writes `sound` as a 24-bit WAV file of `rate` samples per second; the name appears only when the file is
/// whole. Throws std::runtime_error when it cannot be written.
void WriteWave(const std::string& path, const StereoSound& sound, int rate);

} // namespace vocafade
