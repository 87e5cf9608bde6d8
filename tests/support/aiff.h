// SPDX-License-Identifier: MIT
#pragma once

#include "base/big_endian.h"

#include <cstdint>
#include <string>

namespace vocafade::test {

inline std::string Big32(std::uint32_t value) {
    std::string bytes(4, '\0');
    StoreBigEndian32(reinterpret_cast<unsigned char*>(bytes.data()), value);
    return bytes;
}

/// An AIFF chunk, without the pad byte that an odd size asks for.
inline std::string Chunk(const std::string& id, const std::string& data) {
    return id + Big32(static_cast<std::uint32_t>(data.size())) + data;
}

inline std::string Form(const std::string& chunks) {
    return "FORM" + Big32(static_cast<std::uint32_t>(chunks.size() + 4)) + "AIFF" + chunks;
}

/// The format chunk of a sound at 44.1 kHz.
inline std::string Common(std::uint32_t frames, std::uint16_t bits = 16, char channels = 2) {
    return Chunk("COMM", std::string{'\0', channels} + Big32(frames) + Big32(bits).substr(2) +
                             std::string("\x40\x0E\xAC\x44\0\0\0\0\0\0", 10));
}

inline std::string Sound(const std::string& samples) { return Chunk("SSND", std::string(8, '\0') + samples); }

} // namespace vocafade::test
