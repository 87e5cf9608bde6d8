// SPDX-License-Identifier: MIT
#include "dsp/kernels/all_levels.h"
#include "dsp/kernels/lanes_neon.h"
// The lanes come first.
#include "dsp/kernels/level_body.h"

namespace vocafade::kernels {

const VectorLevel kNeonLevel = MakeLevel("neon");

} // namespace vocafade::kernels
