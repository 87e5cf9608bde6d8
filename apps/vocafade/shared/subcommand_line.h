// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <string>
#include <vector>

namespace vocafade::command {

/// Reads a subcommand's command line into what `app` was told of. True when the help was asked for and has
/// been printed, so that nothing is left to do. Throws `UsageError`.
bool ParseSubcommand(CLI::App& app, int argumentCount, char** arguments);

/// The whole content of `path`. Throws `Failure` when it cannot be read or holds more than `most` bytes.
std::string ReadWholeFile(const std::string& path, std::size_t most);

/// Writes `bytes` to `path`, whole or not at all; to the standard output when `path` is empty. Throws
/// `Failure` (of the standard output `FinishOutput` tells).
void WriteWhole(const std::string& path, std::string_view bytes);

} // namespace vocafade::command
