// SPDX-License-Identifier: MIT
#include "base/win32/wide_text.h"

#include <cerrno>
#include <windows.h>

namespace vocafade::win32 {

std::wstring FromCodePage(unsigned codePage, std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0)), L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::wstring Wide(std::string_view utf8) { return FromCodePage(CP_UTF8, utf8); }

std::string Narrow(std::wstring_view wide) {
    const int size = static_cast<int>(wide.size());
    const auto convert = [&](char* to, int room) {
        return ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, to, room, nullptr, nullptr);
    };
    std::string utf8(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(utf8.data(), static_cast<int>(utf8.size()));
    return utf8;
}

std::string Variable(const wchar_t* name) {
    std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return Narrow(value);
}

bool FailWithErrno() {
    switch (::GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
        errno = ENOENT;
        break;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
        errno = EACCES;
        break;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        errno = ENOSPC;
        break;
    default:
        errno = EIO;
        break;
    }
    return false;
}

} // namespace vocafade::win32
