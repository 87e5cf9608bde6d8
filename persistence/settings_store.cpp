// SPDX-License-Identifier: MIT
#include "persistence/settings_store.h"

#include "base/file.h"
#include "base/file_replacement.h"
#include "persistence/settings_places.h"

#include <cerrno>
#include <cstdint>

namespace vocafade {
namespace {

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

} // namespace

std::string SettingsStore::Path(SettingsScope scope) const {
    const bool user = scope == SettingsScope::userAnyHost || scope == SettingsScope::userThisHost;
    const bool thisHost = scope == SettingsScope::userThisHost || scope == SettingsScope::anyUserThisHost;
    const std::string root = user ? FindConfigurationFolder() : SystemConfigurationFolder();
    if (root.empty() || application_.empty()) return {};
    const std::string host = thisHost ? "by-host/" + SafeFileName(NameOfMachine()) + "/" : "";
    return root + "/vocafade/settings/" + host + SafeFileName(application_) + ".settings";
}

std::optional<SettingsDocument> SettingsStore::Read(SettingsScope scope) const {
    const std::string path = Path(scope);
    return path.empty() ? SettingsDocument() : ReadDocument(path);
}

bool SettingsStore::Change(SettingsScope scope, const std::function<void(SettingsDocument&)>& change) const {
    const std::string path = Path(scope);
    errno = ENOENT; // without a place for it
    if (path.empty() || !MakeFolders(path.substr(0, path.rfind('/')))) return false;
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
