// SPDX-License-Identifier: MIT
#include "vst/audio_effect_x.h"

#include "vst/integer.h"
#include "vst/opcodes.h"

#include <cstring>

namespace vocafade {
namespace {

constexpr char kReceiveMidi[] = "receiveVstMidiEvent";

VstKeyCode KeyCodeFrom(std::int32_t index, VstIntPtr value, float opt) {
    const bool modifiersValid = opt >= 0.0f && opt < 256.0f;
    return {index, static_cast<unsigned char>(value),
            modifiersValid ? static_cast<unsigned char>(opt) : static_cast<unsigned char>(0)};
}

} // namespace

VstIntPtr AudioEffectX::dispatcher(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                                   float opt) {
    auto* text = static_cast<char*>(ptr);
    switch (opcode) {
    case effCanBeAutomated:
        return canParameterBeAutomated(index) ? 1 : 0;
    case effString2Parameter:
        return string2parameter(index, text) ? 1 : 0; // null asks whether it is possible
    case effGetNumProgramCategories:
        return 1;
    case effGetPlugCategory:
        return getPlugCategory();
    case effSetBlockSizeAndSampleRate:
        setBlockSizeAndSampleRate(ToInt32(value), opt);
        return 1;
    case effSetBypass:
        return setBypass(value != 0) ? 1 : 0;
    case effConnectInput:
    case effConnectOutput:
        return 1;
    case effGetVendorVersion:
        return getVendorVersion();
    case effGetTailSize:
        return getTailSize();
    case effKeysRequired:
        return 1; // the answer is upside down in the interface: 1 means not required
    case effGetVstVersion:
        return getVstVersion();
    case effEditKeyDown: {
        VstKeyCode keyCode = KeyCodeFrom(index, value, opt);
        return editor != nullptr && editor->onKeyDown(keyCode) ? 1 : 0;
    }
    case effEditKeyUp: {
        VstKeyCode keyCode = KeyCodeFrom(index, value, opt);
        return editor != nullptr && editor->onKeyUp(keyCode) ? 1 : 0;
    }
    case effSetEditKnobMode:
        return editor != nullptr && editor->setKnobMode(ToInt32(value)) ? 1 : 0;
    case effStartProcess:
        return startProcess();
    case effStopProcess:
        return stopProcess();
    case effSetProcessPrecision:
        return setProcessPrecision(ToInt32(value)) ? 1 : 0;
    // Operations that this interface's base refuses or knows nothing of.
    case effProcessEvents:
    case effCopyProgram:
    case effGetCurrentPosition:
    case effGetDestinationBuffer:
    case effOfflineNotify:
    case effOfflinePrepare:
    case effOfflineRun:
    case effProcessVarIo:
    case effSetSpeakerArrangement:
    case effGetErrorText:
    case effIdle:
    case effGetIcon:
    case effSetViewPosition:
    case effGetMidiProgramName:
    case effGetMidiProgramCategory:
    case effHasMidiProgramsChanged:
    case effGetMidiKeyName:
    case effBeginSetProgram:
    case effEndSetProgram:
    case effShellGetNextPlugin:
    case effSetPanLaw:
    case effBeginLoadBank:
    case effBeginLoadProgram:
    case effGetNumMidiInputChannels:
    case effGetNumMidiOutputChannels:
        return 0;
    case effGetCurrentMidiProgram:
        return -1;
    case effGetSpeakerArrangement: // refused, but a host that does not look at the answer finds null pointers
        if (value != 0) *reinterpret_cast<void**>(value) = nullptr;
        if (ptr != nullptr) *static_cast<void**>(ptr) = nullptr;
        return 0;
    case effSetTotalSampleToProcess:
        return value;
    case effVendorSpecific:
        return vendorSpecific(index, value, ptr, opt);
    default:
        break;
    }

    if (opcode < effProcessEvents) return AudioEffect::dispatcher(opcode, index, value, ptr, opt);
    // What is left writes or reads through the host's pointer.
    if (ptr == nullptr) return 0;
    switch (opcode) {
    case effGetProgramNameIndexed:
        return getProgramNameIndexed(ToInt32(value), index, text) ? 1 : 0;
    case effGetInputProperties:
        return getInputProperties(index, static_cast<VstPinProperties*>(ptr)) ? 1 : 0;
    case effGetOutputProperties:
        return getOutputProperties(index, static_cast<VstPinProperties*>(ptr)) ? 1 : 0;
    case effGetEffectName:
        return getEffectName(text) ? 1 : 0;
    case effGetVendorString:
        return getVendorString(text) ? 1 : 0;
    case effGetProductString:
        return getProductString(text) ? 1 : 0;
    case effCanDo:
        return canDo(text);
    case effGetParameterProperties:
        return getParameterProperties(index, static_cast<VstParameterProperties*>(ptr)) ? 1 : 0;
    default:
        return 0;
    }
}

void AudioEffectX::resume() {
    char question[sizeof kReceiveMidi];
    for (std::size_t i = 0; i < sizeof kReceiveMidi; ++i) {
        question[i] = kReceiveMidi[i];
    }
    if (canDo(question) == 1) CallHost(audioMasterWantMidi, 0, 1);
}

bool AudioEffectX::string2parameter(std::int32_t /*index*/, char* /*text*/) { return false; }

bool AudioEffectX::getParameterProperties(std::int32_t /*index*/, VstParameterProperties* /*properties*/) {
    return false;
}

bool AudioEffectX::getProgramNameIndexed(std::int32_t /*category*/, std::int32_t /*index*/, char* /*text*/) {
    return false;
}

bool AudioEffectX::getInputProperties(std::int32_t /*index*/, VstPinProperties* /*properties*/) {
    return false;
}

bool AudioEffectX::getOutputProperties(std::int32_t /*index*/, VstPinProperties* /*properties*/) {
    return false;
}

bool AudioEffectX::getEffectName(char* /*text*/) { return false; }

bool AudioEffectX::getVendorString(char* /*text*/) { return false; }

bool AudioEffectX::getProductString(char* /*text*/) { return false; }

std::int32_t AudioEffectX::canDo(char* /*text*/) { return 0; }

VstPlugCategory AudioEffectX::getPlugCategory() {
    return (cEffect.flags & effFlagsIsSynth) != 0 ? kPlugCategSynth : kPlugCategUnknown;
}

bool AudioEffectX::setBypass(bool /*onOff*/) { return false; }

bool AudioEffectX::setProcessPrecision(std::int32_t /*precision*/) { return false; }

void AudioEffectX::setBlockSizeAndSampleRate(std::int32_t samples, float rate) {
    blockSize = samples;
    sampleRate = rate;
}

bool AudioEffectX::beginEdit(std::int32_t index) { return CallHost(audioMasterBeginEdit, index) != 0; }

bool AudioEffectX::endEdit(std::int32_t index) { return CallHost(audioMasterEndEdit, index) != 0; }

bool AudioEffectX::updateDisplay() { return CallHost(audioMasterUpdateDisplay) != 0; }

bool AudioEffectX::sizeWindow(std::int32_t width, std::int32_t height) {
    return CallHost(audioMasterSizeWindow, width, height) != 0;
}

VstIntPtr AudioEffectX::vendorSpecific(std::int32_t index, VstIntPtr value, void* /*ptr*/, float opt) {
    if (index != kContentScaleExtension || value != kContentScaleValue || editor == nullptr) return 0;
    return editor->setContentScale(opt) ? 1 : 0;
}

std::string AudioEffectX::getHostProductString() {
    char text[4 * kVstMaxProductStrLen] = {}; // some hosts write more than the interface allows
    CallHost(audioMasterGetProductString, 0, 0, text);
    return {text, ::strnlen(text, kVstMaxProductStrLen - 1)};
}

} // namespace vocafade
