// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vocafade {

/// The colour of a level from 0 (silent: night blue) to 1 (loudest: warm white), as 0xRRGGBB. Lightness rises
/// evenly, so that equal steps of loudness look equal, in grey print and to colour-blind eyes too.
std::uint32_t LevelColor(double level);

} // namespace vocafade
