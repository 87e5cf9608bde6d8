// SPDX-License-Identifier: MIT
#pragma once

#include "apps/demo/stereo_file.h"

#include <complex>
#include <string>
#include <vector>

namespace vocafade {

/// The spectra of both channels of one windowed frame: `size / 2 + 1` values each, from 0 Hz to half the
/// rate.
struct StereoSpectrum {
    std::vector<std::complex<float>> left;
    std::vector<std::complex<float>> right;
};

/// The frame size that stands for about 93 ms at `rate` (4096 samples at 44.1 kHz): long enough to part the
/// overtones of a voice, short enough to follow its vowels.
int FrameSizeFor(int rate);

/// Walks through a stereo file in overlapping frames under a periodic Hann window. A full-scale sine reads as
/// magnitude 1. The file ends with the last frame that it can fill at least half.
class SpectrumStream {
  public:
    /// `frameSize` must be even; `hop` from 1 to `frameSize`. Throws as StereoReader does.
    SpectrumStream(const std::string& path, int frameSize, int hop);
    ~SpectrumStream();
    SpectrumStream(const SpectrumStream&) = delete;
    SpectrumStream& operator=(const SpectrumStream&) = delete;

    /// Gives the next frame's spectra; false at the end.
    bool Next(StereoSpectrum& spectrum);
    const StereoReader& reader() const { return reader_; }
    /// The number of values in each channel of a spectrum.
    int bins() const { return frameSize_ / 2 + 1; }
    /// The frequency of value `bin`, in Hz.
    double Frequency(int bin) const { return static_cast<double>(bin) * reader_.rate() / frameSize_; }

  private:
    struct Transform;

    StereoReader reader_;
    int frameSize_;
    int hop_;
    std::vector<float> window_;
    StereoSound frame_;
    std::size_t filled_ = 0;
    std::unique_ptr<Transform> transform_;
};

} // namespace vocafade
