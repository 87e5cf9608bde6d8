// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vocafade {

/// Runs the program `arguments[0]` (a path) with its arguments and waits for its end; it shares this
/// program's terminal. Throws std::runtime_error when it cannot be started or does not end with success.
void RunProgram(const std::vector<std::string>& arguments);

} // namespace vocafade
