// SPDX-License-Identifier: MIT
#include "dsp/kernels/lanes_avx2.h"
// The lanes come first.
#include "dsp/kernels/phase_vocoder.h"

namespace vocafade::kernels {

const KernelSet kAvx2Kernels = MakeKernelSet("avx2");

} // namespace vocafade::kernels
