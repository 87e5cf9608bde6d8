// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <sys/types.h>
#include <utility>

namespace vocafade::command {

/// [any-thread] The path under which one file is always the same, whether it exists or not.
std::filesystem::path Canonical(const std::filesystem::path& path);

/// [any-thread] What two names of one file have in common, hard links included; nothing when there is none.
std::optional<std::pair<dev_t, ino_t>> IdentityOf(const std::filesystem::path& path);

/// [any-thread] Throws `UsageError` when `target` is one of `inputs`, however it is spelt or linked, or "-".
/// Empty inputs are left out.
void CheckTarget(const std::filesystem::path& target, std::initializer_list<std::filesystem::path> inputs);

/// [any-thread] `CheckTarget` for a picture, whose name must end in ".png" (any case), the format in which
/// pictures are written.
void CheckPictureTarget(const std::filesystem::path& target, const std::filesystem::path& input);

} // namespace vocafade::command
