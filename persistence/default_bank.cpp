// SPDX-License-Identifier: MIT
#include "persistence/default_bank.h"

#include "base/file.h"
#include "base/file_replacement.h"
#include "vst/bank_header.h"

#include <algorithm>
#include <array>

namespace vocafade {
namespace {

constexpr std::uint32_t kFormatVersion = 1;
constexpr std::uint32_t kPluginVersion = 1;

/// Reads everything up to the chunk's size. What a short file lacks counts as zero.
BankContent ReadHeader(CFile& file, std::int32_t uniqueId) {
    std::array<unsigned char, BankHeader::kBytes> bytes{};
    file.Read(bytes.data(), bytes.size());
    const BankHeader header = ReadBankHeader(bytes);
    if (header.magic != kBankMagic) return BankContent::notABank;
    if (header.kind != kChunkBankKind) return BankContent::otherKind;
    if (header.uniqueId != uniqueId) return BankContent::foreign;
    file.Seek(kBankReservedBytes, CFile::current);
    return BankContent::chunk;
}

} // namespace

std::uint32_t getDWordFile(CFile* file) {
    const std::uint32_t high = getWordFile(file);
    return high << 16 | getWordFile(file);
}

std::uint16_t getWordFile(CFile* file) {
    std::array<std::uint8_t, 2> bytes{};
    for (std::uint8_t& byte : bytes) {
        file->Read(&byte, 1);
    }
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

void putDWordFile(CFile* file, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto byte = static_cast<std::uint8_t>(value >> shift);
        file->Write(&byte, 1);
    }
}

ChunkBank ReadChunkBank(const std::string& path, std::int32_t uniqueId, std::size_t maximumChunk) {
    ChunkBank bank;
    CFile file;
    if (!file.Open(path.c_str(), CFile::modeRead)) return bank;
    bank.content = ReadHeader(file, uniqueId);
    if (bank.content != BankContent::chunk) return bank;
    const std::size_t declared = getDWordFile(&file);
    bank.chunk.resize(std::min(declared, maximumChunk));
    bank.chunk.resize(file.Read(bank.chunk.data(), bank.chunk.size()));
    bank.complete = bank.chunk.size() == declared;
    return bank;
}

bool WriteChunkBank(const std::string& path, std::int32_t uniqueId, std::int32_t programs,
                    std::span<const std::byte> chunk, BankSizeField sizeField) {
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos) MakeFolders(path.substr(0, slash + 1));
    FileReplacement replacement;
    if (!replacement.Begin(path)) return false;
    CFile& file = replacement.file();
    putDWordFile(&file, kBankMagic);
    constexpr std::size_t headerBehindSize = 24 + kBankReservedBytes; // from the bank magic to the chunk
    putDWordFile(&file, sizeField == BankSizeField::filledIn
                            ? static_cast<std::uint32_t>(headerBehindSize + chunk.size())
                            : 0);
    putDWordFile(&file, kChunkBankKind);
    putDWordFile(&file, kFormatVersion);
    putDWordFile(&file, static_cast<std::uint32_t>(uniqueId));
    putDWordFile(&file, kPluginVersion);
    putDWordFile(&file, static_cast<std::uint32_t>(programs));
    constexpr std::array<char, kBankReservedBytes> reserved{};
    file.Write(reserved.data(), reserved.size());
    putDWordFile(&file, static_cast<std::uint32_t>(chunk.size()));
    file.Write(chunk.data(), chunk.size());
    return replacement.Commit();
}

} // namespace vocafade
