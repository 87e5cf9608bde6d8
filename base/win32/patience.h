// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <windows.h>

namespace vocafade::win32 {

/// [main-thread] Repeats `attempt` until it answers true, for as long as the system says that somebody else holds the
/// file: virus scanners, backups and programs that are just replacing it hold one for some milliseconds. Gives up
/// after `milliseconds`. True when an attempt did.
template <class Attempt>
bool BePatient(int milliseconds, Attempt attempt) {
    constexpr int kPause = 5;
    for (int left = milliseconds / kPause; !attempt(); --left) {
        const DWORD error = ::GetLastError();
        const bool held = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED ||
                          error == ERROR_LOCK_VIOLATION || error == ERROR_USER_MAPPED_FILE;
        if (!held || left == 0) return false;
        ::Sleep(kPause);
        ::SetLastError(error);
    }
    return true;
}

/// [any-thread] Whether a folder stands under that name.
inline bool IsFolder(const std::filesystem::path& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace vocafade::win32
