// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/guarded_memory.h"

#include <array>
#include <cstring>
#include <limits>

namespace vocafade::validate {
namespace {

/// Bytes behind an opcode's pointer.
constexpr std::size_t kAnswerRoom = 4096;

/// An arrangement of speakers as hosts pass it: a type, the number of channels and eight records of them.
struct Arrangement {
    std::int32_t type;
    std::int32_t channels;
    std::array<char, 8 * 112> speakers;
};

template <typename... Others>
constexpr bool IsOneOf(std::int32_t opcode, Others... others) {
    return ((opcode == others) || ...);
}

/// Opcodes with a check of their own, or whose pointers cannot be made up: closing, the editor, states.
bool IsElsewhere(std::int32_t opcode) {
    return IsOneOf(opcode, effClose, effEditGetRect, effEditOpen, effEditClose, effEditDraw, effEditMouse,
                   effEditKey, effEditIdle, effEditTop, effEditSleep, effGetChunk, effSetChunk,
                   effEditKeyDown, effEditKeyUp);
}

/// Hosts do not send rates and block sizes that cannot be, so these get sensible values only.
bool TakesFormat(std::int32_t opcode) {
    return IsOneOf(opcode, effSetSampleRate, effSetBlockSize, effSetBlockSizeAndSampleRate);
}

bool TakesIndexOfItsOwn(std::int32_t opcode) {
    return IsOneOf(opcode, effGetParamLabel, effGetParamDisplay, effGetParamName, effCanBeAutomated,
                   effString2Parameter, effGetProgramNameIndexed, effGetInputProperties,
                   effGetOutputProperties, effGetParameterProperties);
}

bool TakesNoPointer(std::int32_t opcode) {
    return IsOneOf(opcode, effGetProgram, effGetVu, effIdentify, effCanBeAutomated,
                   effGetNumProgramCategories, effConnectInput, effConnectOutput, effGetPlugCategory,
                   effGetCurrentPosition, effSetBypass, effGetVendorVersion, effGetTailSize, effIdle,
                   effKeysRequired, effGetVstVersion, effSetEditKnobMode, effBeginSetProgram,
                   effEndSetProgram, effStartProcess, effStopProcess, effSetPanLaw,
                   effSetTotalSampleToProcess, effSetProcessPrecision, effGetNumMidiInputChannels,
                   effGetNumMidiOutputChannels, effHasMidiProgramsChanged);
}

class Asker {
  public:
    Asker(RawEffect& effect, Report& report)
        : effect_(effect), report_(report),
          room_(kAnswerRoom, GuardedMemory::Against::end, "the request's buffer"),
          arrangement_(sizeof(Arrangement), GuardedMemory::Against::end, "the speakers' arrangement") {}

    void Ask(std::int32_t opcode, std::int32_t index, VstIntPtr value, float opt) {
        if (opcode == effSetSpeakerArrangement || opcode == effGetSpeakerArrangement) {
            AskArrangement(opcode);
            return;
        }
        report_.Trying("opcode {} with index {}, value {}, opt {}", opcode, index, value, opt);
        std::memset(room_.data(), 0, kAnswerRoom);
        effect_.Ask(opcode, index, value, room_.data(), opt);
    }

  private:
    void AskArrangement(std::int32_t opcode) {
        for (const std::int32_t channels : {0, 1, 2, 6, 8}) {
            report_.Trying("opcode {} with {} channels", opcode, channels);
            auto* arrangement = arrangement_.as<Arrangement>();
            std::memset(arrangement_.data(), 0, sizeof(Arrangement));
            arrangement->type = channels - 1;
            arrangement->channels = channels;
            if (opcode == effSetSpeakerArrangement) {
                effect_.Ask(opcode, 0, reinterpret_cast<VstIntPtr>(arrangement), arrangement);
            } else {
                Arrangement* in = nullptr;
                Arrangement* out = nullptr;
                effect_.Ask(opcode, 0, reinterpret_cast<VstIntPtr>(&in), static_cast<void*>(&out));
            }
        }
    }

    RawEffect& effect_;
    Report& report_;
    GuardedMemory room_;
    GuardedMemory arrangement_;
};

void Opcodes(Subject& subject, Report& report) {
    constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    for (const bool running : {false, true}) {
        RawEffect effect(subject.Object());
        effect.Open();
        Asker asker(effect, report);
        for (std::int32_t opcode = -2; opcode < 130; ++opcode) {
            if (IsElsewhere(opcode)) continue;
            if (running) effect.On();
            const bool isKnown = opcode >= 0 && opcode <= effGetNumMidiOutputChannels;
            for (const std::int32_t index :
                 {0, 1, -1, effect->numParams, effect->numPrograms, kHighest, kLowest}) {
                for (const VstIntPtr value :
                     {VstIntPtr{0}, VstIntPtr{1}, VstIntPtr{-1}, VstIntPtr{kHighest}}) {
                    if (opcode == effOpen && (index != 0 || value != 0)) continue;
                    if (TakesFormat(opcode)) continue; // below
                    asker.Ask(opcode, index, value, 0.0f);
                }
            }
            if (TakesIndexOfItsOwn(opcode)) continue;
            if (TakesFormat(opcode)) {
                for (const float rate : {8000.0f, 44100.0f, 384000.0f})
                    asker.Ask(opcode, 0, 512, rate);
                continue;
            }
            for (const float opt : {-1.0f, 1.0f, 44100.0f, std::numeric_limits<float>::quiet_NaN()})
                if (isKnown || opt == 1.0f) asker.Ask(opcode, 0, 0, opt);
        }
        for (std::int32_t opcode = 0; opcode <= effGetNumMidiOutputChannels; ++opcode) {
            if (!TakesNoPointer(opcode)) continue;
            report.Trying("opcode {} without a pointer", opcode);
            effect.Ask(opcode);
        }
        effect.Off();
    }
    report.Trying("making it for a host that answers 0 to everything");
    const AEffect* effect = subject.Object().entry()(
        [](AEffect*, std::int32_t, std::int32_t, VstIntPtr, void*, float) -> VstIntPtr { return 0; });
    if (effect != nullptr) effect->dispatcher(const_cast<AEffect*>(effect), effClose, 0, 0, nullptr, 0.0f);
}
const Check kOpcodes{"opcodes", 9, 60, kPlain, "every opcode, with odd arguments", Opcodes};

} // namespace
} // namespace vocafade::validate
