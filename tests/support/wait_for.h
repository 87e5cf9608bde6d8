// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vocafade::test {

/// Calls `step` every millisecond or so until `done` says so; false after `limit`, which only a fault uses
/// up: on a quiet machine nothing that is waited for takes a hundredth of it.
inline bool WaitFor(const std::function<void()>& step, const std::function<bool()>& done,
                    std::chrono::milliseconds limit = std::chrono::seconds(60)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    for (;;) {
        step();
        if (done()) return true;
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace vocafade::test
