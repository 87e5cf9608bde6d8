// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <thread>

namespace vocafade::test {

/// Waits, before the process ends, for threads that are just ending: the text library's do so a moment after
/// the last editor has closed, and the leak sanitizer, which looks at all threads at the end, stumbles over
/// one whose memory goes meanwhile.
class EndedThreads : public ::testing::Environment {
  public:
    void TearDown() override {
        const auto threads = [] {
            const std::filesystem::directory_iterator tasks("/proc/self/task");
            return std::distance(begin(tasks), end(tasks));
        };
        for (int i = 0; i < 200 && threads() > 1; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
};

#ifdef __SANITIZE_ADDRESS__
inline ::testing::Environment* const kEndedThreads = ::testing::AddGlobalTestEnvironment(new EndedThreads);
#endif

} // namespace vocafade::test
