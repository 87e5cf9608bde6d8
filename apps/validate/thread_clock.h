// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

namespace vocafade::validate {

/// How fine `ThreadSeconds` is, in seconds: on Windows it goes on by ticks.
#if defined(_WIN32)
inline constexpr double kThreadTick = 0.0157;
#else
inline constexpr double kThreadTick = 0.0;
#endif

/// Processor time of the calling thread in seconds: what others do on the machine does not count.
inline double ThreadSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace vocafade::validate
