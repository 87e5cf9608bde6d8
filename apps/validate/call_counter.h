// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/audio_watch.h"

#include <algorithm>
#include <chrono>

namespace vocafade::validate {

/// Where the functions that stand before the system's tell what their thread calls. Everything is [any-thread].
struct CallCounter {
    bool watching = false;
    AudioWatch::Counts counts;

    void NoteAllocation() {
        if (watching) ++counts.allocations;
    }
    void NoteFree() {
        if (watching) ++counts.frees;
    }
    void NoteSleep(const char* name) {
        if (!watching) return;
        ++counts.sleeps;
        counts.lastSleep = name;
    }
    void NoteFileCall(const char* name) {
        if (!watching) return;
        ++counts.fileCalls;
        counts.lastFileCall = name;
    }
    /// Takes a lock for a thread that is watched. `tryLock` answers whether there is nothing to wait for.
    template <typename TryLock, typename Lock>
    void CountLock(TryLock tryLock, Lock lock) {
        using Clock = std::chrono::steady_clock;
        ++counts.locks;
        if (tryLock()) return;
        ++counts.lockWaits;
        const auto begin = Clock::now();
        lock();
        const double waited = std::chrono::duration<double>(Clock::now() - begin).count();
        counts.longestLockWait = std::max(counts.longestLockWait, waited);
        if (waited > AudioWatch::kLongLockWait) ++counts.longLockWaits;
    }
};

/// Of the calling thread.
extern constinit thread_local CallCounter callCounter;

} // namespace vocafade::validate
