// SPDX-License-Identifier: MIT
#include "base/file.h"

#include "base/path.h"
#include "base/win32/patience.h"
#include "base/win32/wide_text.h"

#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace vocafade {
namespace {

HANDLE HandleOf(std::FILE* stream) { return reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream))); }

} // namespace

bool CFile::Open(const char* path, unsigned flags) {
    Close();
    const std::filesystem::path name = PathOf(PathFromUrlOrPath(path));
    const bool create = (flags & modeCreate) != 0;
    DWORD access = GENERIC_READ;
    if ((flags & modeReadWrite) != 0) {
        access = GENERIC_READ | GENERIC_WRITE;
    } else if ((flags & modeWrite) != 0) {
        access = GENERIC_WRITE;
    }
    if (win32::IsFolder(name)) {
        errno = EISDIR;
        return false;
    }
    if (create) ::DeleteFileW(name.c_str()); // other names of the file keep its content
    HANDLE file = INVALID_HANDLE_VALUE;
    win32::BePatient(100, [&] {
        // Sharing everything, so that nobody who saves has to wait for a reader of ours.
        file = ::CreateFileW(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                             nullptr, create ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        return file != INVALID_HANDLE_VALUE;
    });
    if (file == INVALID_HANDLE_VALUE) return win32::FailWithErrno();
    if (::GetFileType(file) != FILE_TYPE_DISK) {
        ::CloseHandle(file);
        errno = EINVAL;
        return false;
    }
    return Attach(::_open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_BINARY), flags);
}

bool CFile::Attach(int descriptor, unsigned flags) {
    Close();
    const char* mode = (flags & modeReadWrite) != 0 ? "r+b" : (flags & modeWrite) != 0 ? "wb" : "rb";
    stream_ = ::_fdopen(descriptor, mode);
    failed_ = false;
    last_ = Last::none;
    if (stream_ == nullptr) ::_close(descriptor);
    return stream_ != nullptr;
}

bool CFile::Lock() {
    if (stream_ == nullptr) return false;
    OVERLAPPED fromStart{};
    if (::LockFileEx(HandleOf(stream_), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &fromStart) != 0) return true;
    return ::GetLastError() == ERROR_NOT_SUPPORTED || ::GetLastError() == ERROR_INVALID_FUNCTION;
}

std::int64_t CFile::GetLength() const {
    if (stream_ == nullptr) return 0;
    if (last_ == Last::write) std::fflush(stream_); // which would drop what was read ahead
    LARGE_INTEGER size{};
    return ::GetFileSizeEx(HandleOf(stream_), &size) != 0 ? size.QuadPart : 0;
}

bool CFile::FlushToDisk() {
    // Moving about writes too, and leaves a failure of that only in the stream's own mark.
    if (stream_ == nullptr || failed_ || std::ferror(stream_) != 0) return false;
    return std::fflush(stream_) == 0 && ::FlushFileBuffers(HandleOf(stream_)) != 0;
}

bool CFileFind::FindFile(const char* path) const {
    return ::GetFileAttributesW(PathOf(PathFromUrlOrPath(path)).c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace vocafade
