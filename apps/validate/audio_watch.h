// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vocafade::host {
class SharedObject;
}

namespace vocafade::validate {

/// What the calling thread did, between the construction and `Stop`, that an audio thread should not do: it
/// used the heap, waited for a lock, slept or called the system for files. On Linux the program defines these
/// functions in front of the C library's, so what a shared object calls is counted too. The sanitizers do the
/// same, so with them everything stays 0. On Windows it puts its own functions into the table of what the plug-in
/// imports, so the calls of that one DLL are counted, not those of others that it brings along.
class AudioWatch {
  public:
    static constexpr double kLongLockWait = 0.05; ///< seconds
    struct Counts {
        int allocations = 0;
        int frees = 0;
        int locks = 0;         ///< taken, whether free or not
        int lockWaits = 0;     ///< of those, how many were not free
        int longLockWaits = 0; ///< of those, how many took more than `kLongLockWait`
        int sleeps = 0;        ///< asked to sleep, or to wait for something other than a lock
        int fileCalls = 0;
        double longestLockWait = 0.0; ///< seconds
        const char* lastSleep = "";   ///< the function's name
        const char* lastFileCall = "";

        Counts& operator+=(const Counts& other);
    };

    /// [main-thread] From now on the calls of this plug-in are counted, where that has to be arranged for each.
    static void Prepare(const host::SharedObject& plugin);

    AudioWatch();
    ~AudioWatch();
    AudioWatch(const AudioWatch&) = delete;
    AudioWatch& operator=(const AudioWatch&) = delete;
    Counts Stop();
};

/// [any-thread] Bytes of memory that have been asked for and not given back, by whatever library, to the
/// byte: what the C library keeps for later (up to 200 kB a thread) is not among them. 0 under
/// the sanitizers.
std::int64_t LiveBytes();

} // namespace vocafade::validate
