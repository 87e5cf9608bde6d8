// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vocafade::validate {

/// What a process holds; all of it must come back to what it was when a plug-in is gone.
struct ProcessState {
    std::int64_t heapBytes = 0;     ///< in use, of all threads
    std::int64_t residentBytes = 0; ///< of the process
    int threads = 0;
    int descriptors = 0;
    int mappings = 0;
    bool mapsThePlugin = false;
};

/// `plugin`: its absolute path.
ProcessState ReadProcessState(const std::string& plugin);

} // namespace vocafade::validate
