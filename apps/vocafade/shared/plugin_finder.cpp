// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/plugin_finder.h"

#include "apps/vocafade/shared/failures.h"

#include <cstdlib>
#include <sstream>
#include <system_error>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

std::string Environment(const char* name) {
    const char* value =
        std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing here changes the environment
    return value != nullptr ? value : "";
}

} // namespace

std::vector<fs::path> PluginPlaces(const fs::path& executable) {
    const fs::path bundle = fs::path("Vocafade.vst") / "Vocafade.so";
    const fs::path beside = executable.parent_path();
    const fs::path prefix = beside.parent_path();
    std::vector<fs::path> places = {beside / bundle, prefix / "lib" / "vst" / bundle};
#ifdef VOCAFADE_INSTALL_LIBDIR // relative to the prefix, for example lib/x86_64-linux-gnu
    places.push_back(prefix / VOCAFADE_INSTALL_LIBDIR / "vst" / bundle);
#endif
    std::istringstream folders(Environment("VST_PATH"));
    for (std::string folder; std::getline(folders, folder, ':');)
        if (!folder.empty()) places.push_back(fs::path(folder) / bundle);
    const std::string home = Environment("HOME");
    if (!home.empty()) places.push_back(fs::path(home) / ".vst" / bundle);
    places.push_back(fs::path("/usr/local/lib/vst") / bundle);
    places.push_back(fs::path("/usr/lib/vst") / bundle);
    return places;
}

fs::path FindPlugin(const std::string& chosen) {
    if (!chosen.empty()) return chosen;
    std::error_code error;
    const std::vector<fs::path> places = PluginPlaces(fs::read_symlink("/proc/self/exe", error));
    std::string list;
    for (const fs::path& place : places) {
        if (fs::is_regular_file(place, error)) return place;
        list += "\n  " + place.string();
    }
    throw Failure("the plug-in was not found; name it with --plugin FILE. Looked for:" + list);
}

} // namespace vocafade::command
