// SPDX-License-Identifier: MIT
#include "persistence/aiff_layout.h"

#include "persistence/large_sound.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>

namespace vocafade {
namespace {

constexpr std::size_t kMostChunks = 65536;

struct ChunkHeader {
    std::uint32_t id;
    std::uint32_t size;
};

/// IDs are printable ASCII: "(c) " is one of the published ones.
bool IsPrintable(std::uint32_t character) { return character >= 0x20 && character <= 0x7E; }

bool IsChunkId(std::uint32_t id) {
    for (int shift = 0; shift < 32; shift += 8)
        if (!IsPrintable(id >> shift & 0xFFU)) return false;
    return true;
}

class Walk {
  public:
    explicit Walk(CFile& file) : file_(file), length_(file.GetLength()) {}

    AiffLayout Run() {
        if (!ReadForm()) return std::move(layout_);
        std::int64_t position = kFormHeaderSize;
        layout_.end = position;
        while (position < length_ && Step(position)) {
            layout_.end = position;
            if (IsFormEnd(position)) chunksInForm_ = layout_.chunks.size();
        }
        ClassifyBehindForm();
        return std::move(layout_);
    }

  private:
    bool ReadForm() {
        std::array<unsigned char, kFormHeaderSize> bytes{};
        if (!ReadAt(file_, 0, bytes.data(), bytes.size())) return false;
        if (LoadBigEndian32(bytes.data()) != kFormChunk) return false;
        // The form's size wraps like the sound's; what old user chunks leave behind it is far below 4 GiB.
        const std::int64_t firstEnd = std::int64_t{8} + LoadBigEndian32(bytes.data() + 4);
        formEnd_ = firstEnd > length_ ? 0 : firstEnd + (length_ - firstEnd) / kSizeWrap * kSizeWrap;
        const std::uint32_t kind = LoadBigEndian32(bytes.data() + 8);
        if (kind == kAiffForm) layout_.form = AiffLayout::Form::plain;
        if (kind == kAiffCompressedForm) layout_.form = AiffLayout::Form::compressed;
        return layout_.form != AiffLayout::Form::none;
    }

    /// Takes in the chunk at `position` and moves it to the next one; false when the walk ends there.
    bool Step(std::int64_t& position) {
        const std::optional<ChunkHeader> header = HeaderAt(position);
        if (!header) return EndAtStrangeBytes(position);
        if (layout_.chunks.size() == kMostChunks) return End(AiffLayout::Tail::tooManyChunks);
        AiffChunk chunk{header->id, position, header->size, header->size};
        if (chunk.id == kCommonChunk && !layout_.hasCommon && !ReadCommon(chunk)) {
            return End(AiffLayout::Tail::damagedCommon);
        }
        const bool soundCut = chunk.id == kSoundChunk && !layout_.hasSound && !ReadSound(chunk);
        if (soundCut || chunk.end() > length_) {
            chunk.size = length_ - chunk.dataPosition();
            layout_.chunks.push_back(chunk);
            layout_.end = length_;
            return End(AiffLayout::Tail::cutChunk);
        }
        layout_.chunks.push_back(chunk);
        position = Behind(chunk.end(), chunk.size);
        return true;
    }

    bool End(AiffLayout::Tail tail) {
        layout_.tail = tail;
        return false;
    }

    /// Zeros behind the last chunk are padding that may be written over; anything else may be data.
    bool EndAtStrangeBytes(std::int64_t position) {
        if (!OnlyZeros(position, length_)) layout_.tail = AiffLayout::Tail::strangeBytes;
        return false;
    }

    bool OnlyZeros(std::int64_t position, std::int64_t end) {
        std::array<unsigned char, 4096> bytes{};
        while (position < end) {
            const auto count = static_cast<std::size_t>(
                std::min<std::int64_t>(end - position, static_cast<std::int64_t>(bytes.size())));
            if (!ReadAt(file_, position, bytes.data(), count) ||
                std::any_of(bytes.data(), bytes.data() + count,
                            [](unsigned char byte) { return byte != 0; })) {
                return false;
            }
            position += static_cast<std::int64_t>(count);
        }
        return true;
    }

    bool ReadCommon(const AiffChunk& chunk) {
        // The compressed form's chunk goes on with the name of its coding.
        const bool compressed = layout_.form == AiffLayout::Form::compressed;
        if (compressed ? chunk.declaredSize < kCommonSize : chunk.declaredSize != kCommonSize) return false;
        std::array<unsigned char, kCommonSize> bytes{};
        if (!ReadAt(file_, chunk.dataPosition(), bytes.data(), bytes.size())) return false;
        layout_.common = {LoadBigEndian16(bytes.data()), LoadBigEndian32(bytes.data() + 2),
                          LoadBigEndian16(bytes.data() + 6)};
        layout_.hasCommon = true;
        return true;
    }

    /// False when even the sound's own header is cut short.
    bool ReadSound(AiffChunk& chunk) {
        std::array<unsigned char, 8> bytes{};
        if (!ReadAt(file_, chunk.dataPosition(), bytes.data(), bytes.size())) return false;
        layout_.hasSound = true;
        layout_.soundOffset = LoadBigEndian32(bytes.data());
        layout_.soundPosition = chunk.dataPosition() + 8 + layout_.soundOffset;
        const std::int64_t firstEnd = chunk.dataPosition() + std::max<std::uint32_t>(chunk.declaredSize, 8);
        const std::int64_t soundEnd = SoundEnd(firstEnd, chunk.declaredSize);
        layout_.soundSizeDeclared = chunk.declaredSize >= 8 && (soundEnd - firstEnd) % kSizeWrap == 0;
        chunk.size = soundEnd - chunk.dataPosition();
        if (layout_.soundPosition > soundEnd) { // damage: without an offset the samples follow the header
            layout_.soundOffset = 0;
            layout_.soundPosition = chunk.dataPosition() + 8;
        }
        layout_.soundSize = soundEnd - layout_.soundPosition;
        layout_.sound = chunk;
        return true;
    }

    std::int64_t SoundEnd(std::int64_t firstEnd, std::uint32_t size) {
        if (const std::int64_t end = EndByFrames(firstEnd, size); end != 0) return end;
        // A recorder that never came back to fill in the sizes left a form that ends where the sound begins.
        const bool neverFilledIn = size <= 8 && layout_.common.frames == 0;
        for (std::int64_t end = firstEnd; end <= length_; end += kSizeWrap) {
            if (neverFilledIn && IsFormEnd(end) && end != length_) continue;
            if (LeadsToEnd(Behind(end, size), end)) return end;
        }
        if (!neverFilledIn) {
            for (std::int64_t end = firstEnd; end < length_; end += kSizeWrap) {
                if (FittingHeaderAt(Behind(end, size))) return end;
            }
        }
        return length_;
    }

    /// The sound's end when frame count and sound size agree, modulo 4 GiB; 0 when they do not. The count
    /// itself wraps at 2^32 frames.
    std::int64_t EndByFrames(std::int64_t firstEnd, std::uint32_t size) {
        const AiffCommon& common = layout_.common;
        const std::int64_t frameBytes = std::int64_t{common.channels} * common.sampleBytes();
        if (common.frames == 0 || frameBytes == 0) return 0;
        std::int64_t end = layout_.soundPosition + static_cast<std::int64_t>(common.frames) * frameBytes;
        if ((end - firstEnd) % kSizeWrap != 0) return 0;
        std::int64_t last = 0;
        for (; end <= length_; end += frameBytes * kSizeWrap) {
            if (end < firstEnd) continue;
            last = end;
            if (LeadsToEnd(Behind(end, size), end)) break;
        }
        return last;
    }

    /// True when whole chunks lead from `position` exactly to the end of the form or of the file.
    bool LeadsToEnd(std::int64_t position, std::int64_t previousEnd) {
        for (std::size_t count = 0; count < kMostChunks; ++count) {
            if (IsFormEnd(position) || IsFormEnd(previousEnd) || position >= length_) return true;
            const std::optional<ChunkHeader> header = FittingHeaderAt(position);
            if (!header) return false;
            previousEnd = position + kChunkHeaderSize + header->size;
            position = Behind(previousEnd, header->size);
        }
        return false;
    }

    /// Where the chunk behind one that ends at `end` starts; `size` is what that one declares.
    std::int64_t Behind(std::int64_t end, std::int64_t size) {
        if (size % 2 == 0 || end >= length_ || IsFormEnd(end)) return end;
        if (end + 1 >= length_ || IsFormEnd(end + 1)) return end + 1;
        unsigned char byte = 0;
        if (ReadAt(file_, end, &byte, 1) && byte == 0) return end + 1;
        return !FittingHeaderAt(end) && FittingHeaderAt(end + 1) ? end + 1 : end;
    }

    std::optional<ChunkHeader> HeaderAt(std::int64_t position) {
        std::array<unsigned char, kChunkHeaderSize> bytes{};
        if (!ReadAt(file_, position, bytes.data(), bytes.size())) return std::nullopt;
        const ChunkHeader header{LoadBigEndian32(bytes.data()), LoadBigEndian32(bytes.data() + 4)};
        if (!IsChunkId(header.id)) return std::nullopt;
        return header;
    }

    std::optional<ChunkHeader> FittingHeaderAt(std::int64_t position) {
        const std::optional<ChunkHeader> header = HeaderAt(position);
        if (header && position + kChunkHeaderSize + header->size > length_) return std::nullopt;
        return header;
    }

    bool IsFormEnd(std::int64_t position) const { return position == formEnd_; }

    /// Tells what old user chunks left behind the end of the form from what others appended there.
    void ClassifyBehindForm() {
        if (chunksInForm_ == 0 || formEnd_ >= length_) return;
        const auto inForm = layout_.chunks.begin() + static_cast<std::ptrdiff_t>(chunksInForm_);
        if (!layout_.hasSound || layout_.sound.position >= formEnd_) return;
        AiffChunk& last = layout_.chunks[chunksInForm_ - 1];
        const bool userChunkLast = last.id == kUserChunk || last.id == kFillerChunk; // now, or once
        const bool userChunkRemoved = inForm != layout_.chunks.end() && inForm->id == kUserChunk;
        // Only what old user chunks left is given up; other bytes may be data, whether chunks or not.
        if (!userChunkLast && !userChunkRemoved) return;
        layout_.chunks.erase(inForm, layout_.chunks.end());
        layout_.end = formEnd_;
        layout_.tail = AiffLayout::Tail::clean;
        const std::optional<std::int64_t> found = ChunksBehindForm(file_, formEnd_);
        if (!found) layout_.tail = AiffLayout::Tail::unsearched;
        std::int64_t position = found.value_or(length_);
        if (!OnlyZeros(formEnd_, position)) layout_.leftover = position - formEnd_;
        if (position == length_) return;
        // Chunks follow, so the gap before them becomes part of a chunk that can be written over.
        if (last.id == kFillerChunk) {
            last.size = position - last.dataPosition();
            last.headerIsStale = true;
        } else if (userChunkRemoved && last.id != kUserChunk) {
            const std::int64_t size = position - formEnd_ - kChunkHeaderSize;
            layout_.chunks.push_back({kFillerChunk, formEnd_, 0, size, true});
        }
        while (position < length_ && Step(position))
            layout_.end = position;
    }

    CFile& file_;
    const std::int64_t length_;
    std::int64_t formEnd_ = 0;     // where the form ends by its header; 0 when that is outside the file
    std::size_t chunksInForm_ = 0; // 0 while no chunk was seen to end exactly there
    AiffLayout layout_;
};

} // namespace

const AiffChunk* AiffLayout::Find(std::uint32_t id) const {
    const auto found =
        std::find_if(chunks.begin(), chunks.end(), [id](const AiffChunk& c) { return c.id == id; });
    return found != chunks.end() ? &*found : nullptr;
}

AiffLayout ReadAiffLayout(CFile& file) { return Walk(file).Run(); }

std::optional<std::int64_t> ChunksBehindForm(CFile& file, std::int64_t formEnd) {
    constexpr std::int64_t blockSize = 1 << 20;
    const std::int64_t length = file.GetLength();
    for (std::array<unsigned char, kChunkHeaderSize> header{};
         ReadAt(file, formEnd, header.data(), header.size()) && LoadBigEndian32(header.data()) == kUserChunk;)
        formEnd += kChunkHeaderSize + LoadBigEndian32(header.data() + 4);
    std::int64_t zeros = length;      // that fill the file up; the first place of them
    std::vector<std::int64_t> places; // from which chunks lead to the end of the file; found from behind
    const auto leads = [&](std::int64_t place) {
        return place >= zeros || std::binary_search(places.begin(), places.end(), place, std::greater<>());
    };
    std::int64_t letters = 0; // that may stand in an ID, from here on
    std::vector<unsigned char> bytes;
    for (std::int64_t end = length; end > formEnd;) {
        const std::int64_t start = std::max(formEnd, end - blockSize);
        bytes.resize(static_cast<std::size_t>(std::min(length, end + kChunkHeaderSize - 1) - start));
        if (!ReadAt(file, start, bytes.data(), bytes.size())) return std::nullopt;
        for (std::int64_t at = end; at-- > start;) {
            const unsigned char* here = &bytes[static_cast<std::size_t>(at - start)];
            if (zeros == at + 1 && *here == 0) zeros = at;
            letters = IsPrintable(*here) ? letters + 1 : 0;
            const std::int64_t room = length - at - kChunkHeaderSize;
            if (letters < 4 || room < 0) continue;
            const std::uint32_t declared = LoadBigEndian32(here + 4);
            if (declared > room || LoadBigEndian32(here) == kUserChunk) continue;
            std::int64_t next = at + kChunkHeaderSize + declared;
            unsigned char pad = 1;
            if (declared % 2 != 0 && leads(next + 1) && ReadAt(file, next, &pad, 1) && pad == 0) ++next;
            if (!leads(next)) continue;
            if (places.size() == kMostChunks) return std::nullopt;
            places.push_back(at);
        }
        end = start;
    }
    return places.empty() ? length : places.back();
}

std::optional<std::vector<unsigned char>> ReadPayload(CFile& file, const AiffLayout& layout,
                                                      std::uint32_t id) {
    const auto chunk = std::find_if(layout.chunks.rbegin(), layout.chunks.rend(),
                                    [id](const AiffChunk& candidate) { return candidate.id == id; });
    std::vector<unsigned char> payload;
    if (chunk == layout.chunks.rend()) return payload;
    if (chunk->size > kMostPayload) return std::nullopt;
    payload.resize(static_cast<std::size_t>(chunk->size));
    if (!ReadAt(file, chunk->dataPosition(), payload.data(), payload.size())) return std::nullopt;
    return payload;
}

bool ReadAt(CFile& file, std::int64_t position, void* buffer, std::size_t count) {
    return file.Seek(position, CFile::begin) && file.Read(buffer, count) == count;
}

} // namespace vocafade
