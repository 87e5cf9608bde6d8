// SPDX-License-Identifier: MIT
#include "persistence/settings_store.h"

#include "base/file.h"
#include "base/file_replacement.h"
#include "persistence/settings_folder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace vocafade {
namespace {

namespace fs = std::filesystem;

/// Longer names are cut to this and told apart by a number; file systems take 255 bytes.
constexpr std::size_t kLongestName = 180;
/// More than this is no settings file, and is neither read nor replaced.
constexpr std::int64_t kLargestFile = 64 * 1024 * 1024;

/// 64-bit FNV-1a, the constants as published.
std::uint64_t Hash(std::string_view text) {
    std::uint64_t hash = 14695981039346656037u;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
    }
    return hash;
}

/// A file name that stands for `name` alone and cannot lead anywhere.
std::string SafeFileName(std::string_view name) {
    std::string safe = PercentEncode(name, "-_.");
    if (!safe.empty() && safe.front() == '.') safe.replace(0, 1, "%2E");
    if (safe.size() > kLongestName) {
        // No encoded name has a "~", so a shortened one is never another's own.
        safe.resize(kLongestName - 17);
        safe += '~';
        safe += std::to_string(Hash(name));
    }
    return safe;
}

std::string SystemFolder() {
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

/// What tells this machine from others that mount the same folders.
std::string HostName() {
    std::string id;
    std::ifstream("/etc/machine-id") >> id;
    if (!id.empty()) return id;
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) == 0 && name[0] != 0) return name.data();
    return "localhost";
}

/// Nothing when the file is there and cannot be read, so that it is not replaced by an emptier one.
std::optional<SettingsDocument> ReadDocument(const std::string& path) {
    CFile file;
    if (!file.Open(path.c_str(), CFile::modeRead)) {
        if (errno == ENOENT || errno == ENOTDIR) return SettingsDocument();
        return std::nullopt;
    }
    const std::int64_t length = file.GetLength();
    if (length > kLargestFile) return std::nullopt;
    std::string text(static_cast<std::size_t>(length), '\0');
    if (file.Read(text.data(), text.size()) != text.size()) return std::nullopt;
    return SettingsDocument(text);
}

/// Held by one process and thread at a time; given back even by a process that is killed.
class FileLock {
  public:
    explicit FileLock(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644)) {
        while (descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX) != 0) {
            if (errno == EINTR) continue;
            ::close(descriptor_);
            descriptor_ = -1;
        }
    }
    ~FileLock() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    bool held() const { return descriptor_ >= 0; }

  private:
    int descriptor_;
};

} // namespace

std::optional<std::string> CurrentApplication() {
    std::error_code error;
    std::string name = fs::read_symlink("/proc/self/exe", error).filename().string();
    // So a program shows that was updated while it runs.
    constexpr std::string_view deleted = " (deleted)";
    if (name.ends_with(deleted)) name.resize(name.size() - deleted.size());
    if (error || name.empty()) return std::nullopt;
    return name;
}

std::string SettingsStore::Path(SettingsScope scope) const {
    const bool user = scope == SettingsScope::userAnyHost || scope == SettingsScope::userThisHost;
    const bool thisHost = scope == SettingsScope::userThisHost || scope == SettingsScope::anyUserThisHost;
    const std::string root = user ? FindConfigurationFolder() : SystemFolder();
    if (root.empty() || application_.empty()) return {};
    const std::string host = thisHost ? "by-host/" + SafeFileName(HostName()) + "/" : "";
    return root + "/vocafade/settings/" + host + SafeFileName(application_) + ".settings";
}

SettingsDocument SettingsStore::Read(SettingsScope scope) const {
    const std::string path = Path(scope);
    if (path.empty()) return {};
    return ReadDocument(path).value_or(SettingsDocument());
}

bool SettingsStore::Change(SettingsScope scope, const std::function<void(SettingsDocument&)>& change) const {
    const std::string path = Path(scope);
    if (path.empty() || !MakeFolders(fs::path(path).parent_path().string())) return false;
    const FileLock lock(path + ".lock");
    if (!lock.held()) return false;
    std::optional<SettingsDocument> document = ReadDocument(path);
    if (!document) return false;
    change(*document);
    const std::string text = document->Text();
    FileReplacement replacement;
    return replacement.Begin(path) && replacement.file().Write(text.data(), text.size()) &&
           replacement.Commit();
}

} // namespace vocafade
