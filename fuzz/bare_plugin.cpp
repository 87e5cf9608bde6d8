// SPDX-License-Identifier: MIT
// The effect without its editor as a shared object, for what can be tried only through a host.
#include "effect/avocafade.h"
#include "vst/opcodes.h"

extern "C" __attribute__((visibility("default"))) vocafade::AEffect*
VSTPluginMain(vocafade::audioMasterCallback host) {
    using namespace vocafade;
    if (host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;
    return (new AVocafade(host))->getAeffect();
}
