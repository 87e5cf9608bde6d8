// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace vocafade::test {

/// A command that has ended.
struct Finished {
    int status;         ///< its exit status, or -1 when a signal ended it
    std::string output; ///< both of its outputs
};

/// Runs a shell command to its end.
inline Finished RunCommand(const std::string& command) {
    Finished finished{-1, {}};
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return finished;
    std::array<char, 4096> bytes;
    for (std::size_t count = 0; (count = std::fread(bytes.data(), 1, bytes.size(), pipe)) > 0;)
        finished.output.append(bytes.data(), count);
    const int status = ::pclose(pipe);
    if (WIFEXITED(status)) finished.status = WEXITSTATUS(status);
    return finished;
}

} // namespace vocafade::test
