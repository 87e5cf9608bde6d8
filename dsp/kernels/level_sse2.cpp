// SPDX-License-Identifier: MIT
#include "dsp/kernels/all_levels.h"
#include "dsp/kernels/lanes_sse2.h"
// The lanes come first.
#include "dsp/kernels/level_body.h"

namespace vocafade::kernels {

const VectorLevel kSse2Level = MakeLevel("sse2");

} // namespace vocafade::kernels
