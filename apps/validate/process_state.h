// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/report.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vocafade::validate {

/// What a process holds; all of it must come back to what it was when a plug-in is gone.
struct ProcessState {
    std::int64_t heapBytes = 0;     ///< asked for and not given back, by all threads
    std::int64_t residentBytes = 0; ///< of the process
    int threads = 0;
    int descriptors = 0;
    int mappings = 0;
    int threadKeys = 0; ///< taken, of those that `pthread_key_create` gives out
};

/// True while this process maps the file, an absolute path.
bool IsMapped(const std::string& file);

/// True while a graphics driver (OpenGL, Vulkan) is loaded. What it loses of an editor's memory cannot be
/// told apart from what the editor itself loses.
bool HasGraphicsDriver();

/// Does `round` over and over, with the number of the round, and reports what the process holds more than
/// before. It looks after `warm` rounds that fill caches, after half of `rounds` and at the end, because
/// caches fill up, but leaks go on. `what` is done in a round, as "it is loaded". Where a round answers that
/// a graphics driver was at work, lost memory is only a remark.
void ReportLeftovers(int warm, int rounds, std::string_view what, const std::function<bool(int)>& round,
                     Report& report);

} // namespace vocafade::validate
