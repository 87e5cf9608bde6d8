// SPDX-License-Identifier: MIT
#pragma once

#include <fmt/format.h>
#include <string_view>

namespace vocafade::command {

/// [main-thread] To be called first. Opens /dev/null for each standard stream that was closed: otherwise the
/// next file, a song, would get its number and all that is printed. From now on a reader of a pipe that goes
/// away makes a write fail instead of ending the process.
void PrepareStreams();

/// [any-thread] Writes to the standard output. `FinishOutput` tells of failures.
void PrintText(std::string_view text);

/// [any-thread] Formats and writes to the standard output.
template <typename... Arguments>
void Print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    PrintText(fmt::format(format, std::forward<Arguments>(arguments)...));
}

/// [any-thread] Hands what was printed to whoever reads it.
void FlushOutput();

/// [any-thread] Writes to the standard error. Failures are ignored.
void PrintError(std::string_view text);

/// [main-thread] The system's error when the standard output has not taken everything, else 0. A reader that
/// went away had enough; that is no error.
int FinishOutput();

/// While it lives, what libraries and plug-ins write to the standard error goes nowhere; `PrintError` still
/// gets there. At most one at a time, begun and ended while no other thread prints.
class LibrarySilence {
  public:
    LibrarySilence();
    ~LibrarySilence();
    LibrarySilence(const LibrarySilence&) = delete;
    LibrarySilence& operator=(const LibrarySilence&) = delete;
};

} // namespace vocafade::command
