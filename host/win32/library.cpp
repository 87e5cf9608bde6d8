// SPDX-License-Identifier: MIT
#include "host/library.h"

#include "base/path.h"
#include "host/host_error.h"

#include <string>
#include <windows.h>

namespace vocafade::host {

void* OpenLibrary(const std::filesystem::path& file) {
    // The libraries that it needs are looked for beside it first.
    if (void* library = ::LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH))
        return library;
    throw HostError("the plug-in cannot be loaded: error " + std::to_string(::GetLastError()) + " for '" +
                    TextOf(file) + "'");
}

void* FindInLibrary(void* library, const char* name) {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

void CloseLibrary(void* library) { ::FreeLibrary(static_cast<HMODULE>(library)); }

} // namespace vocafade::host
