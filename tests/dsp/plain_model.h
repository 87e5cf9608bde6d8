// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/signals.h"

#include <complex>

namespace vocafade::test {

using Complex = std::complex<double>;

/// The sum of x[j] e^(sign 2 pi i j k / n) for each k, in double precision; n is a power of two.
std::vector<Complex> PlainTransform(const std::vector<Complex>& x, double sign);

/// What the model needs to know of the engine's settings.
struct ModelSettings {
    int position;
    unsigned low; ///< Hz
    unsigned high;
};

/// The engine's behaviour written down once more, independently: whole signal in double precision, frame by
/// frame, textbook transform, no streaming and no shared code. 44.1 kHz; levels are 1 (so the output factor is 1.7).
StereoSamples PlainModel(const StereoSamples& input, const ModelSettings& settings);

} // namespace vocafade::test
