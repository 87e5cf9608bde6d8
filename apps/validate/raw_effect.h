// SPDX-License-Identifier: MIT
#pragma once

#include "host/host_context.h"
#include "host/shared_object.h"
#include "vst/aeffect.h"
#include "vst/opcodes.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vocafade::validate {

/// One effect. Nothing is called that the check does not call itself, in whatever order, except that it is
/// closed at the end if it is not yet.
class RawEffect {
  public:
    /// [main-thread] Makes the effect and looks at its descriptor. Throws `Hopeless` when it makes no sense.
    explicit RawEffect(const host::SharedObject& object);
    /// [main-thread] Closes.
    ~RawEffect();
    RawEffect(const RawEffect&) = delete;
    RawEffect& operator=(const RawEffect&) = delete;

    AEffect& operator*() { return *effect_; }
    AEffect* operator->() { return effect_; }
    bool has(AEffectFlags flag) const { return (effect_->flags & flag) != 0; }

    VstIntPtr Ask(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                  float opt = 0.0f);
    float parameter(std::int32_t index) { return effect_->getParameter(effect_, index); }
    void setParameter(std::int32_t index, float value) { effect_->setParameter(effect_, index, value); }
    /// The parameters that can be automated, by the effect's own answer: no meters and the like.
    std::vector<std::int32_t> Settable();
    std::string Text(std::int32_t opcode, std::int32_t index = 0);

    /// A copy of its state. Throws `Hopeless` when the effect answers with bytes that cannot be there.
    std::vector<char> SaveState(bool programOnly);
    /// Hands a state over with a guard page behind its last byte, as a host may that maps a file.
    void RestoreState(const std::vector<char>& state, bool programOnly);

    void Open() { Ask(effOpen); }
    void Close();
    bool isClosed() const { return effect_ == nullptr; }
    /// The usual way to get ready: opens, tells rate (Hz) and largest block (samples), switches on.
    void Start(double rate, std::int32_t block);
    void Configure(double rate, std::int32_t block);
    void On();
    void Off();

    /// [audio-thread] One block through the entry of that precision.
    void Process(float** inputs, float** outputs, std::int32_t frames);
    void Process(double** inputs, double** outputs, std::int32_t frames);

  private:
    std::unique_ptr<host::HostContext> context_;
    AEffect* effect_ = nullptr;
};

} // namespace vocafade::validate
