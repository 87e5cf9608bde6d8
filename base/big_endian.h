// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vocafade {

/// [any-thread] The 16-bit number whose two bytes stand at `bytes`, most significant first.
inline std::uint16_t LoadBigEndian16(const unsigned char* bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

/// [any-thread] The 32-bit number whose four bytes stand at `bytes`, most significant first.
inline std::uint32_t LoadBigEndian32(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           std::uint32_t{bytes[3]};
}

/// [any-thread] Puts `value` at `bytes`, most significant byte first.
inline void StoreBigEndian16(unsigned char* bytes, std::uint16_t value) {
    bytes[0] = static_cast<unsigned char>(value >> 8);
    bytes[1] = static_cast<unsigned char>(value);
}

/// [any-thread] Puts `value` at `bytes`, most significant byte first.
inline void StoreBigEndian32(unsigned char* bytes, std::uint32_t value) {
    StoreBigEndian16(bytes, static_cast<std::uint16_t>(value >> 16));
    StoreBigEndian16(bytes + 2, static_cast<std::uint16_t>(value));
}

/// [any-thread] The number of a four-character code, its first character most significant.
constexpr std::uint32_t FourCharacterCode(const char (&text)[5]) {
    return std::uint32_t{static_cast<unsigned char>(text[0])} << 24 |
           std::uint32_t{static_cast<unsigned char>(text[1])} << 16 |
           std::uint32_t{static_cast<unsigned char>(text[2])} << 8 |
           std::uint32_t{static_cast<unsigned char>(text[3])};
}

} // namespace vocafade
