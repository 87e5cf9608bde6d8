// SPDX-License-Identifier: MIT
#pragma once

#include "effect/parameters.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vocafade {

inline constexpr std::int32_t kProgramCount = 64;

/// One program: at once the record in memory, the host's program chunk and the element of the bank chunk and
/// the bank file, in native byte order. So its 52 bytes are a format and never change.
struct AVocafadeProgram {
    /// Default values, the name "Empty", everything else zero.
    AVocafadeProgram();
    bool operator==(const AVocafadeProgram&) const = default;

    std::array<float, kParameterCount> values; ///< normalised, in parameter order
    char name[24];                             ///< NUL-terminated Shift-JIS, at most 23 bytes
    std::int32_t
        currentProgram; ///< in record 0 of a bank chunk: the current program; elsewhere carried along
};
static_assert(sizeof(AVocafadeProgram) == 52);
static_assert(offsetof(AVocafadeProgram, name) == 24);
static_assert(offsetof(AVocafadeProgram, currentProgram) == 48);

/// Largest name in bytes, without its terminator.
inline constexpr std::size_t kProgramNameBytes = sizeof(AVocafadeProgram::name) - 1;

/// A set of all programs.
using ProgramSet = std::array<AVocafadeProgram, kProgramCount>;
static_assert(sizeof(ProgramSet) == 3328);

// A host may automate from its audio thread while its main thread selects, saves or restores programs. The
// values of a record are therefore read and written one by one, each atomically; names belong to the main
// thread.

/// [any-thread] One value of a record.
float LoadValue(const AVocafadeProgram& program, std::int32_t index);
/// [any-thread] Sets one value of a record.
void StoreValue(AVocafadeProgram& program, std::int32_t index, float value);
/// [main-thread] Copies a whole record.
void CopyProgram(AVocafadeProgram& to, const AVocafadeProgram& from);
/// [main-thread] Copies a whole set.
void CopyPrograms(ProgramSet& to, const ProgramSet& from);
/// [main-thread] Sets a record's name, cut at 23 bytes; null changes nothing.
void SetName(AVocafadeProgram& program, const char* name);
/// [main-thread] Copies a record's name into `text` (24 bytes), terminated whatever the record holds.
void CopyName(const AVocafadeProgram& program, char* text);

} // namespace vocafade
