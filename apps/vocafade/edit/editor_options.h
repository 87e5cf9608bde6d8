// SPDX-License-Identifier: MIT
#pragma once

#include "host/effect.h"

#include <CLI/App.hpp>
#include <optional>
#include <string>
#include <vector>

namespace vocafade::command {

/// What the subcommands that show the editor have in common.
struct EditorOptions {
    std::optional<int> program;   ///< from 1
    std::vector<std::string> set; ///< NAME=VALUE
    std::string plugin;
};

/// Adds the options to `app`.
void AddEditorOptions(CLI::App& app, EditorOptions& options);

/// [main-thread] Selects the program and sets the parameters. Throws `UsageError` for what the effect does
/// not have.
void PrepareEffect(host::Effect& effect, const EditorOptions& options);

} // namespace vocafade::command
