// SPDX-License-Identifier: MIT
#include "base/file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocafade {
namespace {

const char* StreamMode(unsigned flags) {
    if ((flags & CFile::modeReadWrite) != 0) return "r+b";
    return (flags & CFile::modeWrite) != 0 ? "wb" : "rb";
}

} // namespace

bool CFile::Open(const char* path, unsigned flags) {
    Close();
    const std::string name = PathFromUrlOrPath(path);
    struct stat status {};
    int access = O_RDONLY;
    if ((flags & modeReadWrite) != 0) {
        access = O_RDWR;
    } else if ((flags & modeWrite) != 0) {
        access = O_WRONLY;
    }
    if ((flags & modeCreate) != 0) {
        access |= O_CREAT | O_TRUNC; // the latter where the file cannot be removed
        // Other names of the file keep its content. Devices and links are not removed.
        if (::lstat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode)) ::unlink(name.c_str());
    }
    // Without O_NONBLOCK a pipe under that name would hold up the caller until somebody writes to it.
    const int descriptor = ::open(name.c_str(), access | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) return false;
    const bool known = ::fstat(descriptor, &status) == 0;
    if (!known || S_ISDIR(status.st_mode) || S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) {
        ::close(descriptor);
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return false;
    }
    return Attach(descriptor, flags);
}

bool CFile::Attach(int descriptor, unsigned flags) {
    Close();
    stream_ = ::fdopen(descriptor, StreamMode(flags));
    failed_ = false;
    last_ = Last::none;
    if (stream_ == nullptr) ::close(descriptor);
    return stream_ != nullptr;
}

bool CFile::Lock() {
    if (stream_ == nullptr) return false;
    while (::flock(::fileno(stream_), LOCK_EX) != 0) {
        if (errno == ENOLCK || errno == EOPNOTSUPP) return true;
        if (errno != EINTR) return false;
    }
    return true;
}

std::int64_t CFile::GetLength() const {
    if (stream_ == nullptr) return 0;
    std::fflush(stream_);
    struct stat status {};
    return ::fstat(::fileno(stream_), &status) == 0 ? status.st_size : 0;
}

bool CFile::FlushToDisk() {
    // Moving about writes too, and leaves a failure of that only in the stream's own mark.
    if (stream_ == nullptr || failed_ || std::ferror(stream_) != 0) return false;
    return std::fflush(stream_) == 0 && ::fsync(::fileno(stream_)) == 0;
}

bool CFileFind::FindFile(const char* path) const {
    struct stat status {};
    return ::stat(PathFromUrlOrPath(path).c_str(), &status) == 0;
}

} // namespace vocafade
