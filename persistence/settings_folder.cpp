// SPDX-License-Identifier: MIT
#include "persistence/settings_folder.h"

#include "persistence/settings_places.h"

#include <array>
#include <cstring>
#include <mutex>

namespace vocafade {
namespace {

/// One for the process: instances made on several threads share it.
struct FolderBuffer {
    std::mutex lock;
    std::array<char, 2048> path{};
};

FolderBuffer& Buffer() {
    static FolderBuffer buffer;
    return buffer;
}

} // namespace

void GetMy_SHFOLDER_PathName() {
    std::string folder = FindConfigurationFolder();
    if (folder.empty()) return;
    if (folder.back() != '/') folder += '/';
    FolderBuffer& buffer = Buffer();
    if (folder.size() >= buffer.path.size()) return;
    const std::lock_guard hold(buffer.lock);
    std::memcpy(buffer.path.data(), folder.c_str(), folder.size() + 1);
}

std::string SettingsFolder() {
    FolderBuffer& buffer = Buffer();
    const std::lock_guard hold(buffer.lock);
    return buffer.path.data();
}

} // namespace vocafade
