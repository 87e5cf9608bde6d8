// SPDX-License-Identifier: MIT
#include "persistence/settings_places.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vocafade {
namespace {

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

/// Opens a lock file, which need not be ours: one that an administrator's program made in the user's folder
/// can be read at least, or else taken away. Negative when there is no way.
int OpenLockFile(const std::string& path) {
    constexpr int flags = O_CREAT | O_CLOEXEC | O_NOFOLLOW;
    int descriptor = ::open(path.c_str(), O_RDWR | flags, 0644); // networks lock only what can be written
    if (descriptor < 0 && errno == EACCES) descriptor = ::open(path.c_str(), O_RDONLY | flags, 0644);
    if (descriptor < 0 && errno == EACCES && ::unlink(path.c_str()) == 0)
        descriptor = ::open(path.c_str(), O_RDWR | flags, 0644);
    return descriptor;
}

/// True when `path` still names the open file: another process may have taken it away meanwhile.
bool StillNames(const std::string& path, int descriptor) {
    struct stat named {
    }, held{};
    return ::stat(path.c_str(), &named) == 0 && ::fstat(descriptor, &held) == 0 &&
           named.st_dev == held.st_dev && named.st_ino == held.st_ino;
}

} // namespace

std::string FindConfigurationFolder() {
    // A relative path counts as unset: it would follow the host's current directory around.
    const char* config = std::getenv("XDG_CONFIG_HOME"); // NOLINT(concurrency-mt-unsafe)
    if (config != nullptr && config[0] == '/') return config;
    const std::string home = HomeFolder();
    return home.empty() ? home : home + "/.config";
}

std::string SystemConfigurationFolder() {
    const char* folders =
        std::getenv("XDG_CONFIG_DIRS"); // NOLINT(concurrency-mt-unsafe): nothing here changes it
    std::string_view rest = folders != nullptr ? folders : "";
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        if (folder.substr(0, 1) == "/") return std::string(folder);
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
    }
    return "/etc/xdg";
}

std::string NameOfMachine() {
    std::string id;
    std::ifstream("/etc/machine-id") >> id;
    if (!id.empty()) return id;
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) == 0 && name[0] != 0) return name.data();
    return "localhost";
}

std::optional<std::string> CurrentApplication() {
    std::error_code error;
    std::string name = std::filesystem::read_symlink("/proc/self/exe", error).filename().string();
    // So a program shows that was updated while it runs.
    constexpr std::string_view deleted = " (deleted)";
    if (name.ends_with(deleted)) name.resize(name.size() - deleted.size());
    if (error || name.empty()) return std::nullopt;
    return name;
}

bool HoldLock(CFile& file, const std::string& path) {
    for (;;) {
        const int descriptor = OpenLockFile(path);
        if (descriptor < 0 || !file.Attach(descriptor, CFile::modeRead) || !file.Lock()) return false;
        if (StillNames(path, descriptor)) return true;
    }
}

} // namespace vocafade
