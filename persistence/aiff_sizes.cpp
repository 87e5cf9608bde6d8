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

/// The number of frames in the sound: the header's own where it can be right. Files of 12-bit samples, which
/// take two bytes each, are the reason not to compute it always.
std::uint32_t Frames(const AiffLayout& layout) {
    const std::uint32_t frameBytes = std::uint32_t{layout.common.channels} * layout.common.bits / 8;
    if (frameBytes == 0 || (layout.soundSizeDeclared && layout.common.frames != 0))
        return layout.common.frames;
    return static_cast<std::uint32_t>(layout.soundSize / frameBytes);
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
