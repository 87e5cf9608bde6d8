// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace vocafade::command {

/// [any-thread] Copies a file with its time, whole or not at all; makes the folders that are missing. Throws
/// `Failure`.
void CopyFile(const std::filesystem::path& from, const std::filesystem::path& to);

} // namespace vocafade::command
