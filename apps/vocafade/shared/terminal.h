// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace vocafade::command {

/// Back to the line's beginning, clear it.
inline const std::string kClearLine = "\r\033[K";

/// Whether the standard error is a terminal that can write a line over.
bool HasStatusLine();

/// The columns of that terminal; 80 when it does not tell.
std::size_t StatusWidth();

} // namespace vocafade::command
