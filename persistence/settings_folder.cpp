// SPDX-License-Identifier: MIT
#include "persistence/settings_folder.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <pwd.h>
#include <unistd.h>

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

std::string HomeFolder() {
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): nothing here changes it
    if (home != nullptr && home[0] == '/') return home;
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 4096> text{};
    if (::getpwuid_r(::getuid(), &entry, text.data(), text.size(), &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr) {
        return found->pw_dir;
    }
    return {};
}

} // namespace

std::string FindConfigurationFolder() {
    // A relative path counts as unset: it would follow the host's current directory around.
    const char* config = std::getenv("XDG_CONFIG_HOME"); // NOLINT(concurrency-mt-unsafe)
    if (config != nullptr && config[0] == '/') return config;
    const std::string home = HomeFolder();
    return home.empty() ? home : home + "/.config";
}

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
