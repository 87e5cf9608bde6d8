// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace vocafade::host {

// A shared object of the system's, in memory. Everything here is [any-thread].

/// Loads it without giving its names to other libraries; throws `HostError` with the system's reason when that fails.
void* OpenLibrary(const std::filesystem::path& file);
/// What it exports under that name; null when there is no such thing.
void* FindInLibrary(void* library, const char* name);
/// Gives one `OpenLibrary` back.
void CloseLibrary(void* library);

} // namespace vocafade::host
