// SPDX-License-Identifier: MIT
#include "apps/vocafade/older_formats/chunks_command.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/target_check.h"
#include "apps/vocafade/shared/text.h"
#include "base/big_endian.h"
#include "persistence/aiff_layout.h"
#include "persistence/large_sound.h"
#include "persistence/user_chunk.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <optional>

namespace vocafade::command {
namespace {

using SubChunks = std::vector<KVBFILECHUNKINFO>;

struct ChunkOptions {
    std::string file;
    std::string get;
    std::string out;
    std::vector<std::string> put; ///< ID=FILE
    std::vector<std::string> remove;
};

/// An ID as it is typed: up to four characters, filled up with spaces, or 0x and hexadecimal digits.
std::uint32_t ParseId(const std::string& text) {
    if (text.starts_with("0x")) {
        std::uint32_t id = 0;
        const char* end = text.data() + text.size();
        const auto result = std::from_chars(text.data() + 2, end, id, 16);
        if (result.ec == std::errc() && result.ptr == end && text.size() > 2) return id;
    } else if (!text.empty() && text.size() <= 4) {
        std::string padded = text;
        padded.resize(4, ' ');
        return LoadBigEndian32(reinterpret_cast<const unsigned char*>(padded.data()));
    }
    throw UsageError(fmt::format(
        "'{}' is no chunk ID: give one to four characters, or 0x and hexadecimal digits", Printable(text)));
}

std::string IdText(std::uint32_t id) {
    std::string text(4, '\0');
    StoreBigEndian32(reinterpret_cast<unsigned char*>(text.data()), id);
    const bool plain = std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c <= 0x7E; });
    return plain ? text : fmt::format("0x{:08X}", id);
}

std::string Decimal(std::int64_t value) {
    char text[21];
    return i64toa(text, value);
}

AiffLayout LayoutOf(const std::string& path, CFile& file) {
    if (!file.Open(path.c_str(), CFile::modeRead))
        throw Failure(fmt::format("{} cannot be read: {}", Printable(path), SystemReason()));
    AiffLayout layout = ReadAiffLayout(file);
    if (layout.form == AiffLayout::Form::none) throw Failure(Printable(path) + " is not an AIFF file");
    return layout;
}

constexpr char kUnreadable[] = "the user chunk cannot be read, or is larger than 2 GiB";

std::string Note(const AiffLayout& layout, const AiffChunk& chunk) {
    if (layout.hasSound && chunk.position == layout.sound.position) {
        return fmt::format("sound, {}{}", ByteCount(static_cast<double>(layout.soundSize)),
                           layout.soundSizeDeclared ? "" : " (its header says otherwise)");
    }
    if (chunk.id == kCommonChunk && layout.hasCommon) {
        return fmt::format("{} channels, {} bit, {} frames", layout.common.channels, layout.common.bits,
                           layout.common.frames);
    }
    return chunk.id == kUserChunk ? "user chunk" : "";
}

std::string TailNote(AiffLayout::Tail tail) {
    switch (tail) {
    case AiffLayout::Tail::clean:
        return {};
    case AiffLayout::Tail::damagedCommon:
        return "a COMM chunk of the wrong size ends the list";
    case AiffLayout::Tail::cutChunk:
        return "the last chunk says that it is longer than the file";
    case AiffLayout::Tail::strangeBytes:
        return "behind the last chunk are bytes that are no chunk";
    case AiffLayout::Tail::tooManyChunks:
        return "there are more chunks than are listed";
    case AiffLayout::Tail::unsearched:
        return "behind the end of the form are more chunks than can be told apart, or they cannot be read";
    }
    return {};
}

std::string LeftoverNote(const AiffLayout& layout) {
    return fmt::format("{} bytes behind the end of the form, left of an older user chunk, are given up",
                       Decimal(layout.leftover));
}

int List(const ChunkOptions& options) {
    CFile file;
    const AiffLayout layout = LayoutOf(options.file, file);
    Print("{:>14}  {:>14}  chunk\n", "position", "bytes");
    for (const AiffChunk& chunk : layout.chunks) {
        Print("{:>14}  {:>14}  {}  {}\n", Decimal(chunk.position), Decimal(chunk.size), IdText(chunk.id),
              Note(layout, chunk));
    }
    if (layout.leftover != 0) Print("{}\n", LeftoverNote(layout));
    const auto payload = ReadPayload(file, layout, kUserChunk);
    if (!payload) throw Failure(kUnreadable);
    const auto subs = ParseUserChunk(*payload);
    if (!payload->empty()) Print("\nIn the user chunk:\n");
    for (const KVBFILECHUNKINFO& sub : subs.value_or(SubChunks()))
        Print("{:>14}  {:>14}  {}\n", "", Decimal(sub.size), IdText(sub.id));
    if (!subs) PrintError("vocafade: the user chunk is damaged: its sub-chunks do not fill it\n");
    const std::string tail = TailNote(layout.tail);
    if (!tail.empty()) PrintError(fmt::format("vocafade: {}\n", tail));
    return subs && tail.empty() ? kExitFine : kExitFailed;
}

int Get(const ChunkOptions& options) {
    if (!options.out.empty()) CheckTarget(options.out, {options.file});
    const std::uint32_t id = ParseId(options.get);
    CFile file;
    const AiffLayout layout = LayoutOf(options.file, file);
    const auto payload = ReadPayload(file, layout, kUserChunk);
    const auto subs = payload ? ParseUserChunk(*payload).value_or(SubChunks()) : SubChunks();
    const auto sub =
        std::find_if(subs.begin(), subs.end(), [id](const auto& entry) { return entry.id == id; });
    if (sub != subs.end()) {
        WriteWhole(options.out, {reinterpret_cast<const char*>(sub->data), sub->size});
        return kExitFine;
    }
    const AiffChunk* chunk = layout.Find(id);
    if (chunk == nullptr && !payload) throw Failure(kUnreadable);
    if (chunk == nullptr)
        throw Failure(fmt::format("{} has no chunk '{}'", Printable(options.file), IdText(id)));
    if (chunk->size > kMostPayload)
        throw Failure(fmt::format("'{}' is too large to be taken out", IdText(id)));
    std::string bytes(static_cast<std::size_t>(chunk->size), '\0');
    if (!ReadAt(file, chunk->dataPosition(), bytes.data(), bytes.size()))
        throw Failure(fmt::format("{} cannot be read: {}", Printable(options.file), SystemReason()));
    WriteWhole(options.out, bytes);
    return kExitFine;
}

struct ChunkAssignment {
    std::uint32_t id;
    std::string file;
};

ChunkAssignment ParseAssignment(const std::string& assignment) {
    const std::size_t equals = assignment.find('=', 1);
    if (equals == std::string::npos)
        throw UsageError(fmt::format("--put '{}': give ID=FILE", Printable(assignment)));
    return {ParseId(assignment.substr(0, equals)), assignment.substr(equals + 1)};
}

/// A value that is to be put, and the sub-chunk that it becomes.
struct NewValue {
    std::uint32_t id;
    std::string bytes;
    KVBFILECHUNKINFO sub() const {
        return {id, static_cast<std::uint32_t>(bytes.size()),
                reinterpret_cast<const unsigned char*>(bytes.data())};
    }
};

void Remove(SubChunks& subs, std::uint32_t id) {
    if (std::erase_if(subs, [id](const auto& entry) { return entry.id == id; }) == 0)
        throw Failure(fmt::format("there is no sub-chunk '{}'", IdText(id)));
}

/// Replaces the first one of that ID, or adds it behind the others.
void Put(SubChunks& subs, const NewValue& value) {
    const auto old =
        std::find_if(subs.begin(), subs.end(), [&](const auto& entry) { return entry.id == value.id; });
    if (old != subs.end()) {
        *old = value.sub();
    } else {
        subs.push_back(value.sub());
    }
}

int Change(const ChunkOptions& options) {
    CFile file;
    const AiffLayout layout = LayoutOf(options.file, file);
    file.Close();
    const std::string name = Printable(options.file);
    if (layout.form == AiffLayout::Form::compressed)
        throw Failure(name + " is a compressed AIFF file (AIFF-C); user chunks are kept in plain ones");
    std::vector<std::uint32_t> removed;
    for (const std::string& id : options.remove)
        removed.push_back(ParseId(id));
    std::vector<NewValue> values;
    for (const std::string& text : options.put) {
        const ChunkAssignment assignment = ParseAssignment(text);
        CheckTarget(options.file, {assignment.file});
        values.push_back({assignment.id, ReadWholeFile(assignment.file, kMostPayload - kChunkHeaderSize)});
    }
    const UserChunkResult result = ChangeUserChunk(options.file.c_str(), [&](SubChunks& subs) {
        for (const std::uint32_t id : removed)
            Remove(subs, id);
        for (const NewValue& value : values)
            Put(subs, value);
    });
    switch (result) {
    case UserChunkResult::done:
        if (layout.leftover != 0) PrintError(fmt::format("vocafade: {}: {}\n", name, LeftoverNote(layout)));
        return kExitFine;
    case UserChunkResult::cannotOpen:
        throw Failure(fmt::format("{} cannot be written: {}", name, SystemReason()));
    case UserChunkResult::notAiff:
        throw Failure(name + " is not an AIFF file");
    case UserChunkResult::damaged:
        throw Failure(fmt::format("{} is damaged ({}); nothing was written", name, TailNote(layout.tail)));
    case UserChunkResult::unreadable:
        throw Failure(name +
                      " has a user chunk that is damaged or larger than 2 GiB; nothing was written, so "
                      "that nothing of it is lost");
    case UserChunkResult::tooLarge:
        throw Failure("the sub-chunks together take more than 2 GiB; nothing was written");
    case UserChunkResult::writeFailed:
        throw Failure(fmt::format("{} could not be written to the end: {}", name, SystemReason()));
    }
    return kExitFailed;
}

} // namespace

int RunChunks(int argumentCount, char** arguments) {
    ChunkOptions options;
    CLI::App app(
        "Lists the chunks of an AIFF file and what its user chunk (WVL4) holds, and reads and writes\n"
        "that. The sound and all other chunks stay as they are, byte for byte.",
        "vocafade chunks");
    app.add_option("FILE", options.file, "an AIFF file")->required();
    auto* get = app.add_option("--get", options.get, "take out a sub-chunk, or else a chunk, of this ID");
    get->type_name("ID");
    app.add_option("-o,--out", options.out, "where --get writes to (default: the standard output)")
        ->type_name("OUT")
        ->needs(get);
    auto* put = app.add_option("--put", options.put, "set a sub-chunk to what is in FILE; may be repeated");
    put->type_name("ID=FILE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->excludes(get);
    app.add_option("--remove", options.remove, "take a sub-chunk out of the file; may be repeated")
        ->type_name("ID")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->excludes(get);
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
    if (options.out == "-") options.out.clear();
    if (get->count() != 0) return Get(options);
    return options.put.empty() && options.remove.empty() ? List(options) : Change(options);
}

} // namespace vocafade::command
