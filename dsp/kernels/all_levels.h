// SPDX-License-Identifier: MIT
#pragma once

#include "dsp/kernels/level.h"

namespace vocafade::kernels {

extern const VectorLevel kPortableLevel;
extern const VectorLevel kSse2Level; ///< x86-64 only, as the next two
extern const VectorLevel kAvx2Level;
extern const VectorLevel kAvx512Level; ///< needs the F, BW, DQ and VL groups
extern const VectorLevel kNeonLevel;   ///< AArch64 only

} // namespace vocafade::kernels
