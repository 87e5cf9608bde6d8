// SPDX-License-Identifier: MIT
#pragma once

#include "host/effect.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace vocafade::host {

/// One program of a file that lists parameter values.
struct ProgramValues {
    std::string name;          ///< at most 27 bytes
    std::vector<float> values; ///< normalised
};

/// A VST bank (.fxb) or program (.fxp) file: either the effect's own opaque chunk or plain values.
struct BankFile {
    std::int32_t uniqueId = 0; ///< of the effect that it belongs to
    bool isBank = false;       ///< a whole bank rather than one program
    std::variant<std::vector<std::byte>, std::vector<ProgramValues>> content;
};

/// [any-thread] Reads a bank or program file from its bytes; every size in it is checked against what is
/// there. All four kinds are read: FBCh and FPCh (chunks), FxBk and FxCk (values). Throws `HostError`.
BankFile ParseBankFile(std::span<const std::byte> bytes);

/// [any-thread] Reads `path`, at most 64 MiB. Throws `HostError`.
BankFile ReadBankFile(const std::filesystem::path& path);

/// [main-thread] Gives a file's content to an effect: a bank replaces all programs, a program the current
/// one. Throws `HostError` when the file belongs to another effect.
void ApplyBankFile(Effect& effect, const BankFile& file);

} // namespace vocafade::host
