// SPDX-License-Identifier: MIT
#include "base/file_replacement.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vocafade {
namespace {

constexpr std::size_t kKeptOfName = 200; // bytes: file systems end at 255, and the rest of the name is ours

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

/// Where writing to `path` would really end: the last name in a chain of symbolic links.
std::string FollowLinks(std::string path) {
    for (int depth = 0; depth < 16; ++depth) {
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error) break;
        path = target.is_absolute() ? target.string() : FolderOf(path) + target.string();
    }
    return path;
}

constexpr char kTemporarySuffix[] = ".tmp";
/// How long after its last byte an unfinished file is let alone, locked or not: not every network's file
/// system shows the locks of other machines, and a lock is taken a moment after the file is made.
constexpr std::int64_t kSecondsInDoubt = 60;

/// What the names of all new files for `path` begin with; a number and the suffix follow.
std::string TemporaryPrefix(const std::string& path) {
    std::string prefix(1, '.');
    prefix.append(path, path.rfind('/') + 1,
                  kKeptOfName); // without a slash from the beginning: npos + 1 is 0
    return prefix += '.';
}

bool IsTemporary(const std::string& name, const std::string& prefix) {
    if (!name.starts_with(prefix) || !name.ends_with(kTemporarySuffix)) return false;
    const std::string number =
        name.substr(prefix.size(), name.size() - prefix.size() - sizeof kTemporarySuffix + 1);
    return !number.empty() && number.find_first_not_of("0123456789") == std::string::npos;
}

/// True when the process that began this file has ended, its lock with it, and nobody else holds it.
bool IsAbandoned(const std::string& path, std::int64_t now) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return false;
    struct stat status {};
    const bool abandoned = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                           status.st_mtim.tv_sec + kSecondsInDoubt < now &&
                           ::flock(descriptor, LOCK_SH | LOCK_NB) == 0;
    ::close(descriptor);
    return abandoned;
}

/// Removes what others began beside `target` and never finished. `now`: seconds by the file system's clock.
void RemoveLeftovers(const std::string& target, std::int64_t now) {
    const std::string prefix = TemporaryPrefix(target);
    if (prefix.size() > kKeptOfName) return; // other names may be cut to the same
    std::error_code error;
    std::filesystem::directory_iterator entry(FolderOf(target), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (!IsTemporary(entry->path().filename().string(), prefix)) continue;
        if (IsAbandoned(entry->path().string(), now)) ::unlink(entry->path().c_str());
    }
}

void SyncFolder(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor); // the rename itself then survives a power cut
    ::close(descriptor);
}

/// Gives the new file the owner and the permissions of the one that it will replace, as far as that is
/// allowed: what an administrator's host saves in a user's folder stays the user's.
void KeepOwnerAndMode(const std::string& path, int descriptor) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return;
    [[maybe_unused]] const int kept = ::fchown(descriptor, status.st_uid, status.st_gid);
    ::fchmod(descriptor, status.st_mode & 07777); // behind the owner, whose change takes some of them away
}

} // namespace

FileReplacement::~FileReplacement() { Discard(); }

void FileReplacement::Discard() {
    file_.Close();
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
    temporary_.clear();
}

bool FileReplacement::Begin(const std::string& path) {
    Discard();
    target_ = FollowLinks(PathFromUrlOrPath(path.c_str()));
    struct stat old {};
    if (::stat(target_.c_str(), &old) == 0 && !S_ISREG(old.st_mode)) { // a device must not be put aside
        errno = S_ISDIR(old.st_mode) ? EISDIR : EINVAL;
        return false;
    }
    const std::string stem = FolderOf(target_) + TemporaryPrefix(target_);
    std::random_device random;
    int descriptor = -1;
    for (int attempt = 0; attempt < 100 && descriptor < 0; ++attempt) {
        temporary_ = stem + std::to_string(random()) + kTemporarySuffix;
        descriptor = ::open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST) break;
    }
    if (descriptor < 0) {
        temporary_.clear();
        return false;
    }
    KeepOwnerAndMode(target_, descriptor);
    ::flock(descriptor, LOCK_EX | LOCK_NB); // lives as long as the file is open, and ends with the process
    return file_.Attach(descriptor, CFile::modeReadWrite);
}

bool FileReplacement::Commit() {
    if (temporary_.empty()) return false;
    if (!file_.FlushToDisk()) {
        Discard();
        return false;
    }
    struct stat written {};
    const bool timeKnown = ::stat(temporary_.c_str(), &written) == 0;
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
        Discard();
        return false;
    }
    temporary_.clear();
    file_.Close(); // and not before: its lock says that the new file is no leftover
    if (timeKnown) RemoveLeftovers(target_, written.st_mtim.tv_sec);
    SyncFolder(FolderOf(target_));
    return true;
}

} // namespace vocafade
