// SPDX-License-Identifier: MIT
#include "dsp/kernels/kernel_set.h"
#include "dsp/kernels/lanes_portable.h"
// The lanes come first.
#include "dsp/kernels/kernel_set_body.h"

namespace vocafade::kernels {

const KernelSet kPortableKernels = MakeKernelSet("portable");

} // namespace vocafade::kernels
