// SPDX-License-Identifier: MIT
#pragma once

#include "apps/demo/measure.h"

#include <string>

namespace vocafade {

/// What the before/after chart says.
struct Captions {
    std::string title;
    std::string before; ///< beside the upper panel's name
    std::string after;  ///< beside the lower panel's name
};

/// Draws the spectrograms of two sounds, one above the other, on one scale of loudness (dB below the loudest
/// place of both), a logarithmic axis of frequency and the limits of `band` marked; 1400 x 900 pixels, as a
/// PNG. The second sound is shown as if it were louder by `1 / gain`. Throws std::runtime_error when a sound
/// cannot be read or the picture cannot be written.
void DrawBeforeAfter(const std::string& beforePath, const std::string& afterPath, const Band& band,
                     double gain, const Captions& captions, const std::string& path);

} // namespace vocafade
