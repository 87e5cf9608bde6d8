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
    std::string obstacle; ///< why it cannot be done, if so
};

/// A file that goes along as it is.
struct CopyJob {
    std::filesystem::path input;
    std::filesystem::path output;
};

/// What a run is to do.
struct RenderPlan {
    std::vector<RenderJob> songs;
    std::vector<CopyJob> copies;
    std::vector<std::string> leftOut; ///< names of what is neither, for the user
    std::vector<std::string> unread;  ///< folders that could not be looked into, and why
};

/// Gives every input its output: the named file; or in a folder the input's own name; or beside the input its
/// name with "-vocafade". Of folders, when they are asked for, everything that is in them, with the folders that
/// it lies in. Makes the output folder when it is missing. Throws `UsageError` when an output is an input or stands
/// for two songs (in a library that is the song's obstacle), `Failure` when the folder cannot be made.
RenderPlan PlanRun(const RenderOptions& options);

} // namespace vocafade::command
