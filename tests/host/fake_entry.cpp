// SPDX-License-Identifier: MIT
// The entry point of a fake effect. FAKE_KIND picks what is wrong with it: 0 nothing, 1 it is called `main`, 2 it
// refuses, 3 its descriptor is no descriptor, 4 it throws.
#include "tests/host/fake_effect.h"

#include <stdexcept>

// C++ keeps the name `main` for programs, the linker does not.
extern "C" __attribute__((visibility("default"))) vocafade::AEffect*
FakeEntry(vocafade::audioMasterCallback host) __asm__(FAKE_ENTRY);

vocafade::AEffect* FakeEntry(vocafade::audioMasterCallback host) {
    static vocafade::AEffect broken{};
    if (FAKE_KIND == 2) return nullptr;
    if (FAKE_KIND == 3) return &broken;
    if (FAKE_KIND == 4) throw std::runtime_error("no");
    return vocafade::host::fake::Make(host);
}
