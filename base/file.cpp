// SPDX-License-Identifier: MIT
#include "base/file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocafade {
namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

const char* StreamMode(unsigned flags) {
    if ((flags & CFile::modeReadWrite) != 0) return "r+b";
    return (flags & CFile::modeWrite) != 0 ? "wb" : "rb";
}

} // namespace

std::string PathFromUrlOrPath(const char* urlOrPath) {
    constexpr std::string_view scheme = "file://";
    std::string_view text = urlOrPath != nullptr ? urlOrPath : "";
    if (text.substr(0, scheme.size()) != scheme) return std::string(text);
    text.remove_prefix(scheme.size());
    const std::size_t path = text.find('/'); // a host name may stand before the path
    text.remove_prefix(path == std::string_view::npos ? text.size() : path);

    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            decoded += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

CFile::~CFile() {
    if (stream_ != nullptr) std::fclose(stream_);
}

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

void CFile::Close() {
    if (stream_ != nullptr) std::fclose(stream_);
    stream_ = nullptr;
}

std::size_t CFile::Read(void* buffer, std::size_t count) {
    if (stream_ == nullptr || count == 0) return 0;
    if (last_ == Last::write) ::fseeko(stream_, 0, SEEK_CUR); // the C library wants a seek between the two
    last_ = Last::read;
    return std::fread(buffer, 1, count, stream_);
}

bool CFile::Write(const void* buffer, std::size_t count) {
    if (stream_ == nullptr) return false;
    if (last_ == Last::read) ::fseeko(stream_, 0, SEEK_CUR);
    last_ = Last::write;
    // The C library takes no null pointer, not even for no bytes.
    if (count > 0 && std::fwrite(buffer, 1, count, stream_) != count) failed_ = true;
    return !failed_;
}

bool CFile::Seek(std::int64_t offset, SeekPosition from) {
    if (stream_ == nullptr) return false;
    constexpr int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    last_ = Last::none;
    return ::fseeko(stream_, offset, whence[from]) == 0;
}

std::int64_t CFile::GetPosition() const { return stream_ != nullptr ? ::ftello(stream_) : 0; }

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
