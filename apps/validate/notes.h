// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vocafade::validate {

/// What a finding is. In the notes it is the first letter of its line.
enum class Kind : char {
    fault = 'F',   ///< the plug-in did something that it must not do
    skipped = 'S', ///< could not be tried here, and why
    remark = 'R',  ///< worth knowing; no fault
    figure = 'M',  ///< something measured
};

/// Memory that the process which carries out a check shares with the one that waits for it: what it says and
/// does is known even when it dies in the middle.
struct Notes {
    std::atomic<std::uint64_t> attempts{0};
    std::array<char, 1016> trying{}; ///< what is being tried at the moment, terminated
    std::atomic<std::size_t> length{0};
    std::array<char, 65536> findings{}; ///< lines of text

    /// [any-thread] Also from signal handlers. A line for which there is no room is dropped.
    void Add(std::string_view line) {
        const std::size_t begin = length.fetch_add(line.size());
        if (begin + line.size() <= findings.size()) std::memcpy(&findings[begin], line.data(), line.size());
    }
    std::string_view text() const { return {findings.data(), std::min(length.load(), findings.size())}; }
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

} // namespace vocafade::validate
