// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/report.h"

#include <array>
#include <cstdint>
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
    bool mapsThePlugin = false;
};

/// `plugin`: its absolute path.
ProcessState ReadProcessState(const std::string& plugin);

/// True while the system's library for accelerated drawing is loaded. What it keeps and loses for an editor
/// that draws through it cannot be told apart from what the editor does.
bool HasGraphicsDriver();

/// Reports what `rounds` of the same left behind each time. `looks`: at the process before them, half way and
/// after them, because caches fill up, but leaks go on; `what`: done in a round, as "it is loaded". With a
/// graphics driver, memory that was lost is a remark only.
void ReportLeftovers(const std::array<ProcessState, 3>& looks, int rounds, std::string_view what,
                     bool graphicsDriver, Report& report);

} // namespace vocafade::validate
