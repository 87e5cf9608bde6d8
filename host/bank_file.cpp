// SPDX-License-Identifier: MIT
#include "host/bank_file.h"

#include "host/host_error.h"
#include "vst/bank_header.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <system_error>

namespace vocafade::host {
namespace {

constexpr std::uintmax_t kMostFileBytes = std::uintmax_t{64} << 20;

/// Reads big-endian fields one after the other and refuses to leave the bytes.
class Reader {
  public:
    explicit Reader(std::span<const std::byte> bytes) : rest_(bytes) {}

    std::span<const std::byte> Take(std::size_t count) {
        if (count > rest_.size()) throw HostError("it ends too early");
        const auto taken = rest_.first(count);
        rest_ = rest_.subspan(count);
        return taken;
    }
    std::uint32_t Number() { return LoadBigEndian32(reinterpret_cast<const unsigned char*>(Take(4).data())); }
    BankHeader Header() {
        std::array<unsigned char, BankHeader::kBytes> bytes;
        std::memcpy(bytes.data(), Take(bytes.size()).data(), bytes.size());
        const BankHeader header = ReadBankHeader(bytes);
        if (header.magic != kBankMagic) throw HostError("it does not begin with CcnK");
        return header;
    }
    std::string Name(std::size_t bytes) {
        const auto* text = reinterpret_cast<const char*>(Take(bytes).data());
        return {text, ::strnlen(text, bytes - 1)};
    }
    std::size_t left() const { return rest_.size(); }

  private:
    std::span<const std::byte> rest_;
};

std::vector<std::byte> ReadChunk(Reader& reader) {
    const std::uint32_t size = reader.Number();
    if (size > reader.left()) throw HostError("it ends too early");
    const auto bytes = reader.Take(size);
    return {bytes.begin(), bytes.end()};
}

ProgramValues ReadValues(Reader& reader, std::uint32_t count) {
    if (count > reader.left() / 4) throw HostError("it ends too early");
    ProgramValues program;
    program.name = reader.Name(kProgramFileNameBytes);
    program.values.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const float value = std::bit_cast<float>(reader.Number());
        program.values.push_back(std::isnan(value) ? 0.0f : std::clamp(value, 0.0f, 1.0f));
    }
    return program;
}

std::vector<ProgramValues> ReadPrograms(Reader& reader, std::uint32_t count, std::int32_t bankId) {
    std::vector<ProgramValues> programs;
    while (programs.size() < count) {
        const BankHeader header = reader.Header();
        if (header.kind != kValueProgramKind || header.uniqueId != bankId)
            throw HostError("its program " + std::to_string(programs.size() + 1) + " is damaged");
        programs.push_back(ReadValues(reader, header.count));
    }
    return programs;
}

void ApplyValues(Effect& effect, const ProgramValues& program) {
    effect.setProgramName(program.name);
    for (std::size_t i = 0; i < program.values.size(); ++i)
        effect.setParameter(static_cast<std::int32_t>(i), program.values[i]);
}

} // namespace

BankFile ParseBankFile(std::span<const std::byte> bytes) {
    Reader reader(bytes);
    const BankHeader header = reader.Header();
    BankFile file;
    file.uniqueId = header.uniqueId;
    switch (header.kind) {
    case kChunkBankKind:
        reader.Take(kBankReservedBytes);
        file.isBank = true;
        file.content = ReadChunk(reader);
        return file;
    case kChunkProgramKind:
        reader.Take(kProgramFileNameBytes);
        file.content = ReadChunk(reader);
        return file;
    case kValueBankKind:
        reader.Take(kBankReservedBytes);
        file.isBank = true;
        file.content = ReadPrograms(reader, header.count, file.uniqueId);
        return file;
    case kValueProgramKind:
        file.content = std::vector{ReadValues(reader, header.count)};
        return file;
    default:
        throw HostError("it is no kind of bank or program that is known here");
    }
}

BankFile ReadBankFile(const std::filesystem::path& path) {
    const std::string what = "the bank '" + path.string() + "' cannot be used: ";
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw HostError("there is no bank '" + path.string() + "'");
    if (!std::filesystem::is_regular_file(path, error)) throw HostError(what + "it is not a file");
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) throw HostError(what + error.message());
    if (size > kMostFileBytes) throw HostError(what + "it is larger than 64 MiB");
    std::vector<std::byte> bytes(size);
    std::ifstream stream(path, std::ios::binary);
    if (!stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size)))
        throw HostError(what + "it cannot be read");
    try {
        return ParseBankFile(bytes);
    } catch (const HostError& damage) {
        throw HostError(what + damage.what());
    }
}

void ApplyBankFile(Effect& effect, const BankFile& file) {
    if (file.uniqueId != effect.uniqueId()) throw HostError("the bank belongs to another plug-in");
    if (const auto* chunk = std::get_if<std::vector<std::byte>>(&file.content)) {
        effect.setChunk(*chunk, !file.isBank);
        return;
    }
    const auto& programs = std::get<std::vector<ProgramValues>>(file.content);
    if (!file.isBank) {
        if (!programs.empty()) ApplyValues(effect, programs.front());
        return;
    }
    const std::int32_t current = effect.program();
    for (std::size_t i = 0; i < programs.size() && static_cast<std::int32_t>(i) < effect.numPrograms(); ++i) {
        effect.setProgram(static_cast<std::int32_t>(i));
        ApplyValues(effect, programs[i]);
    }
    effect.setProgram(current);
}

} // namespace vocafade::host
