// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace vocafade {

/// A thread that sleeps and, each time it wakes, notes that a tick is due. It touches nothing else.
class TimerThread {
  public:
    /// Ticks every `milliseconds` (at least 1).
    explicit TimerThread(unsigned milliseconds);
    /// Ends the sleep and waits for the thread.
    ~TimerThread();
    TimerThread(const TimerThread&) = delete;
    TimerThread& operator=(const TimerThread&) = delete;

    /// [main-thread] True once for all ticks since the last call.
    bool TakeTick() { return due_.exchange(false, std::memory_order_acq_rel); }

  private:
    void Run(unsigned milliseconds);

    std::atomic<bool> due_{false};
    std::mutex lock_;
    std::condition_variable wake_;
    bool stop_ = false;
    std::thread thread_;
};

} // namespace vocafade
