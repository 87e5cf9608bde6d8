// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/render/audio_output.h"
#include "apps/vocafade/shared/audio_input.h"
#include "host/effect.h"

#include <cstdint>
#include <functional>

namespace vocafade::command {

/// How a song goes through an effect.
struct StreamSettings {
    std::int32_t block = 512; ///< samples a call
    bool keepLatency = false; ///< the outcome begins with the effect's delay and is as much longer
    std::int64_t latency = 0; ///< samples by which what comes out lies behind what went in
};

/// What was found on the way.
struct StreamReport {
    std::int64_t frames = 0; ///< of the song
    bool oneInBoth = false;  ///< left and right were the same throughout
};

/// Carries a song through a started effect and lines the outcome up with the song. Reading, processing and writing
/// each have a thread, the processing this one; a fixed number of portions goes round between them, so that memory
/// does not grow with the song. Tells `progress`, on this thread, how much is done (0 to 1). `Sample` is float or
/// double, as the effect was configured. Throws what reading, processing or writing throws, and `Interrupted`; both
/// other threads have ended then.
template <typename Sample>
StreamReport CarryThrough(host::Effect& effect, AudioInput& input, AudioOutput& output,
                          const StreamSettings& settings, const std::function<void(double)>& progress);

} // namespace vocafade::command
