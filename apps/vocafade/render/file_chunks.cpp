// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/file_chunks.h"

#include "base/big_endian.h"
#include "persistence/aiff_layout.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <initializer_list>
#include <string_view>

namespace vocafade::command {
namespace {

constexpr std::uint32_t kRiff = FourCharacterCode("RIFF");
constexpr std::uint32_t kRf64 = FourCharacterCode("RF64");
constexpr std::uint32_t kWave = FourCharacterCode("WAVE");
constexpr std::uint32_t kSizes64 = FourCharacterCode("ds64");
constexpr std::uint32_t kData = FourCharacterCode("data");
constexpr std::int64_t kIn64 = 0xFFFFFFFF; ///< a size that stands in the "ds64" chunk
constexpr std::int64_t kLargestSize = 0xFFFFFFFF;
constexpr int kMostChunks = 10000;

/// What recorders that write into a pipe put where the size will never be known.
bool IsPlaceholder(std::int64_t size) {
    return size == 0 || (size >= 0x7F000000 && size <= 0x80000000) ||
           (size >= 0xFFFFF000 && size <= kLargestSize);
}

double Share(std::int64_t there, std::int64_t announced) {
    if (IsPlaceholder(announced) || there >= announced || there <= 0) return 1.0;
    return static_cast<double>(there) / static_cast<double>(announced);
}

bool IsAmong(std::uint32_t id, std::initializer_list<std::string_view> known) {
    std::array<unsigned char, 4> text{};
    StoreBigEndian32(text.data(), id);
    return std::find(known.begin(), known.end(),
                     std::string_view(reinterpret_cast<const char*>(text.data()), 4)) != known.end();
}

/// A number as RIFF files have it: the lowest byte first.
std::int64_t LittleEndian(const unsigned char* bytes, int count) {
    std::uint64_t number = 0;
    for (int i = count; i-- > 0;)
        number = number << 8 | bytes[i];
    return static_cast<std::int64_t>(number);
}

void ReadWav(CFile& file, FileChunks& found) {
    const std::int64_t length = file.GetLength();
    std::int64_t soundSize64 = -1;
    std::array<unsigned char, 16> bytes{};
    std::int64_t position = 12;
    for (int count = 0; count < kMostChunks && ReadAt(file, position, bytes.data(), 8); ++count) {
        const std::uint32_t id = LoadBigEndian32(bytes.data());
        std::int64_t size = LittleEndian(bytes.data() + 4, 4);
        const std::int64_t start = position + 8;
        if (id == kSizes64 && ReadAt(file, start, bytes.data(), 16))
            soundSize64 = LittleEndian(bytes.data() + 8, 8);
        if (id == kData) {
            if (size == kIn64 && soundSize64 >= 0) size = soundSize64;
            found.soundShare = Share(length - start, size);
        }
        if (size < 0 || size > length - start) return; // the file ends within it
        if (IsAmong(id, {"iXML", "axml", "_PMX", "id3 ", "ID3 "})) found.carried.push_back({id, start, size});
        position = start + size + size % 2;
    }
}

void ReadAiff(const AiffLayout& layout, FileChunks& found) {
    for (const AiffChunk& chunk : layout.chunks) {
        if (chunk.size != chunk.declaredSize) continue;
        if (IsAmong(chunk.id, {"NAME", "AUTH", "(c) ", "ANNO", "COMT", "APPL", "ID3 ", "id3 ", "iXML", "axml",
                               "_PMX", "WVL4"}))
            found.carried.push_back({chunk.id, chunk.dataPosition(), chunk.size});
    }
    // Our own family's chunk has no padding behind it, so it is the last.
    std::stable_partition(found.carried.begin(), found.carried.end(),
                          [](const CarriedChunk& chunk) { return chunk.id != kUserChunk; });
    if (layout.hasSound) found.soundShare = Share(layout.sound.size - 8, layout.sound.declaredSize - 8);
}

bool CopyBytes(CFile& target, CFile& from, const CarriedChunk& chunk) {
    std::array<char, 1 << 16> block{};
    for (std::int64_t done = 0; done < chunk.size;) {
        const auto count =
            static_cast<std::size_t>(std::min(chunk.size - done, static_cast<std::int64_t>(block.size())));
        if (!ReadAt(from, chunk.position + done, block.data(), count) || !target.Write(block.data(), count))
            return false;
        done += static_cast<std::int64_t>(count);
    }
    return true;
}

bool CopyChunk(CFile& target, CFile& from, const CarriedChunk& chunk, bool bigEndian) {
    std::array<unsigned char, 8> header{};
    StoreBigEndian32(header.data(), chunk.id);
    StoreBigEndian32(header.data() + 4, static_cast<std::uint32_t>(chunk.size));
    if (!bigEndian) std::reverse(header.begin() + 4, header.end());
    if (!target.Seek(0, CFile::end)) return false;
    const bool odd = target.GetLength() % 2 != 0;
    return (!odd || target.Write("", 1)) && target.Write(header.data(), header.size()) &&
           CopyBytes(target, from, chunk);
}

/// Writes how long the file is into its header.
bool WriteFormSize(CFile& target) {
    std::array<unsigned char, 4> magic{};
    if (!ReadAt(target, 0, magic.data(), magic.size())) return false;
    const std::uint32_t form = LoadBigEndian32(magic.data());
    const std::int64_t size = target.GetLength() - 8;
    std::array<unsigned char, 8> bytes{};
    StoreBigEndian32(bytes.data(), static_cast<std::uint32_t>(size >> 32));
    StoreBigEndian32(bytes.data() + 4, static_cast<std::uint32_t>(size));
    if (form == kFormChunk) return target.Seek(4, CFile::begin) && target.Write(bytes.data() + 4, 4);
    std::reverse(bytes.begin(), bytes.end());
    if (form == kRf64) return target.Seek(20, CFile::begin) && target.Write(bytes.data(), 8);
    return form == kRiff && target.Seek(4, CFile::begin) && target.Write(bytes.data(), 4);
}

/// Whether the file may become so much longer: all forms but RF64 end at 4 GB.
bool HasRoom(CFile& target, const FileChunks& found) {
    std::int64_t length = target.GetLength() + 1;
    for (const CarriedChunk& chunk : found.carried)
        length += 8 + chunk.size + 1;
    std::array<unsigned char, 4> magic{};
    return length <= kLargestSize ||
           (ReadAt(target, 0, magic.data(), magic.size()) && LoadBigEndian32(magic.data()) == kRf64);
}

} // namespace

FileChunks ReadFileChunks(const std::filesystem::path& path) {
    FileChunks found;
    CFile file;
    std::array<unsigned char, 12> head{};
    if (!file.Open(path.c_str(), CFile::modeRead) || !ReadAt(file, 0, head.data(), head.size())) return found;
    const std::uint32_t form = LoadBigEndian32(head.data());
    if ((form == kRiff || form == kRf64) && LoadBigEndian32(head.data() + 8) == kWave) {
        found.kind = FileChunks::Kind::wav;
        ReadWav(file, found);
    } else if (form == kFormChunk) {
        const AiffLayout layout = ReadAiffLayout(file);
        if (layout.form == AiffLayout::Form::none) return found;
        found.kind = FileChunks::Kind::aiff;
        ReadAiff(layout, found);
    }
    return found;
}

bool AppendChunks(CFile& target, const FileChunks& found, const std::filesystem::path& source) {
    if (found.carried.empty()) return true;
    CFile from;
    if (!from.Open(source.c_str(), CFile::modeRead)) return false;
    if (!HasRoom(target, found)) {
        errno = EFBIG;
        return false;
    }
    for (const CarriedChunk& chunk : found.carried)
        if (!CopyChunk(target, from, chunk, found.kind == FileChunks::Kind::aiff)) return false;
    const bool padded = found.carried.back().id == kUserChunk || target.GetLength() % 2 == 0;
    return (padded || target.Write("", 1)) && WriteFormSize(target);
}

} // namespace vocafade::command
