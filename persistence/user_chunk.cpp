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
std::optional<Bytes> Assemble(std::span<const KVBFILECHUNKINFO> subs) {
    std::int64_t total = 0;
    for (const KVBFILECHUNKINFO& sub : subs) {
        if (sub.data == nullptr && sub.size != 0) return std::nullopt;
        total += kChunkHeaderSize + std::int64_t{sub.size};
        if (total > kMostPayload) return std::nullopt;
    }
    Bytes bytes;
    if (total == 0) return bytes;
    bytes.reserve(static_cast<std::size_t>(kChunkHeaderSize + total));
    AppendHeader(bytes, kUserChunk, static_cast<std::uint32_t>(total));
    for (const KVBFILECHUNKINFO& sub : subs) {
        AppendHeader(bytes, sub.id, sub.size);
        bytes.insert(bytes.end(), sub.data, sub.data + sub.size);
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
    struct Filler {
        std::int64_t position;
        std::int64_t size; ///< behind its header
    };
    std::int64_t position = 0;
    std::int64_t formEnd = 0;
    std::vector<Filler> fillers;
};

Plan MakePlan(const AiffLayout& layout, Bytes& bytes) {
    const auto needed = static_cast<std::int64_t>(bytes.size());
    Plan plan{layout.end, layout.end + needed, {}};
    bool placed = false;
    for (std::size_t i = 0; i < layout.chunks.size(); ++i) {
        const AiffChunk& chunk = layout.chunks[i];
        if (chunk.id != kUserChunk && !chunk.headerIsStale) continue;
        const bool last = i + 1 == layout.chunks.size();
        // In a form without a sound the form's end is not believed, so nothing may be left behind it.
        const bool open = last && layout.hasSound;
        const std::int64_t room = (last ? layout.end : layout.chunks[i + 1].position) - chunk.position;
        // Between chunks only an even size will do: behind an odd one our own family expects the next chunk
        // at once, and everybody else a zero byte.
        const bool fits =
            needed != 0 && needed % 2 == 0 && (needed == room || needed + kChunkHeaderSize <= room);
        if (!placed && open) {
            plan.position = chunk.position;
            plan.formEnd = chunk.position + needed;
            placed = true;
        } else if (!placed && fits) {
            plan.position = chunk.position;
            plan.formEnd = layout.end;
            placed = true;
            // What is left becomes a filler whose header is written together with the chunk.
            if (needed < room)
                AppendHeader(bytes, kFillerChunk,
                             static_cast<std::uint32_t>(room - needed - kChunkHeaderSize));
        } else {
            plan.fillers.push_back({chunk.position, room - kChunkHeaderSize});
        }
    }
    return plan;
}

/// What the old chunk leaves behind the end of the form must not be taken for chunks that lead to the end of
/// the file. Bytes that are none then stand there.
bool SetLeftoverApart(CFile& file, const Plan& plan) {
    constexpr std::array<unsigned char, 2> mark{0xFF, 0xFF};
    const std::int64_t length = file.GetLength();
    if (ChunksBehindForm(file, plan.formEnd) == length) return true;
    return WriteAt(file, length, mark) && file.FlushToDisk();
}

bool Carry(CFile& file, const AiffLayout& layout, const Plan& plan, const Bytes& bytes) {
    const bool leavesSome = plan.formEnd < layout.end;
    if (leavesSome && !SetLeftoverApart(file, plan)) return false;
    if (!WriteGrowing(file, plan.position, bytes)) return false;
    for (const Plan::Filler& filler : plan.fillers) {
        Bytes header;
        AppendHeader(header, kFillerChunk, static_cast<std::uint32_t>(filler.size));
        if (!WriteAt(file, filler.position, header)) return false;
    }
    return WriteAiffSizes(file, layout, plan.formEnd);
}

/// Opens `path` and holds it alone while `subChunks` tells what the user chunk is to hold.
template <typename SubChunks>
UserChunkResult Replace(const char* path, SubChunks subChunks) {
    CFile file;
    if (!file.Open(path, CFile::modeReadWrite) || !file.Lock()) return UserChunkResult::cannotOpen;
    const AiffLayout layout = ReadAiffLayout(file);
    if (layout.form != AiffLayout::Form::plain) return UserChunkResult::notAiff;
    // A sound that is cut short gets the size of what is there; any other damage leaves no safe place.
    if (layout.tail != AiffLayout::Tail::clean) return UserChunkResult::damaged;
    const std::optional<std::vector<KVBFILECHUNKINFO>> subs = subChunks(file, layout);
    if (!subs) return UserChunkResult::unreadable;
    std::optional<Bytes> bytes = Assemble(*subs);
    if (!bytes) return UserChunkResult::tooLarge;
    const Plan plan = MakePlan(layout, *bytes);
    return Carry(file, layout, plan, *bytes) ? UserChunkResult::done : UserChunkResult::writeFailed;
}

} // namespace

UserChunkResult PutUserChunk(const char* path, std::span<const KVBFILECHUNKINFO> first,
                             std::span<const KVBFILECHUNKINFO> second) {
    return Replace(path, [&](CFile&, const AiffLayout&) {
        std::optional subs(std::vector(first.begin(), first.end()));
        subs->insert(subs->end(), second.begin(), second.end());
        return subs;
    });
}

UserChunkResult ChangeUserChunk(const char* path,
                                const std::function<void(std::vector<KVBFILECHUNKINFO>&)>& change) {
    Bytes payload; // the sub-chunks point into it
    return Replace(path, [&](CFile& file, const AiffLayout& layout) {
        std::optional<std::vector<KVBFILECHUNKINFO>> subs;
        if (std::optional<Bytes> old = ReadPayload(file, layout, kUserChunk)) {
            payload = *std::move(old);
            subs = ParseUserChunk(payload);
        }
        if (subs) change(*subs);
        return subs;
    });
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
