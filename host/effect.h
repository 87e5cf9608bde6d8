// SPDX-License-Identifier: MIT
#pragma once

#include "host/host_context.h"
#include "host/shared_object.h"
#include "vst/aeffect.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vocafade::host {

/// The sample format that an effect is told to expect.
enum class Precision { float32, float64 };

/// One effect out of a shared object, from its construction to its end. Its life goes in one order: loaded
/// and opened, configured, started, processed, stopped, closed; what was started is stopped and closed on
/// destruction. Several effects may live at once, on several threads; opening and closing them is done one at
/// a time, because shared objects expect one main thread for that.
class Effect {
  public:
    /// [main-thread] Loads `path` (see `SharedObject`), makes one effect and opens it. `listener` may be null
    /// and must outlive the effect. Throws `HostError`.
    explicit Effect(const std::filesystem::path& path, HostListener* listener = nullptr);
    /// [main-thread] Stops and closes.
    ~Effect();
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    /// [main-thread] Tells the rate in Hz, the largest block in samples and the precision. Stops a running
    /// effect first. Throws `HostError` when the values make no sense or the precision has no entry in the
    /// effect.
    void Configure(double sampleRate, std::int32_t blockSize, Precision precision = Precision::float32);
    /// [main-thread] Switches on: audio may flow. `Configure` must have been called. Effects may reset
    /// parameters here, so set them afterwards.
    void Start();
    /// [main-thread] Switches off. Nothing when it was not on.
    void Stop();

    /// [audio-thread] Processes `frames` (at most the block size) samples of every channel. The effect must
    /// be started in this precision. Inputs may be the outputs.
    void Process(float** inputs, float** outputs, std::int32_t frames);
    void Process(double** inputs, double** outputs, std::int32_t frames);

    std::int32_t numInputs() const { return effect_->numInputs; }
    std::int32_t numOutputs() const { return effect_->numOutputs; }
    std::int32_t numParameters() const { return effect_->numParams; }
    std::int32_t numPrograms() const { return effect_->numPrograms; }
    std::int32_t initialDelay() const { return effect_->initialDelay; }
    std::int32_t uniqueId() const { return effect_->uniqueID; }
    bool has(AEffectFlags flag) const { return (effect_->flags & flag) != 0; }
    /// True when there is a double-precision entry, promised by the flag or not.
    bool hasDoubleEntry() const { return effect_->processDoubleReplacing != nullptr; }
    /// The shared object that it came from.
    const std::filesystem::path& file() const { return object_->file(); }

    /// [main-thread] The name as the effect gives it, cut at a sane length; empty when it gives none.
    std::string effectName();
    /// [main-thread] What `effCanDo` answers: 1 yes, -1 no, 0 not known.
    int canDo(std::string_view what);

    /// [any-thread] Normalised values, 0 to 1. An index outside the effect's parameters is ignored and reads
    /// 0.
    float parameter(std::int32_t index);
    void setParameter(std::int32_t index, float value);
    /// [main-thread] Texts of a parameter.
    std::string parameterName(std::int32_t index);
    std::string parameterLabel(std::int32_t index);
    std::string parameterDisplay(std::int32_t index);

    /// [main-thread] Programs, counted from 0.
    std::int32_t program();
    void setProgram(std::int32_t index);
    std::string programName();
    void setProgramName(const std::string& name);
    /// The name of any program; without that opcode in the effect, nothing.
    std::optional<std::string> programNameAt(std::int32_t index);

    /// [main-thread] The effect's state as it packs it. Throws `HostError` when it has none.
    std::vector<std::byte> chunk(bool programOnly);
    void setChunk(std::span<const std::byte> bytes, bool programOnly);

    /// [main-thread] The editor: its rectangle (nothing without an editor), opening inside `parent` (a window
    /// number on X11), idling and closing.
    std::optional<ERect> editorRect();
    bool OpenEditor(void* parent);
    void IdleEditor();
    void CloseEditor();

    /// [main-thread] Any opcode at all, for tools that look closer.
    VstIntPtr Dispatch(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f);
    /// The descriptor itself, for tools that look closer.
    AEffect* descriptor() { return effect_; }

  private:
    std::string Text(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0);
    bool isParameter(std::int32_t index) const { return index >= 0 && index < effect_->numParams; }

    std::unique_ptr<SharedObject> object_;
    std::unique_ptr<HostContext> context_;
    AEffect* effect_ = nullptr;
    Precision precision_ = Precision::float32;
    bool configured_ = false;
    bool running_ = false;
    bool editorOpen_ = false;
};

} // namespace vocafade::host
