// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

namespace vocafade {

class AudioEffect;

/// An effect's editor as the dispatcher sees it. Every operation is [main-thread].
class AEffEditor {
  public:
    explicit AEffEditor(AudioEffect* owner = nullptr) : effect(owner) {}
    virtual ~AEffEditor() = default;
    AEffEditor(const AEffEditor&) = delete;
    AEffEditor& operator=(const AEffEditor&) = delete;

    virtual AudioEffect* getEffect() { return effect; }
    /// Hands out the editor's rectangle in pixels; false when there is none.
    virtual bool getRect(ERect** rect) {
        *rect = nullptr;
        return false;
    }
    /// Opens inside the host's native parent window `ptr`.
    virtual bool open(void* ptr) {
        systemWindow = ptr;
        return false;
    }
    virtual void close() { systemWindow = nullptr; }
    virtual bool isOpen() { return systemWindow != nullptr; }
    /// Called by the host again and again while the editor is open.
    virtual void idle() {}

    virtual void draw(ERect* /*rect*/) {}
    virtual std::int32_t mouse(std::int32_t /*x*/, std::int32_t /*y*/) { return 0; }
    virtual std::int32_t key(std::int32_t /*keyCode*/) { return 0; }
    virtual void top() {}
    virtual void sleep() {}

    virtual bool onKeyDown(VstKeyCode& /*keyCode*/) { return false; }
    virtual bool onKeyUp(VstKeyCode& /*keyCode*/) { return false; }
    virtual bool onWheel(float /*distance*/) { return false; }
    /// The host's scale, in device pixels for each logical one; 0 takes it back. False where the editor has no
    /// use for it.
    virtual bool setContentScale(float /*scale*/) { return false; }
    virtual bool setKnobMode(std::int32_t /*mode*/) { return false; }

  protected:
    AudioEffect* effect;
    void* systemWindow = nullptr;
};

} // namespace vocafade
