// SPDX-License-Identifier: MIT
#include "apps/validate/process_state.h"

#include "apps/validate/audio_watch.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <pthread.h>
#include <unistd.h>
#include <vector>

namespace vocafade::validate {
namespace {

int EntriesIn(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

/// The keys that are left cannot be asked for, only taken.
int TakenThreadKeys() {
    std::vector<pthread_key_t> free;
    for (pthread_key_t key = 0; ::pthread_key_create(&key, nullptr) == 0;)
        free.push_back(key);
    for (const pthread_key_t key : free)
        ::pthread_key_delete(key);
    return PTHREAD_KEYS_MAX - static_cast<int>(free.size());
}

} // namespace

ProcessState ReadProcessState(const std::string& plugin) {
    ProcessState state;
    state.heapBytes = LiveBytes();
    state.threadKeys = TakenThreadKeys();
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

bool HasGraphicsDriver() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        for (const char* library : {"/libGLX.so", "/libGL.so", "/libEGL.so", "/libvulkan.so"})
            if (line.find(library) != std::string::npos) return true;
    return false;
}

void ReportLeftovers(const std::array<ProcessState, 3>& looks, int rounds, std::string_view what,
                     bool graphicsDriver, Report& report) {
    const auto& [before, middle, after] = looks;
    const std::int64_t resident = (after.residentBytes - before.residentBytes) / 1024;
    report.Measured(
        "{} times {}: heap {:+} bytes, then {:+}, resident {:+} kB, {:+} threads, {:+} thread-local "
        "keys, {:+} descriptors, {:+} mappings",
        rounds, what, middle.heapBytes - before.heapBytes, after.heapBytes - middle.heapBytes, resident,
        after.threads - before.threads, after.threadKeys - before.threadKeys,
        after.descriptors - before.descriptors, after.mappings - before.mappings);
    const auto tell = [&](int number, const char* things) {
        if (number > 0) report.Fault("after {} times {} {} {} are left over", rounds, what, number, things);
    };
    tell(after.threads - before.threads, "threads");
    tell(after.threadKeys - before.threadKeys, "thread-local keys");
    tell(after.descriptors - before.descriptors, "file descriptors");

    std::vector<std::string> memory;
#ifdef VOCAFADE_SANITIZED // of which one notes something for good with every destructor of a library
    constexpr std::int64_t kLeastLeak = 1024;
#else
    constexpr std::int64_t kLeastLeak = 64; // bytes a round
    // The sanitizers map memory for records of their own.
    if (after.mappings > before.mappings + 8)
        memory.push_back(fmt::format("after {} times {} {} mappings of memory are left over", rounds, what,
                                     after.mappings - before.mappings));
    if (resident > 16384)
        memory.push_back(
            fmt::format("after {} times {} the process has grown by {} kB", rounds, what, resident));
#endif
    const std::int64_t lost =
        std::min(middle.heapBytes - before.heapBytes, after.heapBytes - middle.heapBytes) / (rounds / 2);
    if (lost > kLeastLeak)
        memory.push_back(fmt::format("each time {} {} bytes of the heap are lost", what, lost));
    for (const std::string& sentence : memory) {
        if (graphicsDriver) {
            report.Remark("{}, some of it perhaps by the graphics driver", sentence);
        } else {
            report.Fault("{}", sentence);
        }
    }
}

} // namespace vocafade::validate
