// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

namespace vocafade {

/// A recursive lock that lends its owner the priority of the most urgent thread that waits for it, so that a
/// main thread holding it for a few instructions cannot be starved while the audio thread waits.
class CCriticalSection {
  public:
    CCriticalSection();
    ~CCriticalSection();
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    /// [any-thread] Waits until the lock is free; the same thread may take it again.
    void Lock() noexcept;
    /// [any-thread] Gives back one `Lock` of the calling thread.
    void Unlock() noexcept;

  private:
    pthread_mutex_t mutex_;
};

/// Holds a `CCriticalSection` from its construction to the end of its scope.
class CSingleLock {
  public:
    explicit CSingleLock(CCriticalSection& section) noexcept : section_(section) { section_.Lock(); }
    ~CSingleLock() { section_.Unlock(); }
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;

  private:
    CCriticalSection& section_;
};

} // namespace vocafade
