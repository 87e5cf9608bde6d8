// SPDX-License-Identifier: MIT
#pragma once

#if !defined(_WIN32)
#include <pthread.h>
#endif

namespace vocafade {

/// A recursive lock that, where the system can, lends its owner the priority of the most urgent thread that waits
/// for it, so that a main thread holding it for a few instructions cannot be starved while the audio thread waits.
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
#if defined(_WIN32)
    void* section_[5]; ///< the system's own, whose header brings thousands of names
#else
    pthread_mutex_t mutex_;
#endif
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
