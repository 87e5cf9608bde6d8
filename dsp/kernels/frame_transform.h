// SPDX-License-Identifier: MIT
#pragma once

#include "dsp/aligned_floats.h"
#include "dsp/fft.h"
#include "dsp/kernels/kernel_set.h"

#include <vector>

namespace vocafade::kernels {

/// The transforms of frames of one size, with their tables and work area. The twiddles are those of `CFFT`,
/// put into the order in which the vector passes read them, so that both transforms round alike. Frames that
/// are too short for the vector passes go through `CFFT` itself.
class FrameTransform {
  public:
    FrameTransform() = default;
    FrameTransform(const FrameTransform&) = delete;
    FrameTransform& operator=(const FrameTransform&) = delete;

    /// [main-thread] `size` is a power of two of at least 2. With the same size as before it does nothing.
    void Init(int size);

    /// [audio-thread] re + i im = the first half of the transform (negative exponent, unscaled) of
    /// input * window.
    void Forward(const KernelSet& set, const float* input, const float* window, float* re, float* im);

    /// [audio-thread] frame = the real part of the transform (positive exponent, unscaled) of a spectrum
    /// whose first half is re + i im and whose second half is zero.
    void Inverse(const KernelSet& set, const float* re, const float* im, float* frame);

  private:
    bool IsShort() const { return tables_.size < kSmallestFrame; }
    void InitTwiddles();

    TransformTables tables_{};
    std::vector<float> twiddles_;
    AlignedFloats work_;
    CFFT forward_; ///< its tables serve all sizes, its transform the short ones
    CFFT inverse_; ///< short frames only
};

} // namespace vocafade::kernels
