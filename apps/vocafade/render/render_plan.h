// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/render/options.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vocafade::command {

/// One song and where it goes.
struct RenderJob {
    std::filesystem::path input;
    std::filesystem::path output;
};

/// Gives every input its output: the named file; or in a folder the input's own name; or beside the input its
/// name with "-vocafade". Makes the folder when it is missing. Throws `UsageError` when an output is an input
/// or stands for two songs, `Failure` when the folder cannot be made.
std::vector<RenderJob> PlanJobs(const RenderOptions& options);

} // namespace vocafade::command
