// SPDX-License-Identifier: MIT
#pragma once

#include "dsp/kernels/kernel_set.h"

namespace vocafade {

/// [audio-thread] The greatest |sample| * gain of a block, for meters; 0 at least, and NaN is passed over.
inline float Peak(const float* samples, int count, float gain) {
    return kernels::ChosenKernels().peak(samples, count, gain);
}

} // namespace vocafade
