// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

#include <limits>

namespace vocafade {

/// [any-thread] A host's pointer-sized number as the 32 bits that most operations take; -1 where it does not fit.
inline std::int32_t ToInt32(VstIntPtr value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return value >= Limits::min() && value <= Limits::max() ? static_cast<std::int32_t>(value) : -1;
}

} // namespace vocafade
