// SPDX-License-Identifier: MIT
#include "apps/vocafade/older_formats/chunks_command.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/target_check.h"
#include "apps/vocafade/shared/text.h"
#include "base/big_endian.h"
#include "persistence/async_file_io.h"
#include "persistence/large_sound.h"
#include "persistence/user_chunk.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <limits>
#include <memory>
#include <optional>

namespace vocafade::command {
namespace {

constexpr std::size_t kLargestValue = 0xFFFFFFFF - 16;

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
    if (!file.Open(path.c_str(), CFile::modeRead)) throw Failure(Printable(path) + " cannot be read");
    AiffLayout layout = ReadAiffLayout(file);
    if (layout.form == AiffLayout::Form::none) throw Failure(Printable(path) + " is not an AIFF file");
    return layout;
}

std::vector<unsigned char> UserPayload(const std::string& path) {
    CAsyncFileIO file;
    if (file.Open(path.c_str(), CAsyncFileIO::read) != 0) return {};
    int none = 0;
    std::vector<unsigned char> payload(
        static_cast<std::size_t>(file.ReadUserChunk(nullptr, 0, nullptr, none)));
    file.ReadUserChunk(payload.data(), static_cast<int>(payload.size()), nullptr, none);
    return payload;
}

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
    }
    return {};
}

int List(const ChunkOptions& options) {
    CFile file;
    const AiffLayout layout = LayoutOf(options.file, file);
    Print("{:>14}  {:>14}  chunk\n", "position", "bytes");
    for (const AiffChunk& chunk : layout.chunks) {
        Print("{:>14}  {:>14}  {}  {}\n", Decimal(chunk.position), Decimal(chunk.size), IdText(chunk.id),
              Note(layout, chunk));
    }
    const std::vector<unsigned char> payload = UserPayload(options.file);
    const auto subs = ParseUserChunk(payload);
    if (!payload.empty()) Print("\nIn the user chunk:\n");
    for (const KVBFILECHUNKINFO& sub : subs.value_or(std::vector<KVBFILECHUNKINFO>()))
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
    const std::vector<unsigned char> payload = UserPayload(options.file);
    const auto subs = ParseUserChunk(payload).value_or(std::vector<KVBFILECHUNKINFO>());
    const auto sub =
        std::find_if(subs.begin(), subs.end(), [id](const auto& entry) { return entry.id == id; });
    if (sub != subs.end()) {
        WriteWhole(options.out, {reinterpret_cast<const char*>(sub->data), sub->size});
        return kExitFine;
    }
    const AiffChunk* chunk = layout.Find(id);
    if (chunk == nullptr)
        throw Failure(fmt::format("{} has no chunk '{}'", Printable(options.file), IdText(id)));
    if (chunk->size > std::numeric_limits<int>::max())
        throw Failure(fmt::format("'{}' is too large to be taken out", IdText(id)));
    std::string bytes(static_cast<std::size_t>(chunk->size), '\0');
    if (!ReadAt(file, chunk->dataPosition(), bytes.data(), bytes.size()))
        throw Failure(Printable(options.file) + " cannot be read");
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

/// The sub-chunks that the user chunk is to hold, and their bytes.
class NewSubChunks {
  public:
    explicit NewSubChunks(const std::string& path) : payload_(UserPayload(path)) {
        auto subs = ParseUserChunk(payload_);
        if (!subs)
            throw Failure(Printable(path) +
                          " has a damaged user chunk; nothing was written, so that nothing of it is lost");
        subs_ = *std::move(subs);
    }

    void Remove(std::uint32_t id) {
        if (std::erase_if(subs_, [id](const auto& entry) { return entry.id == id; }) == 0)
            throw Failure(fmt::format("there is no sub-chunk '{}'", IdText(id)));
    }

    /// Replaces the first one of that ID, or adds it behind the others.
    void Put(const ChunkAssignment& assignment) {
        const std::uint32_t id = assignment.id;
        values_.push_back(std::make_unique<std::string>(ReadWholeFile(assignment.file, kLargestValue)));
        const std::string& value = *values_.back();
        const KVBFILECHUNKINFO sub{id, static_cast<std::uint32_t>(value.size()),
                                   reinterpret_cast<const unsigned char*>(value.data())};
        const auto old =
            std::find_if(subs_.begin(), subs_.end(), [id](const auto& entry) { return entry.id == id; });
        if (old != subs_.end()) {
            *old = sub;
        } else {
            subs_.push_back(sub);
        }
    }

    const std::vector<KVBFILECHUNKINFO>& list() const { return subs_; }

  private:
    std::vector<unsigned char> payload_;
    std::vector<std::unique_ptr<std::string>> values_;
    std::vector<KVBFILECHUNKINFO> subs_;
};

int Change(const ChunkOptions& options) {
    CFile file;
    const AiffLayout layout = LayoutOf(options.file, file);
    file.Close();
    if (layout.form == AiffLayout::Form::compressed)
        throw Failure(Printable(options.file) +
                      " is a compressed AIFF file (AIFF-C); user chunks are kept in plain ones");
    for (const std::string& assignment : options.put)
        CheckTarget(options.file, {ParseAssignment(assignment).file});
    NewSubChunks subs(options.file);
    for (const std::string& id : options.remove)
        subs.Remove(ParseId(id));
    for (const std::string& assignment : options.put)
        subs.Put(ParseAssignment(assignment));
    const std::string name = Printable(options.file);
    switch (PutUserChunk(options.file.c_str(), subs.list(), {})) {
    case UserChunkResult::done:
        return kExitFine;
    case UserChunkResult::cannotOpen:
        throw Failure(name + " cannot be written");
    case UserChunkResult::notAiff:
        throw Failure(name + " is not an AIFF file");
    case UserChunkResult::damaged:
        throw Failure(fmt::format("{} is damaged ({}); nothing was written", name, TailNote(layout.tail)));
    case UserChunkResult::tooLarge:
        throw Failure("the sub-chunks together take 4 GB or more; nothing was written");
    case UserChunkResult::writeFailed:
        throw Failure(name + " could not be written to the end; is the disk full?");
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
