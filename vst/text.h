// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstring>

namespace vocafade {

/// [any-thread] Copies a text into a host's buffer of `size` bytes, cut to fit and terminated. What lies behind the
/// terminator is left alone, since some hosts give less room than the interface names.
inline void CopyText(char* to, const char* text, std::size_t size) {
    const std::size_t length = ::strnlen(text, size - 1);
    std::memcpy(to, text, length);
    to[length] = 0;
}

} // namespace vocafade
