// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string_view>

namespace vocafade::command {

/// One thing that the command can do besides rendering: `vocafade NAME ...`.
struct Subcommand {
    std::string_view name;
    std::string_view summary; ///< one line for the help
    /// Runs it; `arguments[0]` is its name. Answers an `ExitCode`; may throw `UsageError` and `Failure`.
    int (*run)(int argumentCount, char** arguments);
};

/// All of them, in the order of the help. A new one is a file of its own with its `run`, and a line here.
std::span<const Subcommand> Subcommands();

} // namespace vocafade::command
