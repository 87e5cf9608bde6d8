// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/render/render_plan.h"
#include "apps/vocafade/shared/sound_options.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vocafade::command {

/// How every song of a run is rendered.
struct RenderSettings : SoundSettings {
    std::filesystem::path plugin;
    std::string format;       ///< ending of the format to write; empty: that of the output's name
    std::int32_t block = 512; ///< samples a call
    bool doublePrecision = false;
    bool keepLatency = false;
};

/// What came of one song.
struct RenderReport {
    double songSeconds = 0.0;
    double announcedSeconds = 0.0; ///< how long the song would be if its file were whole
    double workSeconds = 0.0;
    std::int64_t clipped = 0;          ///< samples beyond full scale
    std::optional<double> outputLevel; ///< what Output showed, for the plug-in that this command comes with
    bool passedThrough = false;        ///< the effect was off
    bool oneInBoth = false;            ///< left and right were the same throughout
    std::string format;
};

/// Renders one song, telling `progress` how much is done (0 to 1). Memory does not grow with the song. On any
/// exception the output's name is left as it was. Throws `Failure`, `host::HostError` or `Interrupted`.
RenderReport Render(const RenderJob& job, const RenderSettings& settings,
                    const std::function<void(double)>& progress);

} // namespace vocafade::command
