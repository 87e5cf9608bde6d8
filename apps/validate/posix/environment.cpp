// SPDX-License-Identifier: MIT
#include "apps/validate/environment.h"

#include <cstdlib>
#include <stdexcept>

namespace vocafade::validate {

namespace fs = std::filesystem;

std::vector<std::string> Arguments(int argumentCount, char** arguments) {
    return {arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount};
}

fs::path ProgramFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

fs::path MakeOwnFolder() {
    std::string folder = (fs::temp_directory_path() / "vocafade-validate-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder can be made");
    return folder;
}

void KeepSettingsIn(const fs::path& folder) {
    const auto set = [](const char* name, const fs::path& value, int overwrite = 1) {
        ::setenv(name, value.c_str(), overwrite); // NOLINT(concurrency-mt-unsafe): there is one thread
    };
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): there is one thread
    if (home != nullptr) set("XAUTHORITY", std::string(home) + "/.Xauthority", 0); // the display's key
    set("HOME", folder);
    set("XDG_CONFIG_HOME", folder / "config");
    set("XDG_DATA_HOME", folder / "data");
    set("XDG_CACHE_HOME", folder / "cache");
}

} // namespace vocafade::validate
