// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

#include <cstdint>

namespace vocafade {

/// The plug-in's number among all plug-ins, and what its banks are known by.
inline constexpr std::int32_t kVocafadeId = VstId('V', 'f', 'd', 'Q');

/// How far the processed sound lies behind, in samples at any rate: 2048 of a frame less the 341 of a step.
inline constexpr std::int32_t kVocafadeLatency = 2048 - 341;

} // namespace vocafade
