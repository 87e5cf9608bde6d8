// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeff_editor.h"

namespace vocafade {

/// The effect's editor as the host sees it: a fixed rectangle, opened inside a window of the host's, idled
/// and closed again, any number of times. Every operation is [main-thread].
class CVocafadeEditor : public AEffEditor {
  public:
    /// Registers itself with `owner`, which deletes it.
    explicit CVocafadeEditor(AudioEffect* owner);
    ~CVocafadeEditor() override;

    bool getRect(ERect** bounds) override;
    bool open(void* ptr) override;
    void close() override;

  private:
    ERect rect_{};
};

/// The factory that the plug-in hands to its effect.
AEffEditor* MakeVocafadeEditor(AudioEffect* owner);

} // namespace vocafade
