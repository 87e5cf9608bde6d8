// SPDX-License-Identifier: MIT
#include "dsp/kernels/lanes_neon.h"
// The lanes come first.
#include "dsp/kernels/phase_vocoder.h"

namespace vocafade::kernels {

const KernelSet kNeonKernels = MakeKernelSet("neon");

} // namespace vocafade::kernels
