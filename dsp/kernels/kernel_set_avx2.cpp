// SPDX-License-Identifier: MIT
#include "dsp/kernels/kernel_set.h"
#include "dsp/kernels/lanes_avx2.h"
// The lanes come first.
#include "dsp/kernels/kernel_set_body.h"

namespace vocafade::kernels {

const KernelSet kAvx2Kernels = MakeKernelSet("avx2");

} // namespace vocafade::kernels
