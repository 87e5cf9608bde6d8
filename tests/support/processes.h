// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vocafade::test {

/// Runs `work(0)` to `work(count - 1)`, each in a process of its own, at once and to their ends. All must answer true.
template <typename Work>
void InProcesses(int count, Work work) {
    for (int process = 0; process < count; ++process)
        if (::fork() == 0) ::_exit(work(process) ? 0 : 1);
    for (int process = 0; process < count; ++process) {
        int status = 1;
        ::wait(&status);
        EXPECT_EQ(status, 0);
    }
}

} // namespace vocafade::test
