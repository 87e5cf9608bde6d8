// SPDX-License-Identifier: MIT
#include "dsp/kernels/all_levels.h"
#include "dsp/kernels/lanes_avx512.h"
// The lanes come first.
#include "dsp/kernels/level_body.h"

namespace vocafade::kernels {

const Level kAvx512Level = MakeLevel("avx512");

} // namespace vocafade::kernels
