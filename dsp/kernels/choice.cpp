// SPDX-License-Identifier: MIT
#include "dsp/kernels/all_levels.h"

#include <cstdlib>
#include <cstring>

namespace vocafade::kernels {
namespace {

/// The levels that this processor can run, the best one last.
struct Available {
    const VectorLevel* level[5] = {&kPortableLevel};
    int count = 1;

    Available() {
#if defined(__x86_64__)
        level[count++] = &kSse2Level; // part of the architecture
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx2")) level[count++] = &kAvx2Level;
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
            level[count++] = &kAvx512Level;
        }
#elif defined(__aarch64__)
        level[count++] = &kNeonLevel;
#endif
    }
};

const Available& Levels() {
    static const Available levels;
    return levels;
}

const VectorLevel& Choose() {
    const Available& levels = Levels();
    // Nothing in this library changes the environment, and this runs while the library is being loaded.
    if (const char* name = std::getenv("VOCAFADE_SIMD")) { // NOLINT(concurrency-mt-unsafe)
        for (int i = 0; i < levels.count; ++i) {
            if (std::strcmp(levels.level[i]->name, name) == 0) return *levels.level[i];
        }
    }
    return *levels.level[levels.count - 1];
}

/// Chooses at load, also where nobody asks before the audio thread does.
[[maybe_unused]] const VectorLevel& chosenAtLoad = ChosenLevel();

} // namespace

const VectorLevel& ChosenLevel() {
    static const VectorLevel& chosen = Choose();
    return chosen;
}

const VectorLevel* AvailableLevel(int index) {
    const Available& levels = Levels();
    return index >= 0 && index < levels.count ? levels.level[index] : nullptr;
}

} // namespace vocafade::kernels
