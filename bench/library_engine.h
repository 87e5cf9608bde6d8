// SPDX-License-Identifier: MIT
#pragma once

#include "bench/engine_interface.h"

#include <memory>

namespace vocafade::bench {

/// The same algorithm put together from the best libraries: FFTW in single precision with patient plans (real
/// to complex and back), SLEEF's AVX2 double-precision atan2 and sincos, AVX2 by hand for the rest. Null on a
/// machine without AVX2 and FMA.
std::unique_ptr<Engine> MakeLibraryEngine();

} // namespace vocafade::bench
