// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vocafade {

class CFile;

/// Name of the bank file in the user's preferences folder or beside the plug-in.
inline constexpr char kDefaultBankName[] = "VocafadeDef.fxb";

/// What a bank file turned out to be.
enum class BankContent {
    unreadable, ///< missing or not to be opened
    notABank,   ///< does not begin with "CcnK"
    foreign,    ///< another plug-in's bank
    otherKind,  ///< a bank, but not of the opaque-chunk kind
    chunk,      ///< this plug-in's bank; its chunk was read
};

/// A bank of the opaque-chunk kind, as far as it could be read.
struct ChunkBank {
    BankContent content = BankContent::unreadable;
    std::vector<std::byte> chunk; ///< as many bytes as the file really holds, at most those asked for
    bool complete = false;        ///< the chunk has the size that the file declares
};

/// [main-thread] Reads a standard bank file of the plug-in `uniqueId`. The declared chunk size is bounded by
/// `maximumChunk` before anything is allocated; a short file gives a shorter chunk.
ChunkBank ReadChunkBank(const std::string& path, std::int32_t uniqueId, std::size_t maximumChunk);

/// What stands in a bank file's byte-size field. The effect's own file leaves it zero; hosts that check it
/// want the number of bytes behind it.
enum class BankSizeField { zero, filledIn };

/// [main-thread] Writes a standard bank file with `programs` programs: a new file beside the old one, flushed
/// to the disk, then renamed, so that a process that dies on the way leaves a whole file. The folder is made
/// when it is missing. False, with `errno` set and the old file untouched, when it cannot be written.
bool WriteChunkBank(const std::string& path, std::int32_t uniqueId, std::int32_t programs,
                    std::span<const std::byte> chunk, BankSizeField sizeField = BankSizeField::zero);

/// [main-thread] Reads four bytes, the most significant first; bytes past the end count as 0.
std::uint32_t getDWordFile(CFile* file);
/// [main-thread] Reads two bytes the same way.
std::uint16_t getWordFile(CFile* file);
/// [main-thread] Writes four bytes, the most significant first.
void putDWordFile(CFile* file, std::uint32_t value);

} // namespace vocafade
