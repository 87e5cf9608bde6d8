// SPDX-License-Identifier: MIT
#include "plugin/resources.h"

#include "base/cstring.h"
#include "base/file.h"
#include "base/path.h"

#include <cstring>

namespace vocafade {

std::string ResourceFolder() {
    std::string path = FileOfThisCode();
    if (path.empty()) return {};
    const std::size_t slash = path.rfind('/');
    path.resize(slash == std::string::npos ? 0 : slash + 1);
    return path + "Resources/";
}

std::optional<std::string> getResourcePath(int id, const char* bundleIdentifier) {
    if (bundleIdentifier == nullptr || std::strcmp(bundleIdentifier, kBundleIdentifier) != 0) return {};
    CString name;
    name.Format("bmp%05d.png", id);
    const std::string path = ResourceFolder() + name.str();
    if (!CFileFind().FindFile(path.c_str())) return {};
    return path;
}

} // namespace vocafade
