// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <limits>

namespace vocafade {

/// [any-thread] The decimal number at the start of `text`: leading blanks and a sign are allowed, reading
/// stops at the first other character, no digits give 0. A number that does not fit gives the nearest that
/// does.
inline int ParseDecimal(const char* text) {
    const long value = std::strtol(text, nullptr, 10);
    if (value > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    if (value < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

} // namespace vocafade
