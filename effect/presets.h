// SPDX-License-Identifier: MIT
#pragma once

#include "effect/parameters.h"

#include <array>
#include <span>

namespace vocafade {

/// Settings to begin with, named after what they are for. Every plug-in format offers them in its own way.
struct Preset {
    const char* symbol;                        ///< letters, digits and underscores
    const char* name;                          ///< at most 23 characters of ASCII
    std::array<float, kParameterCount> values; ///< as displays show them, in parameter order
};

/// [any-thread] All of them, in the order in which hosts list them.
std::span<const Preset> Presets();

} // namespace vocafade
