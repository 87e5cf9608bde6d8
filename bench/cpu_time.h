// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

namespace vocafade::bench {

/// Processor time of the calling thread in seconds: other programs on a shared machine do not count.
inline double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

} // namespace vocafade::bench
