// SPDX-License-Identifier: MIT
#include "base/file_replacement.h"

#include "base/path.h"
#include "base/win32/patience.h"
#include "base/win32/wide_text.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <io.h>
#include <random>
#include <windows.h>

namespace vocafade {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kKeptOfName = 200; // file systems end at 255, and the rest of the name is ours
constexpr wchar_t kTemporarySuffix[] = L".tmp";
/// How long after its last byte an unfinished file is let alone, in the file system's units of 100 ns: on a network
/// its writer may not be seen to hold it.
constexpr std::uint64_t kTimeInDoubt = std::uint64_t{60} * 10'000'000;

/// Where writing to `path` would really end.
fs::path FollowLinks(const fs::path& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return path;
    const HANDLE file = ::CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return path;
    std::wstring target(32768, L'\0');
    target.resize(::GetFinalPathNameByHandleW(file, target.data(), static_cast<DWORD>(target.size()), 0));
    ::CloseHandle(file);
    return target.empty() ? path : fs::path(target);
}

/// What the names of all new files for `target` begin with; a number and the suffix follow.
std::wstring TemporaryPrefix(const fs::path& target) {
    return L"." + target.filename().native().substr(0, kKeptOfName) + L".";
}

bool IsTemporary(std::wstring_view name, std::wstring_view prefix) {
    if (!name.starts_with(prefix) || !name.ends_with(kTemporarySuffix)) return false;
    name.remove_prefix(prefix.size());
    name.remove_suffix(std::size(kTemporarySuffix) - 1);
    return !name.empty() && name.find_first_not_of(L"0123456789") == std::wstring_view::npos;
}

std::uint64_t Number(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

/// Removes what others began beside `target` and never finished. `now`: by the file system's clock. The system itself
/// refuses to remove what somebody still writes.
void RemoveLeftovers(const fs::path& target, std::uint64_t now) {
    const std::wstring prefix = TemporaryPrefix(target);
    if (prefix.size() > kKeptOfName) return; // other names may be cut to the same
    const fs::path folder = target.parent_path();
    WIN32_FIND_DATAW found{};
    const HANDLE search = ::FindFirstFileW((folder / (prefix + L"*")).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        if (IsTemporary(found.cFileName, prefix) && Number(found.ftLastWriteTime) + kTimeInDoubt < now)
            ::DeleteFileW((folder / found.cFileName).c_str());
    } while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
}

} // namespace

FileReplacement::~FileReplacement() { Discard(); }

void FileReplacement::Discard() {
    file_.Close();
    if (!temporary_.empty()) ::DeleteFileW(PathOf(temporary_).c_str());
    temporary_.clear();
}

bool FileReplacement::Begin(const std::string& path) {
    Discard();
    const fs::path target = FollowLinks(PathOf(PathFromUrlOrPath(path.c_str())));
    target_ = win32::Narrow(target.native());
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) {
        errno = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EISDIR : EACCES;
        return false;
    }
    const std::wstring prefix = TemporaryPrefix(target);
    std::random_device random;
    HANDLE file = INVALID_HANDLE_VALUE;
    fs::path temporary;
    for (int attempt = 0; attempt < 100 && file == INVALID_HANDLE_VALUE; ++attempt) {
        temporary = target.parent_path() / (prefix + std::to_wstring(random()) + kTemporarySuffix);
        file = ::CreateFileW(temporary.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                             CREATE_NEW, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH, nullptr);
        if (file == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_FILE_EXISTS) break;
    }
    if (file == INVALID_HANDLE_VALUE) return win32::FailWithErrno();
    temporary_ = win32::Narrow(temporary.native());
    return file_.Attach(::_open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_BINARY),
                        CFile::modeReadWrite);
}

bool FileReplacement::Commit() {
    if (temporary_.empty()) return false;
    if (!file_.FlushToDisk()) {
        Discard();
        return false;
    }
    file_.Close(); // an open file cannot be renamed
    const fs::path temporary = PathOf(temporary_);
    const fs::path target = PathOf(target_);
    WIN32_FILE_ATTRIBUTE_DATA written{};
    const bool timeKnown = ::GetFileAttributesExW(temporary.c_str(), GetFileExInfoStandard, &written) != 0;
    const bool renamed = win32::BePatient(2000, [&] {
        return ::MoveFileExW(temporary.c_str(), target.c_str(),
                             MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    });
    if (!renamed) {
        win32::FailWithErrno();
        Discard();
        return false;
    }
    temporary_.clear();
    if (timeKnown) RemoveLeftovers(target, Number(written.ftLastWriteTime));
    return true;
}

} // namespace vocafade
