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
#include <sys/stat.h>
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
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
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
    errno = EFBIG;
    if (length > kLargestFile) return std::nullopt;
    std::string text(static_cast<std::size_t>(length), '\0');
    errno = EIO; // when the file ends early, which is no error to the system
    if (file.Read(text.data(), text.size()) != text.size()) return std::nullopt;
    return SettingsDocument(text);
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

/// Opens the lock file `path` as `file` and waits until nobody else holds it. It is given back when `file` is
/// closed, even by a process that is killed.
bool HoldLock(CFile& file, const std::string& path) {
    for (;;) {
        const int descriptor = OpenLockFile(path);
        if (descriptor < 0 || !file.Attach(descriptor, CFile::modeRead) || !file.Lock()) return false;
        if (StillNames(path, descriptor)) return true;
    }
}

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

std::optional<SettingsDocument> SettingsStore::Read(SettingsScope scope) const {
    const std::string path = Path(scope);
    return path.empty() ? SettingsDocument() : ReadDocument(path);
}

bool SettingsStore::Change(SettingsScope scope, const std::function<void(SettingsDocument&)>& change) const {
    const std::string path = Path(scope);
    errno = ENOENT; // without a place for it
    if (path.empty() || !MakeFolders(fs::path(path).parent_path().string())) return false;
    CFile lock;
    if (!HoldLock(lock, path + ".lock")) return false;
    std::optional<SettingsDocument> document = ReadDocument(path);
    if (!document) return false;
    change(*document);
    const std::string text = document->Text();
    FileReplacement replacement;
    return replacement.Begin(path) && replacement.file().Write(text.data(), text.size()) &&
           replacement.Commit();
}

} // namespace vocafade
