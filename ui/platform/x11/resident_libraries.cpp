// SPDX-License-Identifier: MIT
// Hosts load and unload the plug-in over and over when they scan; that must cost their process nothing.

#include <dlfcn.h>

namespace {

/// Keeps the libraries in the process once they are there. Some of what they take for themselves (pixman 12 kB,
/// fontconfig its lists of fonts, the input methods' library 9 kB for its encodings) is never given back, so each
/// time anew would cost as much again; left loaded, they find it where they put it.
__attribute__((constructor)) void KeepLibraries() {
    // cppcheck-suppress leakReturnValNotUsed ; it is never let go of, which is the point
    ::dlopen("libpangocairo-1.0.so.0", RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE); // and what it links
    // cppcheck-suppress leakReturnValNotUsed ; the same
    ::dlopen("libxcb-imdkit.so.1", RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace
