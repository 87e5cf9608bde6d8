// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vocafade {

/// Format tag of IEEE floating-point samples.
inline constexpr std::uint16_t kWaveFormatIeeeFloat = 3;

/// The wave-format record that describes a stream of samples: the published layout, 18 bytes, packed.
#pragma pack(push, 1)
struct tWAVEFORMATEX {
    std::uint16_t wFormatTag = 0;
    std::uint16_t nChannels = 0;
    std::uint32_t nSamplesPerSec = 0;  ///< sample rate in Hz
    std::uint32_t nAvgBytesPerSec = 0; ///< sample rate times block align
    std::uint16_t nBlockAlign = 0;     ///< bytes of one sample of all channels
    std::uint16_t wBitsPerSample = 0;
    std::uint16_t cbSize = 0; ///< bytes of extra format data behind this record
};
#pragma pack(pop)
static_assert(sizeof(tWAVEFORMATEX) == 18);

} // namespace vocafade
