// SPDX-License-Identifier: MIT
#include "persistence/default_bank.h"

#include "base/file.h"
#include "base/file_replacement.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vocafade {
namespace {

constexpr char kChunkMagic[] = "CcnK";
constexpr char kOpaqueBankMagic[] = "FBCh";
constexpr std::uint32_t kFormatVersion = 1;
constexpr std::uint32_t kPluginVersion = 1;
constexpr std::int64_t kReservedBytes = 128;

bool ReadMagic(CFile& file, const char* magic) {
    std::array<char, 4> bytes{};
    return file.Read(bytes.data(), bytes.size()) == bytes.size() &&
           std::memcmp(bytes.data(), magic, bytes.size()) == 0;
}

/// Everything up to the chunk; the position is then at its size.
BankContent ReadHeader(CFile& file, std::int32_t uniqueId) {
    if (!ReadMagic(file, kChunkMagic)) return BankContent::notABank;
    getDWordFile(&file); // byte size, which writers leave zero
    if (!ReadMagic(file, kOpaqueBankMagic)) return BankContent::otherKind;
    getDWordFile(&file); // format version
    if (getDWordFile(&file) != static_cast<std::uint32_t>(uniqueId)) return BankContent::foreign;
    getDWordFile(&file); // plug-in version
    getDWordFile(&file); // number of programs
    file.Seek(kReservedBytes, CFile::current);
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

BankFile ReadBankFile(const std::string& path, std::int32_t uniqueId, std::size_t maximumChunk) {
    BankFile bank;
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

bool WriteBankFile(const std::string& path, std::int32_t uniqueId, std::int32_t programs,
                   std::span<const std::byte> chunk, BankSizeField sizeField) {
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos) MakeFolders(path.substr(0, slash + 1));
    FileReplacement replacement;
    if (!replacement.Begin(path)) return false;
    CFile& file = replacement.file();
    file.Write(kChunkMagic, 4);
    constexpr std::size_t headerBehindSize = 24 + kReservedBytes; // from the bank magic to the chunk
    putDWordFile(&file, sizeField == BankSizeField::filledIn
                            ? static_cast<std::uint32_t>(headerBehindSize + chunk.size())
                            : 0);
    file.Write(kOpaqueBankMagic, 4);
    putDWordFile(&file, kFormatVersion);
    putDWordFile(&file, static_cast<std::uint32_t>(uniqueId));
    putDWordFile(&file, kPluginVersion);
    putDWordFile(&file, static_cast<std::uint32_t>(programs));
    constexpr std::array<char, kReservedBytes> reserved{};
    file.Write(reserved.data(), reserved.size());
    putDWordFile(&file, static_cast<std::uint32_t>(chunk.size()));
    file.Write(chunk.data(), chunk.size());
    return replacement.Commit();
}

} // namespace vocafade
