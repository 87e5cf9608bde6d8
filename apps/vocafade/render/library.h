// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace vocafade::command {

/// What lies in a collection's folders, each list in the order of its names.
struct Library {
    struct File {
        std::filesystem::path path;
        std::filesystem::path place; ///< the same, seen from the folder that was named
    };
    std::vector<File> songs;  ///< by the endings of their names
    std::vector<File> others; ///< other files with content
    /// What is no file: links to folders, broken links, devices, sockets.
    std::vector<std::filesystem::path> leftOut;
    /// Folders that cannot be read, with the reason.
    std::vector<std::string> unread;
};

/// Walks through `roots` and all that is below them, but not into `output`, which may lie inside, and not through
/// links to folders. A root that is a file counts as one of a folder's. Hidden files are no songs. Throws
/// `UsageError` when `output` is one of the roots.
Library WalkLibrary(std::span<const std::string> roots, const std::filesystem::path& output);

} // namespace vocafade::command
