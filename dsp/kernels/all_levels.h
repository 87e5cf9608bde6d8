// SPDX-License-Identifier: MIT
#pragma once

#include "dsp/kernels/level.h"

namespace vocafade::kernels {

extern const Level kPortableLevel;
extern const Level kSse2Level; ///< x86-64 only, as the next two
extern const Level kAvx2Level;
extern const Level kAvx512Level; ///< needs the F, BW, DQ and VL groups
extern const Level kNeonLevel;   ///< AArch64 only

} // namespace vocafade::kernels
