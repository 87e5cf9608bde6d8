// SPDX-License-Identifier: MIT
#include "plugin/instance.h"

#include "editor/vocafade_editor.h"
#include "effect/avocafade.h"
#include "plugin/plugin_resources.h"

namespace vocafade {

std::unique_ptr<AVocafade> MakeInstance(audioMasterCallback audioMaster) {
    PluginResources::Register();
    return std::make_unique<AVocafade>(audioMaster, MakeVocafadeEditor);
}

} // namespace vocafade
