// SPDX-License-Identifier: MIT
#include "base/path.h"

#include <dlfcn.h>

namespace vocafade {

std::filesystem::path PathOf(std::string_view text) { return text; }

std::string TextOf(const std::filesystem::path& path) { return path.string(); }

std::string TextOfHostsPath(std::string_view path) { return std::string(path); }

bool IsAbsolutePath(std::string_view text) { return text.starts_with('/'); }

std::string FileOfThisCode() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&FileOfThisCode), &info) == 0 || info.dli_fname == nullptr)
        return {};
    return info.dli_fname;
}

} // namespace vocafade
