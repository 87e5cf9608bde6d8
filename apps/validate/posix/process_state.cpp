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

} // namespace

const char* const kHandles = "file descriptors";

const int kHandlesOfSystem = 0;
const Allowance kLostByLoading{};

ProcessState LookAtProcess() {
    ProcessState state;
    state.heapBytes = LiveBytes();
    state.threadKeys = TakenThreadKeys();
    std::int64_t total = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    state.residentBytes = resident * ::sysconf(_SC_PAGESIZE);
    state.threads = EntriesIn("/proc/self/task");
    state.handles = EntriesIn("/proc/self/fd");
    state.mappings = static_cast<int>(Mappings().size());
    return state;
}

bool IsMapped(const std::filesystem::path& file) {
    const std::vector<std::string> mappings = Mappings();
    return std::any_of(mappings.begin(), mappings.end(),
                       [&](const std::string& m) { return m.ends_with(file.native()); });
}

void KeepSystemLibraries() {} // those of X11 stay by themselves

bool HasGraphicsDriver() {
    for (const std::string& mapping : Mappings())
        for (const char* library : {"/libGLX.so", "/libGL.so", "/libEGL.so", "/libvulkan.so"})
            if (mapping.find(library) != std::string::npos) return true;
    return false;
}

} // namespace vocafade::validate
