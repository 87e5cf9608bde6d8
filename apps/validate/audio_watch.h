// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace vocafade::validate {

/// What the calling thread did, between the construction and `Stop`, that an audio thread should not do: it
/// went to the heap, waited for a lock, slept or called the system for files. The runner stands under the C
/// library's own functions for it, so a shared object that it loads is counted too.
class AudioWatch {
  public:
    struct Counts {
        int allocations = 0;
        int frees = 0;
        int locks = 0;     ///< taken, whether free or not
        int lockWaits = 0; ///< of those, how many were not free
        int sleeps = 0;    ///< asked to sleep, or to wait for something other than a lock
        int fileCalls = 0;
        double longestLockWait = 0.0; ///< seconds
        const char* lastSleep = "";   ///< the function's name
        const char* lastFileCall = "";

        Counts& operator+=(const Counts& other);
    };

    /// False where the sanitizers have taken these functions themselves: then only the heap is counted.
    static bool CountsCalls();

    AudioWatch();
    ~AudioWatch();
    AudioWatch(const AudioWatch&) = delete;
    AudioWatch& operator=(const AudioWatch&) = delete;
    Counts Stop();
};

/// [any-thread] Bytes of memory that have been asked for and not given back, by whatever library, to the
/// byte: what the C library keeps for later (up to 200 kB a thread) is not among them.
std::int64_t LiveBytes();

} // namespace vocafade::validate
