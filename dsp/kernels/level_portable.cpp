// SPDX-License-Identifier: MIT
#include "dsp/kernels/all_levels.h"
#include "dsp/kernels/lanes_portable.h"
// The lanes come first.
#include "dsp/kernels/level_body.h"

namespace vocafade::kernels {

const VectorLevel kPortableLevel = MakeLevel("portable");

} // namespace vocafade::kernels
