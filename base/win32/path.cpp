// SPDX-License-Identifier: MIT
#include "base/path.h"

#include "base/utf8.h"
#include "base/win32/wide_text.h"

#include <algorithm>
#include <windows.h>

namespace vocafade {
namespace {

/// Longest path that the system has, in UTF-16 units.
constexpr DWORD kLongestPath = 32768;

} // namespace

std::filesystem::path PathOf(std::string_view text) { return win32::Wide(text); }

std::string TextOf(const std::filesystem::path& path) {
    std::string text = win32::Narrow(path.native());
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

std::string TextOfHostsPath(std::string_view path) {
    const bool utf8 = ValidUtf8(path) == path;
    return TextOf(utf8 ? win32::Wide(path) : win32::FromCodePage(CP_ACP, path));
}

bool IsAbsolutePath(std::string_view text) { return PathOf(text).is_absolute(); }

std::string FileOfThisCode() {
    HMODULE module = nullptr;
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (::GetModuleHandleExW(flags, reinterpret_cast<const wchar_t*>(&FileOfThisCode), &module) == 0)
        return {};
    std::wstring file(kLongestPath, L'\0');
    file.resize(::GetModuleFileNameW(module, file.data(), kLongestPath));
    return TextOf(file);
}

} // namespace vocafade
