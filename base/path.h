// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vocafade {

// Paths are text inside: on Windows UTF-8 with "/" between folders, elsewhere the system's own bytes. Everything
// here is [any-thread].

/// The path that `text` names, as the system's own calls take it.
std::filesystem::path PathOf(std::string_view text);

/// The text of a path that the system gave.
std::string TextOf(const std::filesystem::path& path);

/// The text of a path that a plug-in's host gave: on Windows hosts use its code page, some UTF-8.
std::string TextOfHostsPath(std::string_view path);

/// True for a path that does not depend on the current folder.
bool IsAbsolutePath(std::string_view text);

/// The file of the shared object or program that holds this code; empty when the system does not say.
std::string FileOfThisCode();

} // namespace vocafade
