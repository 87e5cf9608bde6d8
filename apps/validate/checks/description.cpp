// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/guarded_memory.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace vocafade::validate {
namespace {

constexpr char kFill = static_cast<char>(0xA5);
/// The smallest buffer in bytes that hosts in use hand over for a text. The interface promises less, for a
/// parameter's text 8, which hardly any effect keeps to.
constexpr std::size_t kRoom = 64;

/// What is asked for, and the documented size of its buffer.
struct TextRequest {
    std::int32_t opcode;
    const char* what;
    std::size_t documented;
};
constexpr TextRequest kEffectTexts[] = {
    {effGetEffectName, "effect name", kVstMaxEffectNameLen},
    {effGetVendorString, "vendor", kVstMaxVendorStrLen},
    {effGetProductString, "product", kVstMaxProductStrLen},
    {effGetProgramName, "program name", kVstMaxProgNameLen},
};
constexpr TextRequest kParameterTexts[] = {
    {effGetParamName, "parameter name", kVstMaxParamStrLen},
    {effGetParamLabel, "parameter label", kVstMaxParamStrLen},
    {effGetParamDisplay, "parameter display", kVstMaxParamStrLen},
};

class TextChecker {
  public:
    TextChecker(RawEffect& effect, Report& report) : effect_(effect), report_(report) {}

    void Ask(const TextRequest& request, std::int32_t index) {
        report_.Trying("asking for the {} (index {}) in {} bytes", request.what, index, kRoom);
        const GuardedMemory memory(kRoom, GuardedMemory::Against::end,
                                   std::string("the buffer for the ") + request.what);
        char* text = memory.as<char>();
        std::memset(text, kFill, kRoom);
        text[0] = '\0'; // an effect without such a text may leave it alone
        effect_.Ask(request.opcode, index, 0, text);
        const auto* end = std::find(text, text + kRoom, '\0');
        if (end == text + kRoom) {
            report_.Fault("the {} (index {}) is not terminated within {} bytes", request.what, index, kRoom);
            return;
        }
        std::size_t touched = kRoom;
        while (touched > 0 && text[touched - 1] == kFill)
            --touched;
        if (touched > request.documented) ++overlong_;
    }

    void Finish() {
        if (overlong_ > 0)
            report_.Remark(
                "{} texts are longer than the interface allows, but shorter than the buffers of hosts in use",
                overlong_);
    }

  private:
    RawEffect& effect_;
    Report& report_;
    int overlong_ = 0;
};

void Descriptor(Subject& subject, Report& report) {
    report.Trying("making an effect");
    RawEffect effect(subject.Object());
    report.Trying("opening it");
    effect.Open();
    if (effect->uniqueID == 0) report.Remark("it has no unique identifier");
    if (!effect.has(effFlagsCanReplacing))
        report.Remark("it does not announce processReplacing, the entry that hosts use");
    if (effect.has(effFlagsCanDoubleReplacing) && effect->processDoubleReplacing == nullptr)
        report.Fault("it announces double precision and has no entry for it");
    if (effect->initialDelay < 0) report.Fault("its latency is {} samples", effect->initialDelay);
    if (effect->numInputs == 0 && effect->numOutputs == 0) report.Remark("it has neither inputs nor outputs");
    if (!std::all_of(std::begin(effect->future), std::end(effect->future), [](char c) { return c == 0; }))
        report.Remark("the reserved end of the descriptor is not zero");
    report.Trying("asking for its version of the interface");
    const VstIntPtr version = effect.Ask(effGetVstVersion);
    if (version != 2400) report.Remark("its interface version is {}, not 2400", version);
    report.Trying("asking for its category");
    const VstIntPtr category = effect.Ask(effGetPlugCategory);
    if (category < kPlugCategUnknown || category > kPlugCategGenerator)
        report.Fault("its category {} does not exist", category);
    report.Measured("\"{}\" by {}, {} in, {} out, {} parameters, {} programs", effect.Text(effGetEffectName),
                    effect.Text(effGetVendorString), effect->numInputs, effect->numOutputs, effect->numParams,
                    effect->numPrograms);
    report.Trying("closing it");
    effect.Close();
}
const Check kDescriptor{"descriptor", 1, 10, kPlain, "it loads, and its record makes sense", Descriptor};

/// Asks for a record right in front of a guard page; null when the effect has none.
template <typename Record>
const Record* AskForRecord(RawEffect& effect, std::int32_t opcode, std::int32_t index,
                           const GuardedMemory& memory) {
    std::memset(memory.data(), 0, sizeof(Record));
    return effect.Ask(opcode, index, 0, memory.data()) != 0 ? memory.as<Record>() : nullptr;
}

template <std::size_t Size>
bool IsTerminated(const char (&text)[Size]) {
    return std::memchr(text, 0, Size) != nullptr;
}

void Texts(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Open();
    TextChecker texts(effect, report);
    for (const TextRequest& request : kEffectTexts)
        texts.Ask(request, 0);
    for (std::int32_t i = 0; i < effect->numPrograms; ++i)
        texts.Ask({effGetProgramNameIndexed, "indexed program name", kVstMaxProgNameLen}, i);
    for (const float value : {0.0f, 0.123456789f, 0.5f, 1.0f}) {
        for (const std::int32_t i : effect.Settable())
            effect.setParameter(i, value);
        for (std::int32_t i = 0; i < effect->numParams; ++i)
            for (const TextRequest& request : kParameterTexts)
                texts.Ask(request, i);
    }
    texts.Finish();
    const GuardedMemory properties(sizeof(VstParameterProperties), GuardedMemory::Against::end,
                                   "the record of a parameter's properties");
    for (std::int32_t i = 0; i < effect->numParams; ++i) {
        report.Trying("asking for the properties of parameter {}", i);
        const auto* record =
            AskForRecord<VstParameterProperties>(effect, effGetParameterProperties, i, properties);
        if (record == nullptr) continue;
        if (!IsTerminated(record->label) || !IsTerminated(record->shortLabel) ||
            !IsTerminated(record->categoryLabel))
            report.Fault("a text in the properties of parameter {} is not terminated", i);
        if ((record->flags & kVstParameterUsesIntegerMinMax) != 0 && record->minInteger > record->maxInteger)
            report.Fault("in the properties of parameter {} the minimum is above the maximum", i);
    }
    const GuardedMemory pin(sizeof(VstPinProperties), GuardedMemory::Against::end,
                            "the record of a channel's properties");
    const auto checkPins = [&](std::int32_t opcode, std::int32_t count, const char* side) {
        for (std::int32_t i = 0; i < count; ++i) {
            report.Trying("asking for the properties of {} {}", side, i);
            const auto* record = AskForRecord<VstPinProperties>(effect, opcode, i, pin);
            if (record != nullptr && !IsTerminated(record->label))
                report.Fault("the label of {} {} is not terminated", side, i);
        }
    };
    checkPins(effGetInputProperties, effect->numInputs, "input");
    checkPins(effGetOutputProperties, effect->numOutputs, "output");
    // Nothing behind the end of a host's text belongs to the effect.
    for (const char* what : {"bypass", "receiveVstMidiEvent", "", "x"}) {
        report.Trying("asking whether it can do '{}'", what);
        const GuardedMemory question(std::strlen(what) + 1, GuardedMemory::Against::end,
                                     "the question effCanDo");
        std::memcpy(question.data(), what, std::strlen(what) + 1);
        effect.Ask(effCanDo, 0, 0, question.data());
    }
}
const Check kTexts{"texts", 1, 10, kPlain, "names and labels fit into the buffers of hosts", Texts};

} // namespace

} // namespace vocafade::validate
