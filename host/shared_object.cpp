// SPDX-License-Identifier: MIT
#include "host/shared_object.h"

#include "base/path.h"
#include "host/host_error.h"
#include "host/library.h"

#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace vocafade::host {
namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
constexpr char kSuffix[] = ".dll";
#else
constexpr char kSuffix[] = ".so";
#endif

/// The shared object of a bundle: the one with the bundle's name, else the only one there is.
fs::path InsideBundle(const fs::path& bundle) {
    fs::path named = bundle / (bundle.stem() += kSuffix);
    std::error_code error;
    if (fs::is_regular_file(named, error)) return named;
    std::vector<fs::path> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(bundle, error))
        if (entry.path().extension() == kSuffix) found.push_back(entry.path());
    if (found.size() == 1) return found.front();
    throw HostError("the folder '" + TextOf(bundle) + "' is no plug-in bundle: it has no '" +
                    TextOf(named.filename()) + "'");
}

fs::path Resolve(const fs::path& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (!absolute.has_filename()) absolute = absolute.parent_path(); // "Name.vst/"
    const fs::file_status status = fs::status(absolute, error);
    if (!fs::exists(status)) throw HostError("there is no plug-in '" + TextOf(path) + "'");
    return fs::is_directory(status) ? InsideBundle(absolute) : absolute;
}

} // namespace

SharedObject::SharedObject(const fs::path& path) : file_(Resolve(path)) {
    handle_ = OpenLibrary(file_);
    for (const char* name : {"VSTPluginMain", "main"}) {
        entry_ = reinterpret_cast<EntryPoint>(FindInLibrary(handle_, name));
        if (entry_ != nullptr) return;
    }
    CloseLibrary(std::exchange(handle_, nullptr));
    throw HostError("the file '" + TextOf(file_) +
                    "' is no VST 2.4 plug-in: it exports neither VSTPluginMain nor main");
}

SharedObject::~SharedObject() {
    if (handle_ != nullptr) CloseLibrary(handle_);
}

std::string SharedObject::folder() const { return TextOf(file_.parent_path() / ""); }

} // namespace vocafade::host
