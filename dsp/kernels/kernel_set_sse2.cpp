// SPDX-License-Identifier: MIT
#include "dsp/kernels/kernel_set.h"
#include "dsp/kernels/lanes_sse2.h"
// The lanes come first.
#include "dsp/kernels/kernel_set_body.h"

namespace vocafade::kernels {

const KernelSet kSse2Kernels = MakeKernelSet("sse2");

} // namespace vocafade::kernels
