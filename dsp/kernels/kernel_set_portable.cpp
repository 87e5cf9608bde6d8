// SPDX-License-Identifier: MIT
#include "dsp/kernels/lanes_portable.h"
// The lanes come first.
#include "dsp/kernels/phase_vocoder.h"

namespace vocafade::kernels {

const KernelSet kPortableKernels = MakeKernelSet("portable");

} // namespace vocafade::kernels
