// SPDX-License-Identifier: MIT
#if defined(__GNUC__) && !defined(__clang__)
// GCC 12 takes its own undefined-register intrinsics for uninitialised variables.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "dsp/kernels/lanes_avx512.h"
// The lanes come first.
#include "dsp/kernels/phase_vocoder.h"

namespace vocafade::kernels {

const KernelSet kAvx512Kernels = MakeKernelSet("avx512");

} // namespace vocafade::kernels
