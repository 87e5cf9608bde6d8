// SPDX-License-Identifier: MIT
#include "host/shared_object.h"

#include "host/host_error.h"

#include <dlfcn.h>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace vocafade::host {
namespace {

namespace fs = std::filesystem;

/// The shared object of a bundle: the one with the bundle's name, else the only one there is.
fs::path InsideBundle(const fs::path& bundle) {
    fs::path named = bundle / (bundle.stem().string() + ".so");
    std::error_code error;
    if (fs::is_regular_file(named, error)) return named;
    std::vector<fs::path> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(bundle, error))
        if (entry.path().extension() == ".so") found.push_back(entry.path());
    if (found.size() == 1) return found.front();
    throw HostError("the folder '" + bundle.string() + "' is no plug-in bundle: it has no '" +
                    named.filename().string() + "'");
}

fs::path Resolve(const fs::path& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (!absolute.has_filename()) absolute = absolute.parent_path(); // "Name.vst/"
    const fs::file_status status = fs::status(absolute, error);
    if (!fs::exists(status)) throw HostError("there is no plug-in '" + path.string() + "'");
    return fs::is_directory(status) ? InsideBundle(absolute) : absolute;
}

} // namespace

SharedObject::SharedObject(const fs::path& path) : file_(Resolve(path)) {
    handle_ = ::dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = ::dlerror(); // NOLINT(concurrency-mt-unsafe): per thread in every libc we meet
        throw HostError("the plug-in cannot be loaded: " +
                        std::string(reason != nullptr ? reason : "unknown"));
    }
    for (const char* name : {"VSTPluginMain", "main"}) {
        entry_ = reinterpret_cast<EntryPoint>(::dlsym(handle_, name));
        if (entry_ != nullptr) return;
    }
    ::dlclose(std::exchange(handle_, nullptr));
    throw HostError("the file '" + file_.string() +
                    "' is no VST 2.4 plug-in: it exports neither VSTPluginMain nor main");
}

SharedObject::~SharedObject() {
    if (handle_ != nullptr) ::dlclose(handle_);
}

} // namespace vocafade::host
