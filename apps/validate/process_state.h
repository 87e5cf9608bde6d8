// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/report.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace vocafade::validate {

/// What a process holds; all of it must come back to what it was when a plug-in is gone.
struct ProcessState {
    std::int64_t heapBytes = 0;     ///< asked for and not given back, by all threads
    std::int64_t residentBytes = 0; ///< of the process
    int threads = 0;
    int handles = 0; ///< of files and whatever else the system gives numbers for
    int mappings = 0;
    int threadKeys = 0; ///< taken, of the storage that each thread has of its own
};

/// What the system calls its handles.
extern const char* const kHandles;
/// How many handles the system may open for itself in each half of the rounds; 0 where it opens none.
extern const int kHandlesOfSystem;

/// What may be left over of each round.
struct Allowance {
    std::int64_t heapBytes = 0;
    int handles = 0;
};
/// What a plug-in may lose each time it is loaded, because the libraries of its compiler that are linked in lose it:
/// MinGW's threads keep locks and the record of the thread that loads.
extern const Allowance kLostByLoading;

ProcessState LookAtProcess();

/// True while this process maps the file, an absolute path.
bool IsMapped(const std::filesystem::path& file);

/// What the system itself has loaded for a plug-in stays from now on: hosts use most of it, and it loses memory
/// whenever it goes. Nothing where libraries of the system do not come and go.
void KeepSystemLibraries();

/// True while a graphics driver (OpenGL, Vulkan) is loaded. What it loses of an editor's memory cannot be
/// told apart from what the editor itself loses.
bool HasGraphicsDriver();

/// Does `round` over and over, with the number of the round, and reports what the process holds more than
/// before. It looks after `warm` rounds that fill caches, after half of `rounds` and at the end, because
/// caches fill up, but leaks go on. `what` is done in a round, as "it is loaded". Where a round answers that
/// a graphics driver was at work, lost memory is only a remark.
void ReportLeftovers(int warm, int rounds, std::string_view what, const std::function<bool(int)>& round,
                     Report& report, Allowance allowed = {});

} // namespace vocafade::validate
