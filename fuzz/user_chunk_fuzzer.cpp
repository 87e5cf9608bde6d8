// SPDX-License-Identifier: MIT
// Any bytes as an AIFF file: the walk stays inside it, and a put keeps the sound and every other chunk.
#include "fuzz/support.h"
#include "persistence/async_file_io.h"
#include "persistence/large_sound.h"
#include "persistence/user_chunk.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <vector>

using namespace vocafade;

namespace {

AiffLayout LayoutOf(const std::string& path) {
    CFile file;
    fuzz::Require(file.Open(path.c_str(), CFile::modeRead), "opening");
    return ReadAiffLayout(file);
}

void CheckInside(const AiffLayout& layout, std::int64_t length) {
    std::int64_t last = kFormHeaderSize;
    for (const AiffChunk& chunk : layout.chunks) {
        fuzz::Require(chunk.position >= last && chunk.size >= 0 && chunk.end() <= length,
                      "chunks lie in the file");
        last = chunk.end();
    }
    fuzz::Require(layout.end >= last || layout.form == AiffLayout::Form::none,
                  "the end is behind all chunks");
    fuzz::Require(layout.end <= length, "the end is in the file");
    if (!layout.hasSound) return;
    fuzz::Require(layout.soundSize >= 0 && layout.soundPosition + layout.soundSize <= length,
                  "the sound is in the file");
}

void ReadEverything(const std::string& path, std::string_view bytes) {
    CAsyncFileIO file;
    if (file.Open(path.c_str(), CAsyncFileIO::read) != 0) return;
    std::vector<unsigned char> payload(64), tags(16);
    int tagBytes = 16;
    const int length = file.ReadUserChunk(nullptr, 0, nullptr, tagBytes);
    fuzz::Require(length >= 0 && static_cast<std::size_t>(length) <= bytes.size(),
                  "payloads lie in the file");
    const int copied = file.ReadUserChunk(payload.data(), 64, tags.data(), tagBytes);
    fuzz::Require(copied == std::min(length, 64), "as much is copied as there is room for");
    fuzz::Require(file.GetLength() >= 0 && file.Seek64(2, 0) == 0 && file.Read(payload.data(), 64) == 0,
                  "the sound ends");
    const int whole = static_cast<int>(std::min<long long>(file.GetLength(), 64));
    fuzz::Require(file.Seek(0, 0) == 0 && file.Read(payload.data(), 64) == whole, "the sound can be read");
    ParseUserChunk(payload);
    CFile raw;
    raw.Open(path.c_str(), CFile::modeRead);
    const long long next = Analyze64(&raw, static_cast<long long>(bytes.size() / 2));
    fuzz::Require(next >= 0 && next <= raw.GetLength(), "the search stays in the file");
}

/// What a put must not touch: the sound, and every chunk that is not ours.
void CheckKept(const AiffLayout& before, std::string_view old, std::string_view now) {
    const auto same = [&](std::int64_t position, std::int64_t size) {
        const auto at = static_cast<std::size_t>(position), count = static_cast<std::size_t>(size);
        return now.size() >= at + count && old.substr(at, count) == now.substr(at, count);
    };
    if (before.hasSound) fuzz::Require(same(before.soundPosition, before.soundSize), "the sound is kept");
    for (const AiffChunk& chunk : before.chunks) {
        if (chunk.id == kUserChunk || chunk.id == kFillerChunk || chunk.id == kCommonChunk) continue;
        const std::int64_t header =
            chunk.id == kSoundChunk ? 8 : 0; // the sound's size may have been put right
        fuzz::Require(same(chunk.position + header, chunk.size + kChunkHeaderSize - header),
                      "other chunks are kept");
    }
}

void Put(const std::string& path, std::size_t valueSize) {
    const std::string old = test::ReadFile(path);
    const AiffLayout before = LayoutOf(path);
    const std::vector<unsigned char> value(valueSize, 'v');
    const KVBFILECHUNKINFO sub{FourCharacterCode("KEY "), static_cast<std::uint32_t>(value.size()),
                               value.data()};
    const UserChunkResult result = PutUserChunk(path.c_str(), {&sub, 1}, {});
    const std::string now = test::ReadFile(path);
    if (result != UserChunkResult::done) {
        fuzz::Require(now == old, "a put that is refused changes nothing");
        return;
    }
    CheckKept(before, old, now);
    CheckInside(LayoutOf(path), static_cast<std::int64_t>(now.size()));
    CAsyncFileIO reader;
    int none = 0;
    std::vector<unsigned char> payload(valueSize + 16);
    fuzz::Require(reader.Open(path.c_str(), CAsyncFileIO::read) == 0, "opening again");
    const int length = reader.ReadUserChunk(payload.data(), static_cast<int>(payload.size()), nullptr, none);
    fuzz::Require(length == static_cast<int>(valueSize) + 8, "what was put is read back");
    fuzz::Require(std::equal(value.begin(), value.end(), payload.begin() + 8), "byte for byte");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static const test::TempFolder folder;
    static const std::string path = folder / "song.aif";
    const std::string bytes = fuzz::Text(data + 1, size - 1);
    test::WriteFile(path, bytes);
    CheckInside(LayoutOf(path), static_cast<std::int64_t>(bytes.size()));
    ReadEverything(path, bytes);
    Put(path, data[0] % 64);
    Put(path, data[0] / 4);
    return 0;
}
