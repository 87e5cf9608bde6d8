// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace vocafade::validate {

/// How the command and the runner that carries out one check talk: findings are lines of text in a pipe, a
/// letter, a space and the sentence; what is being tried stands in memory that both see, so that it is known
/// even when the runner dies in the middle.
inline constexpr int kFindingsDescriptor = 3;
inline constexpr int kProgressDescriptor = 4;

inline constexpr char kFaultLetter = 'F';   ///< the plug-in did something that it must not do
inline constexpr char kRemarkLetter = 'R';  ///< worth knowing; no fault
inline constexpr char kSkippedLetter = 'S'; ///< could not be tried here, and why
inline constexpr char kMeasureLetter = 'M'; ///< a figure

/// The memory that both see.
struct Progress {
    std::atomic<std::uint64_t> attempts;
    std::array<char, 1016> trying; ///< what the runner does at the moment, terminated
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

/// How the runner ends when it could carry out its check, whatever it found.
inline constexpr int kRunnerDone = 0;
/// The plug-in cannot be loaded at all; the finding says why.
inline constexpr int kRunnerUnusable = 3;

} // namespace vocafade::validate
