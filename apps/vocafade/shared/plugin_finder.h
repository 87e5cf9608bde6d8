// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vocafade::command {

/// The places where the plug-in is looked for, in order: beside the command, installed with it, the folders
/// of `VST_PATH`, the user's and the system's VST folders.
std::vector<std::filesystem::path> PluginPlaces(const std::filesystem::path& executable);

/// The plug-in to use: `chosen` when the user named one, else the first of the places that has it. Throws
/// `Failure` that lists the places when none has it.
std::filesystem::path FindPlugin(const std::string& chosen);

} // namespace vocafade::command
