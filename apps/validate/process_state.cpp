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

/// One line of /proc/self/maps each.
std::vector<std::string> Mappings() {
    std::vector<std::string> mappings;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        mappings.push_back(line);
    return mappings;
}

/// The system does not tell, so all free keys are taken and given back.
int TakenThreadKeys() {
    std::vector<pthread_key_t> free;
    for (pthread_key_t key = 0; ::pthread_key_create(&key, nullptr) == 0;)
        free.push_back(key);
    for (const pthread_key_t key : free)
        ::pthread_key_delete(key);
    return PTHREAD_KEYS_MAX - static_cast<int>(free.size());
}

ProcessState Look() {
    ProcessState state;
    state.heapBytes = LiveBytes();
    state.threadKeys = TakenThreadKeys();
    std::int64_t total = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    state.residentBytes = resident * ::sysconf(_SC_PAGESIZE);
    state.threads = EntriesIn("/proc/self/task");
    state.descriptors = EntriesIn("/proc/self/fd");
    state.mappings = static_cast<int>(Mappings().size());
    return state;
}

} // namespace

bool IsMapped(const std::string& file) {
    const std::vector<std::string> mappings = Mappings();
    return std::any_of(mappings.begin(), mappings.end(),
                       [&](const std::string& m) { return m.ends_with(file); });
}

bool HasGraphicsDriver() {
    for (const std::string& mapping : Mappings())
        for (const char* library : {"/libGLX.so", "/libGL.so", "/libEGL.so", "/libvulkan.so"})
            if (mapping.find(library) != std::string::npos) return true;
    return false;
}

void ReportLeftovers(int warm, int rounds, std::string_view what, const std::function<bool(int)>& round,
                     Report& report) {
    bool graphicsDriver = false;
    const auto repeat = [&](int from, int to) {
        for (int i = from; i < to; ++i)
            graphicsDriver = round(i) || graphicsDriver;
        return Look();
    };
    const ProcessState before = repeat(0, warm);
    const ProcessState middle = repeat(warm, warm + rounds / 2);
    const ProcessState after = repeat(warm + rounds / 2, warm + rounds);
    const std::int64_t resident = (after.residentBytes - before.residentBytes) / 1024;
#ifndef VOCAFADE_SANITIZED // which count the heap in the validator's place
    report.Measured("{} times {}: heap {:+} bytes, then {:+}", rounds, what,
                    middle.heapBytes - before.heapBytes, after.heapBytes - middle.heapBytes);
#endif
    report.Measured("{} times {}: resident {:+} kB, {:+} threads, {:+} thread-local keys, {:+} descriptors, "
                    "{:+} mappings",
                    rounds, what, resident, after.threads - before.threads,
                    after.threadKeys - before.threadKeys, after.descriptors - before.descriptors,
                    after.mappings - before.mappings);
    const auto tell = [&](int number, const char* things) {
        if (number > 0) report.Fault("after {} times {} {} {} are left over", rounds, what, number, things);
    };
    tell(after.threads - before.threads, "threads");
    tell(after.threadKeys - before.threadKeys, "thread-local keys");
    tell(after.descriptors - before.descriptors, "file descriptors");

    std::vector<std::string> memory;
#ifndef VOCAFADE_SANITIZED // the sanitizers map memory for records of their own, and find leaks themselves
    if (after.mappings > before.mappings + 8)
        memory.push_back(fmt::format("after {} times {} {} mappings of memory are left over", rounds, what,
                                     after.mappings - before.mappings));
    if (resident > 16384)
        memory.push_back(
            fmt::format("after {} times {} the process has grown by {} kB", rounds, what, resident));
#endif
    constexpr std::int64_t kLeastLeak = 64; // bytes a round
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
