// SPDX-License-Identifier: MIT
#include "dsp/kernels/kernel_set.h"
#include "dsp/kernels/lanes_neon.h"
// The lanes come first.
#include "dsp/kernels/kernel_set_body.h"

namespace vocafade::kernels {

const KernelSet kNeonKernels = MakeKernelSet("neon");

} // namespace vocafade::kernels
