// SPDX-License-Identifier: MIT
#include "apps/demo/spectrum_stream.h"

#include <algorithm>
#include <cmath>
#include <kiss_fftr.h>
#include <numbers>
#include <stdexcept>

namespace vocafade {

struct SpectrumStream::Transform {
    explicit Transform(int size)
        : plan(kiss_fftr_alloc(size, 0, nullptr, nullptr)), samples(static_cast<std::size_t>(size)),
          values(static_cast<std::size_t>(size) / 2 + 1) {
        if (!plan) throw std::runtime_error("not enough memory for the spectrum");
    }
    ~Transform() { kiss_fftr_free(plan); }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    void Run(std::vector<std::complex<float>>& spectrum) {
        kiss_fftr(plan, samples.data(), values.data());
        spectrum.resize(values.size());
        std::transform(values.begin(), values.end(), spectrum.begin(),
                       [](const kiss_fft_cpx& value) { return std::complex<float>(value.r, value.i); });
    }

    kiss_fftr_cfg plan;
    std::vector<float> samples;
    std::vector<kiss_fft_cpx> values;
};

int FrameSizeFor(int rate) {
    int size = 1024;
    while (size < 65536 && size < rate * 0.07)
        size *= 2;
    return size;
}

SpectrumStream::SpectrumStream(const std::string& path, int frameSize, int hop)
    : reader_(path), frameSize_(frameSize), hop_(hop), window_(static_cast<std::size_t>(frameSize)),
      frame_(static_cast<std::size_t>(frameSize)), transform_(std::make_unique<Transform>(frameSize)) {
    // A Hann window sums to half its length, and half of a sine's energy lies at negative frequencies:
    // together a factor of 4 / size makes a full-scale sine read 1.
    for (int i = 0; i < frameSize; ++i) {
        const double hann = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * i / frameSize);
        window_[static_cast<std::size_t>(i)] = static_cast<float>(hann * 4.0 / frameSize);
    }
}

SpectrumStream::~SpectrumStream() = default;

bool SpectrumStream::Next(StereoSpectrum& spectrum) {
    filled_ += reader_.Read(frame_.data() + filled_, frame_.size() - filled_);
    if (filled_ < frame_.size() / 2) return false;
    std::fill(frame_.begin() + static_cast<std::ptrdiff_t>(filled_), frame_.end(), StereoSample{});

    for (std::size_t i = 0; i < frame_.size(); ++i)
        transform_->samples[i] = frame_[i].left * window_[i];
    transform_->Run(spectrum.left);
    for (std::size_t i = 0; i < frame_.size(); ++i)
        transform_->samples[i] = frame_[i].right * window_[i];
    transform_->Run(spectrum.right);

    std::copy(frame_.begin() + hop_, frame_.end(), frame_.begin());
    filled_ -= std::min(filled_, static_cast<std::size_t>(hop_));
    return true;
}

} // namespace vocafade
