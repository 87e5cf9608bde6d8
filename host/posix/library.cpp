// SPDX-License-Identifier: MIT
#include "host/library.h"

#include "host/host_error.h"

#include <dlfcn.h>
#include <string>

namespace vocafade::host {

void* OpenLibrary(const std::filesystem::path& file) {
    void* library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library != nullptr) return library;
    const char* reason = ::dlerror(); // NOLINT(concurrency-mt-unsafe): per thread in every libc we meet
    throw HostError("the plug-in cannot be loaded: " + std::string(reason != nullptr ? reason : "unknown"));
}

void* FindInLibrary(void* library, const char* name) { return ::dlsym(library, name); }

void CloseLibrary(void* library) { ::dlclose(library); }

} // namespace vocafade::host
