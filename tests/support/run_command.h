// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdio>
#include <string>
#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace vocafade::test {

/// A command that has ended.
struct Finished {
    int status;         ///< its exit status, or -1 when a signal ended it
    std::string output; ///< both of its outputs
};

#if defined(_WIN32)
inline std::FILE* popen(const char* command, const char* mode) { return ::_popen(command, mode); }
inline int ClosePipe(std::FILE* pipe) { return ::_pclose(pipe); }
#else
inline int ClosePipe(std::FILE* pipe) {
    const int status = ::pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
#endif

/// Runs a shell command to its end.
inline Finished RunCommand(const std::string& command) {
    Finished finished{-1, {}};
    std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return finished;
    std::array<char, 4096> bytes;
    for (std::size_t count = 0; (count = std::fread(bytes.data(), 1, bytes.size(), pipe)) > 0;)
        finished.output.append(bytes.data(), count);
    finished.status = ClosePipe(pipe);
    return finished;
}

} // namespace vocafade::test
