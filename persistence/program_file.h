// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace vocafade {

inline constexpr char kProgramListHeader[] = "KVB5.0 EFFECT PROGRAM LIST";
inline constexpr char kProgramFileHeader[] = "KVB5.0 EFFECT PRG FILE";
/// Longest lines in bytes; the rest of a longer one counts as the next line.
inline constexpr unsigned kLineLimit = 80;
inline constexpr unsigned kBodyLimit = 500;

/// What a program file turned out to be.
enum class ProgramFileContent {
    body,     ///< a program file with a body
    noFile,   ///< missing or not to be opened; `errno` says why
    empty,    ///< not even a first line
    noHeader, ///< its first line is not that of a program file
    noBody,   ///< its first line is all there is
};

/// [main-thread] Reads a program file's body, its second line, into `body`, which holds at least `kBodyLimit`
/// + 1 bytes. When the file cannot be opened, or is empty, `body` stays as it was; when its first line is not
/// that of a program file, or is all there is, `body` is that line.
ProgramFileContent LoadPGMFileBody(const char* path, char* body);

/// Most bytes that `StrTerminateTab` looks at, from the start of the field.
inline constexpr std::size_t kFieldLimit = 4100;

/// [any-thread] Copies the field of `src` that starts at byte `pos` and ends before a tab to `dst`, which
/// must hold the rest of `src` (at most `kFieldLimit` bytes) and a NUL. Returns the position behind the tab,
/// or -1 when the field ran to the end of the text. A negative `pos`, or one behind the end, gives an empty
/// field and -1.
int StrTerminateTab(const char* src, int pos, char* dst);

/// [main-thread] Where the program file of the program `name` (Shift-JIS, as lists hold it) lies in `folder`:
/// folder, separator, name and ".PGM". The separator is a further backslash when the folder is written with
/// them, and otherwise a slash. When there is no such file, one is looked for whose name differs only in the
/// case of ASCII letters or is the same in UTF-8, since the file system that lists were made on saw no
/// difference.
std::string ProgramFilePath(const std::string& folder, const std::string& name);

} // namespace vocafade
