// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace vocafade::test {

/// Whether `count` numbers agree in every bit: zeros of different signs do not.
inline bool SameBits(const float* a, const float* b, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (std::bit_cast<std::uint32_t>(a[i]) != std::bit_cast<std::uint32_t>(b[i])) return false;
    }
    return true;
}

} // namespace vocafade::test
