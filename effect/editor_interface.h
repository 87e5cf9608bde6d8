// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vocafade {

class AEffEditor;
class AudioEffect;

/// Who makes the editor: builds it, registers it with `AudioEffect::setEditor` and returns it. Null makes an
/// effect without an editor.
using EditorFactory = AEffEditor* (*)(AudioEffect* effect);

/// Who hears of changes that did not come from it. Calls arrive on whatever thread the host uses, the audio
/// thread included: an implementation must not block, allocate or draw there.
class EffectListener {
  public:
    virtual ~EffectListener() = default;
    /// [any-thread] Parameter `index` has a new normalised value.
    virtual void UpdateControl(std::int32_t index, float value) = 0;
    /// [any-thread] The current program changed or became another one.
    virtual void UpdateModify() = 0;
};

} // namespace vocafade
