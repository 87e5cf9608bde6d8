// SPDX-License-Identifier: MIT
#include "ui/platform/x11/resident_libraries.h"

#include <dlfcn.h>

namespace vocafade::platform::x11 {

void KeepLibrariesResident() {
    // It stands above all the others, which stay with it. The handle is deliberately not kept.
    [[maybe_unused]] static void* const top =
        ::dlopen("libpangocairo-1.0.so.0", RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace vocafade::platform::x11
