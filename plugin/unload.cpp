// SPDX-License-Identifier: MIT
// Being loaded and unloaded over and over, as hosts do that scan, must cost their process nothing. What our
// own code holds goes with it; two libraries that come with it need a hand.

#include <dlfcn.h>

namespace __gnu_cxx { // NOLINT(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp): the library's own
/// Frees the library's reserve for exceptions that are thrown when memory has run out, 72 kB.
void __freeres(); // NOLINT(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp)
} // namespace __gnu_cxx

namespace {

/// Keeps the drawing libraries in the process once they are there. Some of what they take for themselves when
/// they are loaded (pixman 12 kB, fontconfig its lists of fonts) is never given back, so each time anew would
/// cost as much again; left loaded, they find it where they put it.
__attribute__((constructor)) void KeepLibraries() {
    ::dlopen("libpangocairo-1.0.so.0", RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE); // and what it links
}

/// Runs when the host lets go of the shared object, or ends; nothing of ours is being thrown then.
__attribute__((destructor)) void GiveBack() { __gnu_cxx::__freeres(); }

} // namespace
