// SPDX-License-Identifier: MIT
#pragma once

// The kernels of every instruction set, written once. Each kernel_set_*.cpp includes its lanes first and then
// this file; it is compiled for its own processors, so nothing here may leave a symbol that another file
// could pick up: all is in unnamed namespaces, and no template or inline function of the standard library is
// used.

#include "dsp/kernels/analysis.h"
#include "dsp/kernels/forward_transform.h"
#include "dsp/kernels/inverse_transform.h"
#include "dsp/kernels/overlap_add.h"
#include "dsp/kernels/peak.h"
#include "dsp/kernels/removal.h"
#include "dsp/kernels/resynthesis.h"

namespace vocafade::kernels {
namespace {

constexpr KernelSet MakeKernelSet(const char* name) {
    return {name, Forward, Analyse, Remove, Resynthesise, Inverse, OverlapAdd, Peak};
}

} // namespace
} // namespace vocafade::kernels
