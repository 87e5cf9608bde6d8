// SPDX-License-Identifier: MIT
#include "persistence/aiff_sizes.h"

#include <array>

namespace vocafade {
namespace {

bool Write32At(CFile& file, std::int64_t position, std::uint32_t value) {
    std::array<unsigned char, 4> bytes{};
    StoreBigEndian32(bytes.data(), value);
    return file.Seek(position, CFile::begin) && file.Write(bytes.data(), bytes.size());
}

/// The number of frames in the sound, modulo 2^32: the header's own where the sound has that size. (It is not
/// always computed, since samples of 12 bits take two bytes each.)
std::uint32_t Frames(const AiffLayout& layout) {
    const AiffCommon& common = layout.common;
    const std::int64_t padded = std::int64_t{common.channels} * common.sampleBytes();
    if (padded == 0 || static_cast<std::uint32_t>(layout.soundSize / padded) == common.frames)
        return common.frames;
    const std::int64_t packed = std::int64_t{common.channels} * common.bits / 8;
    return packed == 0 ? common.frames : static_cast<std::uint32_t>(layout.soundSize / packed);
}

} // namespace

bool WriteAiffSizes(CFile& file, const AiffLayout& layout, std::int64_t formEnd) {
    bool written = true;
    if (layout.hasSound) {
        written = Write32At(file, layout.sound.position + 4, static_cast<std::uint32_t>(layout.sound.size));
    }
    const AiffChunk* common = layout.Find(kCommonChunk);
    if (layout.hasSound && layout.hasCommon && common != nullptr) {
        written = written && Write32At(file, common->dataPosition() + 2, Frames(layout));
    }
    return written && Write32At(file, 4, static_cast<std::uint32_t>(formEnd - 8)) && file.FlushToDisk();
}

} // namespace vocafade
