// SPDX-License-Identifier: MIT
#include "dsp/kernels/kernel_set.h"

#include <cstdlib>
#include <cstring>

namespace vocafade::kernels {
namespace {

/// What this processor can run, the best last.
struct Available {
    const KernelSet* set[5] = {&kPortableKernels};
    int count = 1;

    Available() {
#if defined(__x86_64__)
        set[count++] = &kSse2Kernels; // part of the architecture
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx2")) set[count++] = &kAvx2Kernels;
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
            set[count++] = &kAvx512Kernels;
        }
#elif defined(__aarch64__)
        set[count++] = &kNeonKernels;
#endif
    }
};

const Available& Sets() {
    static const Available sets;
    return sets;
}

const KernelSet& Choose() {
    const Available& sets = Sets();
    // Nothing in this library changes the environment, and this runs while the library is being loaded.
    if (const char* name = std::getenv("VOCAFADE_SIMD")) { // NOLINT(concurrency-mt-unsafe)
        for (int i = 0; i < sets.count; ++i) {
            if (std::strcmp(sets.set[i]->instructionSet, name) == 0) return *sets.set[i];
        }
    }
    return *sets.set[sets.count - 1];
}

/// Chooses at load, also where nobody asks before the audio thread does.
[[maybe_unused]] const KernelSet& chosenAtLoad = ChosenKernels();

} // namespace

const KernelSet& ChosenKernels() {
    static const KernelSet& chosen = Choose();
    return chosen;
}

const KernelSet* AvailableKernels(int index) {
    const Available& sets = Sets();
    return index >= 0 && index < sets.count ? sets.set[index] : nullptr;
}

} // namespace vocafade::kernels
