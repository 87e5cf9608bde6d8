// SPDX-License-Identifier: MIT
#include "base/file_replacement.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <random>
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

void SyncFolder(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor); // the rename itself then survives a power cut
    ::close(descriptor);
}

/// Gives the new file the permissions of the one that it will replace.
void KeepMode(const std::string& path, int descriptor) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) ::fchmod(descriptor, status.st_mode & 07777);
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
    const std::string name = target_.substr(target_.rfind('/') + 1).substr(0, kKeptOfName);
    const std::string stem = FolderOf(target_) + "." + name + ".";
    std::random_device random;
    int descriptor = -1;
    for (int attempt = 0; attempt < 100 && descriptor < 0; ++attempt) {
        temporary_ = stem + std::to_string(random()) + ".tmp";
        descriptor = ::open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST) break;
    }
    if (descriptor < 0) {
        temporary_.clear();
        return false;
    }
    KeepMode(target_, descriptor);
    return file_.Attach(descriptor, CFile::modeReadWrite);
}

bool FileReplacement::Commit() {
    if (temporary_.empty()) return false;
    if (!file_.FlushToDisk()) {
        Discard();
        return false;
    }
    file_.Close();
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
        Discard();
        return false;
    }
    temporary_.clear();
    SyncFolder(FolderOf(target_));
    return true;
}

bool MakeFolders(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return std::filesystem::is_directory(folder, error);
}

} // namespace vocafade
