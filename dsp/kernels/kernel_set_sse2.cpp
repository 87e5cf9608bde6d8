// SPDX-License-Identifier: MIT
#include "dsp/kernels/lanes_sse2.h"
// The lanes come first.
#include "dsp/kernels/phase_vocoder.h"

namespace vocafade::kernels {

const KernelSet kSse2Kernels = MakeKernelSet("sse2");

} // namespace vocafade::kernels
