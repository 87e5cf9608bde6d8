// SPDX-License-Identifier: MIT
#include "effect/avocafade.h"
#include "plugin/instance.h"
#include "vst/opcodes.h"

namespace vocafade {

/// [main-thread] Makes one effect for the host behind `audioMaster`. The descriptor's `effClose` deletes it.
AudioEffect* createEffectInstance(audioMasterCallback audioMaster) {
    return MakeInstance(audioMaster).release();
}

} // namespace vocafade

#if defined(_WIN32) // there the list of exports says it alone
#define VOCAFADE_EXPORT
#else
#define VOCAFADE_EXPORT __attribute__((visibility("default")))
#endif

/// [main-thread] The one exported symbol. Null when there is no host callback or the host is older than the
/// interface's second version (it answers 0 when asked for its own).
extern "C" VOCAFADE_EXPORT vocafade::AEffect* VSTPluginMain(vocafade::audioMasterCallback audioMaster) {
    using namespace vocafade;
    if (audioMaster == nullptr) return nullptr;
    if (audioMaster(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;
    AudioEffect* effect = createEffectInstance(audioMaster);
    return effect != nullptr ? effect->getAeffect() : nullptr;
}
