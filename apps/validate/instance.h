// SPDX-License-Identifier: MIT
#pragma once

#include "host/host_context.h"
#include "host/shared_object.h"
#include "vst/aeffect.h"
#include "vst/opcodes.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vocafade::validate {

/// One effect without a host's good manners: nothing is called that the check does not call itself, in
/// whatever order, except that what is still alive is closed at the end.
class Instance {
  public:
    /// [main-thread] Makes the effect and looks at its descriptor. Throws `Hopeless` when it makes no sense.
    explicit Instance(const host::SharedObject& object);
    /// [main-thread] Closes.
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    AEffect& operator*() { return *effect_; }
    AEffect* operator->() { return effect_; }
    bool has(AEffectFlags flag) const { return (effect_->flags & flag) != 0; }

    VstIntPtr Ask(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                  float opt = 0.0F);
    float parameter(std::int32_t index) { return effect_->getParameter(effect_, index); }
    void setParameter(std::int32_t index, float value) { effect_->setParameter(effect_, index, value); }
    /// False for what the effect itself says cannot be automated: meters and the like.
    bool IsSettable(std::int32_t index) { return Ask(effCanBeAutomated, index) != 0; }
    std::string Text(std::int32_t opcode, std::int32_t index = 0);

    void Open() { Ask(effOpen); }
    void Close();
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
