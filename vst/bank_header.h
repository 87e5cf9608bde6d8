// SPDX-License-Identifier: MIT
#pragma once

#include "base/big_endian.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vocafade {

/// What every bank (.fxb) and program (.fxp) file begins with: seven big-endian fields of 32 bits.
struct BankHeader {
    static constexpr std::size_t kBytes = 28;

    std::uint32_t magic = 0;   ///< `kBankMagic`
    std::uint32_t kind = 0;    ///< one of the four below
    std::int32_t uniqueId = 0; ///< of the effect
    std::uint32_t count = 0;   ///< programs of a bank, parameters of a program
};

inline constexpr std::uint32_t kBankMagic = FourCharacterCode("CcnK");
inline constexpr std::uint32_t kChunkBankKind = FourCharacterCode("FBCh");
inline constexpr std::uint32_t kChunkProgramKind = FourCharacterCode("FPCh");
inline constexpr std::uint32_t kValueBankKind = FourCharacterCode("FxBk");
inline constexpr std::uint32_t kValueProgramKind = FourCharacterCode("FxCk");

/// Bytes without meaning behind a bank's header; in a program file a name stands there instead.
inline constexpr std::size_t kBankReservedBytes = 128;
inline constexpr std::size_t kProgramFileNameBytes = 28;

/// [any-thread] Reads a header. The sizes and versions in it are left out: writers fill them in or do not.
inline BankHeader ReadBankHeader(const std::array<unsigned char, BankHeader::kBytes>& bytes) {
    return {LoadBigEndian32(&bytes[0]), LoadBigEndian32(&bytes[8]),
            static_cast<std::int32_t>(LoadBigEndian32(&bytes[16])), LoadBigEndian32(&bytes[24])};
}

} // namespace vocafade
