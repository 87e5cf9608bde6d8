// SPDX-License-Identifier: MIT
#include "dsp/kernels/all_levels.h"
#include "dsp/kernels/lanes_avx2.h"
// The lanes come first.
#include "dsp/kernels/level_body.h"

namespace vocafade::kernels {

const VectorLevel kAvx2Level = MakeLevel("avx2");

} // namespace vocafade::kernels
