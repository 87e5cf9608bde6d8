// SPDX-License-Identifier: MIT
#pragma once

#include "effect/parameters.h"

#include <cmath>
#include <cstdint>

namespace vocafade::lv2 {

inline constexpr char kPluginUri[] = "urn:velmorax:vocafade";
inline constexpr char kUiUri[] = "urn:velmorax:vocafade#ui";

/// The ports, in the order of vocafade.ttl. Those of the parameters come in the parameters' own order.
enum Port : std::uint32_t {
    kPortInLeft,
    kPortInRight,
    kPortOutLeft,
    kPortOutRight,
    kPortFirstParameter,
    kPortLatency = kPortFirstParameter + kParameterCount,
    kPortCount,
};

/// [any-thread] The port of a parameter, and the parameter of a port (-1 where it is none's).
constexpr std::uint32_t PortOf(std::int32_t parameter) {
    return kPortFirstParameter + static_cast<std::uint32_t>(parameter);
}
constexpr std::int32_t ParameterOf(std::uint32_t port) {
    return port >= kPortFirstParameter && port < kPortLatency
               ? static_cast<std::int32_t>(port - kPortFirstParameter)
               : -1;
}

/// [any-thread] What a port says, as the effect's 0 to 1. Any number above 0 enables.
inline float NormalisedOf(std::int32_t parameter, float port) {
    if (parameter == kParameterOnOff) return port > 0.0f ? 1.0f : 0.0f;
    return NormalizeWholeDisplayValue(parameter, port);
}

/// [any-thread] True when the port says the effect's value, in the nearest float or the one above.
inline bool Says(std::int32_t parameter, float port, float normalised) {
    return NormalisedOf(parameter, port) == normalised ||
           NormalizeDisplayValue(parameter, port) == normalised;
}

/// [any-thread] What a port has to say for the effect's value: the whole number if there is one, so that a
/// fader's 0 dB does not become -1e-7.
inline float PortValueOf(std::int32_t parameter, float normalised) {
    const float shown = NormalizeValToInternalVal(parameter, normalised);
    const float whole = std::nearbyint(shown);
    return Says(parameter, whole, normalised) ? whole : shown;
}

} // namespace vocafade::lv2
