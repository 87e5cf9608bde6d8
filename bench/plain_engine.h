// SPDX-License-Identifier: MIT
#pragma once

#include "bench/engine_interface.h"

#include <memory>

namespace vocafade::bench {

/// The engine written down plainly: the scalar radix-4 transform, the C library's functions, one loop a step.
/// It is the baseline of every ratio.
std::unique_ptr<Engine> MakePlainEngine();

} // namespace vocafade::bench
