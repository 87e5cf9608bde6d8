// SPDX-License-Identifier: MIT
#include "apps/validate/audio_watch.h"

#include "apps/validate/call_counter.h"

#include <algorithm>

namespace vocafade::validate {

constinit thread_local CallCounter callCounter;

AudioWatch::AudioWatch() {
    callCounter.counts = {};
    callCounter.watching = true;
}

AudioWatch::~AudioWatch() { callCounter.watching = false; }

AudioWatch::Counts AudioWatch::Stop() {
    callCounter.watching = false;
    return callCounter.counts;
}

AudioWatch::Counts& AudioWatch::Counts::operator+=(const Counts& other) {
    allocations += other.allocations;
    frees += other.frees;
    locks += other.locks;
    lockWaits += other.lockWaits;
    longLockWaits += other.longLockWaits;
    sleeps += other.sleeps;
    fileCalls += other.fileCalls;
    longestLockWait = std::max(longestLockWait, other.longestLockWait);
    if (other.sleeps > 0) lastSleep = other.lastSleep;
    if (other.fileCalls > 0) lastFileCall = other.lastFileCall;
    return *this;
}

} // namespace vocafade::validate
