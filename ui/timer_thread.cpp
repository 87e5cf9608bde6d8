// SPDX-License-Identifier: MIT
#include "ui/timer_thread.h"

#include "base/thread_signals.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace vocafade {

TimerThread::TimerThread(unsigned milliseconds) {
    const WithoutSignals quiet;
    try {
        thread_ = std::thread([this, milliseconds] { Run(std::max(1U, milliseconds)); });
    } catch (const std::system_error&) {
        // No thread to be had: a timer that never ticks is better than an editor that does not open.
        stop_ = true;
    }
}

TimerThread::~TimerThread() {
    {
        const std::scoped_lock lock(lock_);
        stop_ = true;
    }
    wake_.notify_one();
    if (thread_.joinable()) thread_.join();
}

void TimerThread::Run(unsigned milliseconds) {
    const std::chrono::milliseconds period(milliseconds);
    auto next = std::chrono::steady_clock::now() + period;
    std::unique_lock lock(lock_);
    while (!wake_.wait_until(lock, next, [this] { return stop_; })) {
        due_.store(true, std::memory_order_release);
        // After the machine has slept there is no backlog to make up for.
        next = std::max(next + period, std::chrono::steady_clock::now());
    }
}

} // namespace vocafade
