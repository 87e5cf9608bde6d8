// SPDX-License-Identifier: MIT
#include "effect/avocafade.h"

#include "persistence/settings_folder.h"
#include "vst/text.h"

#include <string_view>

namespace vocafade {
namespace {

constexpr std::int32_t kInitialBlockSize = 256;

} // namespace

AVocafade::AVocafade(audioMasterCallback master, EditorFactory makeEditor)
    : AudioEffectX(master, kProgramCount, kParameterCount), onOff_(1.0f) {
    GetMy_SHFOLDER_PathName();
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        normalized_[static_cast<std::size_t>(i)] = DefaultNormalizedValue(i);
    }
    mediaType_.format.wFormatTag = kWaveFormatIeeeFloat;
    mediaType_.format.nChannels = 2;
    mediaType_.format.nSamplesPerSec = 44100;
    mediaType_.format.nAvgBytesPerSec = 352800;
    mediaType_.format.nBlockAlign = 8;
    mediaType_.format.wBitsPerSample = 32;
    mediaType_.blockSize = kInitialBlockSize;
    // A host that processes before it announces anything finds an engine that does what the parameters show.
    engine_.SetMediaType(&mediaType_.format);
    for (std::int32_t i = kParameterOutput; i < kParameterCount; ++i) {
        TellEngine(i, normalized_[static_cast<std::size_t>(i)]);
    }

    setNumInputs(2);
    setNumOutputs(2);
    setUniqueID(kVocafadeId);
    programsAreChunks(true);
    canMono(true);
    if (makeEditor != nullptr) setEditor(makeEditor(this));
    AVocafade::resume();
}

AVocafade::~AVocafade() {
    // The base deletes the editor after everything here is gone, so it must have let go of it.
    if (editor != nullptr && editor->isOpen()) editor->close();
}

bool AVocafade::getEffectName(char* text) {
    CopyText(text, "Vocafade", kVstMaxEffectNameLen);
    return true;
}

bool AVocafade::getVendorString(char* text) {
    CopyText(text, "VELMORAX Co.,Ltd.", kVstMaxVendorStrLen);
    return true;
}

bool AVocafade::getProductString(char* text) {
    CopyText(text, "Vocafade", kVstMaxProductStrLen);
    return true;
}

std::int32_t AVocafade::canDo(char* text) {
    if (text == nullptr) return 0;
    struct Answer {
        std::string_view text;
        std::int32_t answer;
    };
    static constexpr Answer kAnswers[] = {
        {"sendVstEvents", -1},      {"sendVstMidiEvent", -1},
        {"receiveVstEvents", -1},   {"receiveVstMidiEvent", -1},
        {"receiveVstTimeInfo", -1}, {"offline", -1},
        {"midiProgramNames", -1},   {"bypass", 1},
    };
    for (const Answer& known : kAnswers) {
        if (known.text == text) return known.answer;
    }
    return 0;
}

} // namespace vocafade
