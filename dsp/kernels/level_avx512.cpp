// SPDX-License-Identifier: MIT
#if defined(__GNUC__) && !defined(__clang__)
// GCC 12 takes its own undefined-register intrinsics for uninitialised variables.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "dsp/kernels/all_levels.h"
#include "dsp/kernels/lanes_avx512.h"
// The lanes come first.
#include "dsp/kernels/level_body.h"

namespace vocafade::kernels {

const VectorLevel kAvx512Level = MakeLevel("avx512");

} // namespace vocafade::kernels
