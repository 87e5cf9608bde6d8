// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>

namespace vocafade::test {

#if defined(_WIN32)
/// Handles of this process, and threads that it has more than when it was asked first.
std::size_t OpenFiles();
std::size_t Threads();
/// The system opens handles for itself at any time, but not each time: what leaks does so in every one of these.
inline constexpr int kTriesForFiles = 4;
#else
inline std::size_t CountFiles(const char* folder) {
    const std::filesystem::directory_iterator files(folder);
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}
/// Descriptors and threads of this process.
inline std::size_t OpenFiles() { return CountFiles("/proc/self/fd"); }
inline constexpr int kTriesForFiles = 1;
inline std::size_t Threads() { return CountFiles("/proc/self/task"); }
#endif

} // namespace vocafade::test
