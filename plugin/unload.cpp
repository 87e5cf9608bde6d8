// SPDX-License-Identifier: MIT
// What the C++ library that is linked in takes for itself when it is loaded, and does not give back by
// itself.

namespace __gnu_cxx {
/// Frees the library's reserve for exceptions that are thrown when memory has run out, 72 kB.
void __freeres();
} // namespace __gnu_cxx

namespace {

/// Runs when the host lets go of the shared object, or ends; nothing of ours is being thrown then.
__attribute__((destructor)) void GiveBackReserve() { __gnu_cxx::__freeres(); }

} // namespace
