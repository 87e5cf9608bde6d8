// SPDX-License-Identifier: MIT
#include "apps/validate/process_state.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <unistd.h>

namespace vocafade::validate {
namespace {

int EntriesIn(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

} // namespace

ProcessState ReadProcessState(const std::string& plugin) {
    ProcessState state;
    const struct mallinfo2 heap = ::mallinfo2();
    state.heapBytes = static_cast<std::int64_t>(heap.uordblks + heap.hblkhd);
    std::int64_t total = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    state.residentBytes = resident * ::sysconf(_SC_PAGESIZE);
    state.threads = EntriesIn("/proc/self/task");
    state.descriptors = EntriesIn("/proc/self/fd");
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        ++state.mappings;
        if (line.ends_with(plugin)) state.mapsThePlugin = true;
    }
    return state;
}

} // namespace vocafade::validate
