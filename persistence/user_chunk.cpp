// SPDX-License-Identifier: MIT
#include "persistence/user_chunk.h"

#include "persistence/aiff_layout.h"
#include "persistence/aiff_sizes.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vocafade {
namespace {

using Bytes = std::vector<unsigned char>;

void AppendHeader(Bytes& bytes, std::uint32_t id, std::uint32_t size) {
    std::array<unsigned char, kChunkHeaderSize> header{};
    StoreBigEndian32(header.data(), id);
    StoreBigEndian32(header.data() + 4, size);
    bytes.insert(bytes.end(), header.begin(), header.end());
}

/// The whole chunk with its header; empty when there are no sub-chunks, nothing when it cannot be stored.
std::optional<Bytes> Assemble(std::span<const KVBFILECHUNKINFO> first,
                              std::span<const KVBFILECHUNKINFO> second) {
    std::uint64_t total = 0;
    for (const auto& list : {first, second}) {
        for (const KVBFILECHUNKINFO& sub : list) {
            if (sub.data == nullptr && sub.size != 0) return std::nullopt;
            total += kChunkHeaderSize + std::uint64_t{sub.size};
        }
    }
    if (total > 0xFFFFFFFFu) return std::nullopt;
    Bytes bytes;
    if (total == 0) return bytes;
    bytes.reserve(kChunkHeaderSize + total);
    AppendHeader(bytes, kUserChunk, static_cast<std::uint32_t>(total));
    for (const auto& list : {first, second}) {
        for (const KVBFILECHUNKINFO& sub : list) {
            AppendHeader(bytes, sub.id, sub.size);
            bytes.insert(bytes.end(), sub.data, sub.data + sub.size);
        }
    }
    return bytes;
}

bool WriteAt(CFile& file, std::int64_t position, std::span<const unsigned char> bytes) {
    return bytes.empty() || (file.Seek(position, CFile::begin) && file.Write(bytes.data(), bytes.size()));
}

/// Writes `bytes` at `position`, first what makes the file longer: a full disk shows before anything that is
/// in use is written over.
bool WriteGrowing(CFile& file, std::int64_t position, std::span<const unsigned char> bytes) {
    const auto inside = static_cast<std::size_t>(
        std::clamp<std::int64_t>(file.GetLength() - position, 0, static_cast<std::int64_t>(bytes.size())));
    return WriteAt(file, position + static_cast<std::int64_t>(inside), bytes.subspan(inside)) &&
           file.FlushToDisk() && WriteAt(file, position, bytes.first(inside)) && file.FlushToDisk();
}

/// Where the new chunk goes and what becomes of the old ones.
struct Plan {
    std::int64_t position = 0;
    std::int64_t formEnd = 0;
    std::vector<std::int64_t> fillers; ///< chunks whose ID becomes that of a filler
};

Plan MakePlan(const AiffLayout& layout, Bytes& bytes) {
    const auto needed = static_cast<std::int64_t>(bytes.size());
    // Before a chunk of another program stands the zero byte that it expects behind an odd size.
    const std::int64_t padded = needed + needed % 2;
    Plan plan{layout.end, layout.end + needed, {}};
    bool placed = false;
    for (std::size_t i = 0; i < layout.chunks.size(); ++i) {
        const AiffChunk& chunk = layout.chunks[i];
        if (chunk.id != kUserChunk) continue;
        const bool last = i + 1 == layout.chunks.size();
        // In a form without a sound the form's end is not believed, so nothing may be left behind it.
        const bool open = last && layout.hasSound;
        const std::int64_t room = (last ? layout.end : layout.chunks[i + 1].position) - chunk.position;
        if (!placed && open) {
            plan.position = chunk.position;
            plan.formEnd = chunk.position + needed;
            placed = true;
        } else if (!placed && needed != 0 && (padded == room || padded + kChunkHeaderSize <= room)) {
            plan.position = chunk.position;
            plan.formEnd = layout.end;
            placed = true;
            bytes.resize(static_cast<std::size_t>(padded), 0);
            // What is left becomes a filler whose header is written together with the chunk.
            if (padded < room) {
                AppendHeader(bytes, kFillerChunk,
                             static_cast<std::uint32_t>(room - padded - kChunkHeaderSize));
            }
        } else {
            plan.fillers.push_back(chunk.position);
        }
    }
    return plan;
}

bool Carry(CFile& file, const AiffLayout& layout, const Plan& plan, const Bytes& bytes) {
    if (!WriteGrowing(file, plan.position, bytes)) return false;
    std::array<unsigned char, 4> filler{};
    StoreBigEndian32(filler.data(), kFillerChunk);
    for (const std::int64_t position : plan.fillers) {
        if (!WriteAt(file, position, filler)) return false;
    }
    return WriteAiffSizes(file, layout, plan.formEnd);
}

} // namespace

UserChunkResult PutUserChunk(const char* path, std::span<const KVBFILECHUNKINFO> first,
                             std::span<const KVBFILECHUNKINFO> second) {
    CFile file;
    if (!file.Open(path, CFile::modeReadWrite)) return UserChunkResult::cannotOpen;
    const AiffLayout layout = ReadAiffLayout(file);
    if (layout.form != AiffLayout::Form::plain) return UserChunkResult::notAiff;
    // A sound that is cut short gets the size of what is there; any other damage leaves no safe place.
    if (layout.tail != AiffLayout::Tail::clean) return UserChunkResult::damaged;
    std::optional<Bytes> bytes = Assemble(first, second);
    if (!bytes) return UserChunkResult::tooLarge;
    const Plan plan = MakePlan(layout, *bytes);
    return Carry(file, layout, plan, *bytes) ? UserChunkResult::done : UserChunkResult::writeFailed;
}

bool WriteUserChunk(const char* path, KVBFILECHUNKINFO* list1, int count1, KVBFILECHUNKINFO* list2,
                    int count2) {
    const auto list = [](const KVBFILECHUNKINFO* entries, int count) {
        return std::span(entries, entries != nullptr && count > 0 ? static_cast<std::size_t>(count) : 0);
    };
    return PutUserChunk(path, list(list1, count1), list(list2, count2)) != UserChunkResult::cannotOpen;
}

std::optional<std::vector<KVBFILECHUNKINFO>> ParseUserChunk(std::span<const unsigned char> payload) {
    std::vector<KVBFILECHUNKINFO> subs;
    while (!payload.empty()) {
        if (payload.size() < kChunkHeaderSize) {
            // Other programs fill chunks up to a multiple of two or four bytes and count that in.
            if (std::any_of(payload.begin(), payload.end(), [](unsigned char byte) { return byte != 0; }))
                return std::nullopt;
            break;
        }
        const KVBFILECHUNKINFO sub{LoadBigEndian32(payload.data()), LoadBigEndian32(payload.data() + 4),
                                   payload.data() + kChunkHeaderSize};
        payload = payload.subspan(kChunkHeaderSize);
        if (sub.size > payload.size()) return std::nullopt;
        payload = payload.subspan(sub.size);
        subs.push_back(sub);
    }
    return subs;
}

} // namespace vocafade
