// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/shared/sound_options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vocafade::command {

inline constexpr std::int32_t kMostBlock = 65536; ///< samples
inline constexpr int kMostJobs = 256;

/// The command line of a rendering, as typed but checked for form and, where the command knows it, for range.
struct RenderOptions : SoundOptions {
    std::vector<std::string> inputs;
    std::string output; ///< a file or a folder; empty: beside the input
    std::string format; ///< ending of the files to write; empty: decided by the output or the input
    bool keepExisting = false;
    bool recursive = false;  ///< inputs are folders, and the output is one
    bool copyOthers = false; ///< what is no song goes along
    std::string log;         ///< file that gets a line for each song; empty: none

    std::int32_t block = 512; ///< samples
    bool doublePrecision = false;
    bool keepLatency = false;
    int jobs = 0; ///< 0: as many as there are processors
    bool quiet = false;
    bool listPrograms = false;
    bool listParameters = false;
};

/// What `ParseRenderOptions` found.
struct ParsedOptions {
    RenderOptions options;
    std::optional<std::string> answer; ///< text to print instead of rendering: the help or the version
};

/// Understands the command line. Throws `UsageError`.
ParsedOptions ParseRenderOptions(int argumentCount, char** arguments);

} // namespace vocafade::command
