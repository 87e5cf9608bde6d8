// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace vocafade::command {

// How long what plays until the user ends it waits for what.

/// Between two looks at keys, window and server: 30 a second.
inline constexpr int kTickMilliseconds = 33;
/// For a server to answer.
inline constexpr std::chrono::seconds kAnswerTime{10};
/// For a server or a device that has gone away to come back, and between two tries.
inline constexpr std::chrono::seconds kReturnTime{30};
inline constexpr std::chrono::seconds kBetweenTries{1};

} // namespace vocafade::command
