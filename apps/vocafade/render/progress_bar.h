// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace vocafade::command {

/// The line that stands on a terminal while songs are rendered, at most `width` columns: a bar, how much is
/// done, the time left once it can be told, and how many of several songs are finished.
std::string ProgressLine(double done, double secondsSoFar, std::size_t songsDone, std::size_t songs,
                         std::size_t width);

} // namespace vocafade::command
