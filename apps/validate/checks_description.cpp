// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/guarded_memory.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace vocafade::validate {
namespace {

constexpr char kFill = static_cast<char>(0xA5);
/// Smallest buffer that hosts in use hand over for a parameter's text. The interface promises 8 bytes, which
/// hardly any effect keeps to.
constexpr std::size_t kParameterTextInPractice = 64;

/// What is asked for, and the two sizes of its buffer: the documented one, and the one that hosts give.
struct TextRequest {
    std::int32_t opcode;
    const char* what;
    std::size_t documented;
    std::size_t practical;
};
constexpr TextRequest kEffectTexts[] = {
    {effGetEffectName, "effect name", kVstMaxEffectNameLen, 64},
    {effGetVendorString, "vendor", kVstMaxVendorStrLen, 64},
    {effGetProductString, "product", kVstMaxProductStrLen, 64},
    {effGetProgramName, "program name", kVstMaxProgNameLen, 64},
};
constexpr TextRequest kParameterTexts[] = {
    {effGetParamName, "parameter name", kVstMaxParamStrLen, kParameterTextInPractice},
    {effGetParamLabel, "parameter label", kVstMaxParamStrLen, kParameterTextInPractice},
    {effGetParamDisplay, "parameter display", kVstMaxParamStrLen, kParameterTextInPractice},
};

class TextChecker {
  public:
    TextChecker(Instance& effect, Report& report) : effect_(effect), report_(report) {}

    void Ask(const TextRequest& request, std::int32_t index) {
        report_.Trying("asking for the {} (index {}) in {} bytes", request.what, index, request.practical);
        const GuardedMemory memory(request.practical, GuardedMemory::Against::end,
                                   std::string("the buffer for the ") + request.what);
        char* text = memory.as<char>();
        std::memset(text, kFill, request.practical);
        text[0] = '\0'; // who has nothing to say may leave it alone
        effect_.Ask(request.opcode, index, 0, text);
        const auto* end = std::find(text, text + request.practical, '\0');
        if (end == text + request.practical) {
            report_.Fault("the {} (index {}) has no end within {} bytes", request.what, index,
                          request.practical);
            return;
        }
        std::size_t touched = request.practical;
        while (touched > 0 && text[touched - 1] == kFill)
            --touched;
        if (touched > request.documented) ++overlong_;
    }

    ~TextChecker() {
        if (overlong_ > 0)
            report_.Remark(
                "{} texts are longer than the interface's own sizes, though not than hosts' buffers",
                overlong_);
    }
    TextChecker(const TextChecker&) = delete;
    TextChecker& operator=(const TextChecker&) = delete;

  private:
    Instance& effect_;
    Report& report_;
    int overlong_ = 0;
};

void CheckRecord(Instance& effect, const VstParameterProperties& properties, std::int32_t index,
                 Report& report) {
    const auto ends = [](const char* text, std::size_t size) { return ::strnlen(text, size) < size; };
    if (!ends(properties.label, sizeof properties.label) ||
        !ends(properties.shortLabel, sizeof properties.shortLabel) ||
        !ends(properties.categoryLabel, sizeof properties.categoryLabel))
        report.Fault("a text in the properties of parameter {} has no end", index);
    const bool integers = (properties.flags & kVstParameterUsesIntegerMinMax) != 0;
    if (integers && properties.minInteger > properties.maxInteger)
        report.Fault("the properties of parameter {} have a range that begins behind its end", index);
    (void)effect;
}

template <typename Record>
Record* CheckOneRecord(Instance& effect, std::int32_t opcode, std::int32_t index,
                       const GuardedMemory& memory) {
    std::memset(memory.data(), 0, sizeof(Record));
    return effect.Ask(opcode, index, 0, memory.data()) != 0 ? memory.as<Record>() : nullptr;
}

} // namespace

void CheckDescriptor(Subject& subject, Report& report) {
    report.Trying("making an effect");
    Instance effect(subject.Object());
    report.Trying("opening it");
    effect.Open();
    if (effect->uniqueID == 0) report.Remark("it has no unique identifier");
    if (!effect.has(effFlagsCanReplacing))
        report.Remark("it does not promise processReplacing, the only entry of the interface's last version");
    if (effect.has(effFlagsCanDoubleReplacing) && effect->processDoubleReplacing == nullptr)
        report.Fault("it promises double precision and has no entry for it");
    if (effect->initialDelay < 0) report.Fault("its latency is {} samples", effect->initialDelay);
    if (effect->numInputs == 0 && effect->numOutputs == 0) report.Remark("it has no channels at all");
    if (!std::all_of(std::begin(effect->future), std::end(effect->future), [](char c) { return c == 0; }))
        report.Remark("the reserved end of the descriptor is not zero");
    report.Trying("asking for its version of the interface");
    const VstIntPtr version = effect.Ask(effGetVstVersion);
    if (version != 2400) report.Remark("it is of interface version {}", version);
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

void CheckTexts(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Open();
    {
        TextChecker texts(effect, report);
        for (const TextRequest& request : kEffectTexts)
            texts.Ask(request, 0);
        for (std::int32_t i = 0; i < effect->numPrograms; ++i)
            texts.Ask({effGetProgramNameIndexed, "indexed program name", kVstMaxProgNameLen, 64}, i);
        for (const float value : {0.0F, 0.123456789F, 0.5F, 1.0F})
            for (std::int32_t i = 0; i < effect->numParams; ++i) {
                if (effect.IsSettable(i)) effect.setParameter(i, value);
                for (const TextRequest& request : kParameterTexts)
                    texts.Ask(request, i);
            }
    }
    const GuardedMemory properties(sizeof(VstParameterProperties), GuardedMemory::Against::end,
                                   "the record of a parameter's properties");
    for (std::int32_t i = 0; i < effect->numParams; ++i) {
        report.Trying("asking for the properties of parameter {}", i);
        const auto* record =
            CheckOneRecord<VstParameterProperties>(effect, effGetParameterProperties, i, properties);
        if (record != nullptr) CheckRecord(effect, *record, i, report);
    }
    const GuardedMemory pin(sizeof(VstPinProperties), GuardedMemory::Against::end,
                            "the record of a channel's properties");
    const auto checkPins = [&](std::int32_t opcode, std::int32_t count, const char* side) {
        for (std::int32_t i = 0; i < count; ++i) {
            report.Trying("asking for the properties of {} {}", side, i);
            const auto* record = CheckOneRecord<VstPinProperties>(effect, opcode, i, pin);
            if (record != nullptr && ::strnlen(record->label, sizeof record->label) == sizeof record->label)
                report.Fault("the label of {} {} has no end", side, i);
        }
    };
    checkPins(effGetInputProperties, effect->numInputs, "input");
    checkPins(effGetOutputProperties, effect->numOutputs, "output");
    // A text of a host ends where it ends: nothing behind it belongs to the effect.
    for (const char* what : {"bypass", "receiveVstMidiEvent", "", "x"}) {
        report.Trying("asking whether it can do '{}'", what);
        const GuardedMemory question(std::strlen(what) + 1, GuardedMemory::Against::end,
                                     "the question effCanDo");
        std::memcpy(question.data(), what, std::strlen(what) + 1);
        effect.Ask(effCanDo, 0, 0, question.data());
    }
}

} // namespace vocafade::validate
