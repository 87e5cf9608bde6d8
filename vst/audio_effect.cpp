// SPDX-License-Identifier: MIT
#include "vst/audio_effect.h"

#include "vst/integer.h"
#include "vst/opcodes.h"

namespace vocafade {

AudioEffect::AudioEffect(audioMasterCallback master, std::int32_t programs, std::int32_t params)
    : audioMaster(master), numPrograms(programs), numParams(params) {
    cEffect.magic = kEffectMagic;
    cEffect.dispatcher = dispatchEffectClass;
    cEffect.process = processClass;
    cEffect.setParameter = setParameterClass;
    cEffect.getParameter = getParameterClass;
    cEffect.numPrograms = programs;
    cEffect.numParams = params;
    cEffect.numInputs = 1;
    cEffect.numOutputs = 2;
    cEffect.flags = effFlagsCanReplacing;
    cEffect.ioRatio = 1.0f;
    cEffect.object = this;
    cEffect.uniqueID = VstId('N', 'o', 'E', 'f');
    cEffect.version = 1;
    cEffect.processReplacing = processClassReplacing;
    cEffect.processDoubleReplacing = processClassDoubleReplacing;
}

AudioEffect::~AudioEffect() = default;

VstIntPtr AudioEffect::dispatchEffectClass(AEffect* e, std::int32_t opcode, std::int32_t index,
                                           VstIntPtr value, void* ptr, float opt) {
    auto* instance = static_cast<AudioEffect*>(e->object);
    if (opcode == effClose) {
        instance->dispatcher(opcode, index, value, ptr, opt);
        delete instance;
        return 1;
    }
    return instance->dispatcher(opcode, index, value, ptr, opt);
}

void AudioEffect::setParameterClass(AEffect* e, std::int32_t index, float value) {
    static_cast<AudioEffect*>(e->object)->setParameter(index, value);
}

float AudioEffect::getParameterClass(AEffect* e, std::int32_t index) {
    return static_cast<AudioEffect*>(e->object)->getParameter(index);
}

void AudioEffect::processClass(AEffect* e, float** inputs, float** outputs, std::int32_t sampleFrames) {
    static_cast<AudioEffect*>(e->object)->process(inputs, outputs, sampleFrames);
}

void AudioEffect::processClassReplacing(AEffect* e, float** inputs, float** outputs,
                                        std::int32_t sampleFrames) {
    static_cast<AudioEffect*>(e->object)->processReplacing(inputs, outputs, sampleFrames);
}

void AudioEffect::processClassDoubleReplacing(AEffect* e, double** inputs, double** outputs,
                                              std::int32_t sampleFrames) {
    static_cast<AudioEffect*>(e->object)->processDoubleReplacing(inputs, outputs, sampleFrames);
}

VstIntPtr AudioEffect::dispatcher(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                                  float opt) {
    auto* text = static_cast<char*>(ptr);
    switch (opcode) {
    case effOpen:
        open();
        return 0;
    case effClose:
        close();
        return 1;
    case effSetProgram:
        setProgram(ToInt32(value));
        return 0;
    case effGetProgram:
        return getProgram();
    case effSetSampleRate:
        setSampleRate(opt);
        return 0;
    case effSetBlockSize:
        setBlockSize(ToInt32(value));
        return 0;
    case effMainsChanged:
        if (value != 0) {
            resume();
        } else {
            suspend();
        }
        return 0;
    case effGetVu:
        return static_cast<VstIntPtr>(getVu() * 32767.0f);
    case effIdentify:
        return VstId('N', 'v', 'E', 'f');
    case effEditOpen:
        return editor != nullptr && editor->open(ptr) ? 1 : 0;
    case effEditClose:
        if (editor != nullptr) editor->close();
        return 0;
    case effEditDraw:
        if (editor != nullptr) editor->draw(static_cast<ERect*>(ptr));
        return 0;
    case effEditMouse:
        return editor != nullptr ? editor->mouse(index, ToInt32(value)) : 0;
    case effEditKey:
        return editor != nullptr ? editor->key(ToInt32(value)) : 0;
    case effEditIdle:
        if (editor != nullptr) editor->idle();
        return 0;
    case effEditTop:
        if (editor != nullptr) editor->top();
        return 0;
    case effEditSleep:
        if (editor != nullptr) editor->sleep();
        return 0;
    default:
        break;
    }

    // What is left writes through the host's pointer.
    if (ptr == nullptr) return 0;
    switch (opcode) {
    case effSetProgramName:
        setProgramName(text);
        return 0;
    case effGetProgramName:
        getProgramName(text);
        return 0;
    case effGetParamLabel:
        getParameterLabel(index, text);
        return 0;
    case effGetParamDisplay:
        getParameterDisplay(index, text);
        return 0;
    case effGetParamName:
        getParameterName(index, text);
        return 0;
    case effEditGetRect:
        return editor != nullptr && editor->getRect(static_cast<ERect**>(ptr)) ? 1 : 0;
    case effGetChunk:
        return getChunk(static_cast<void**>(ptr), index != 0);
    case effSetChunk:
        return setChunk(ptr, ToInt32(value), index != 0);
    default:
        return 0;
    }
}

void AudioEffect::process(float** /*inputs*/, float** /*outputs*/, std::int32_t /*sampleFrames*/) {}

void AudioEffect::processDoubleReplacing(double** /*inputs*/, double** /*outputs*/,
                                         std::int32_t /*sampleFrames*/) {}

void AudioEffect::setParameter(std::int32_t /*index*/, float /*value*/) {}

float AudioEffect::getParameter(std::int32_t /*index*/) { return 0.0f; }

void AudioEffect::setParameterAutomated(std::int32_t index, float value) {
    setParameter(index, value);
    CallHost(audioMasterAutomate, index, 0, nullptr, value);
}

void AudioEffect::getParameterLabel(std::int32_t /*index*/, char* label) { *label = 0; }

void AudioEffect::getParameterDisplay(std::int32_t /*index*/, char* text) { *text = 0; }

void AudioEffect::getParameterName(std::int32_t /*index*/, char* text) { *text = 0; }

std::int32_t AudioEffect::getChunk(void** /*data*/, bool /*isPreset*/) { return 0; }

std::int32_t AudioEffect::setChunk(void* /*data*/, std::int32_t /*byteSize*/, bool /*isPreset*/) { return 0; }

void AudioEffect::setEditor(AEffEditor* newEditor) {
    if (editor.get() != newEditor) editor.reset(newEditor);
    SetFlag(effFlagsHasEditor, editor != nullptr);
}

void AudioEffect::SetFlag(std::int32_t flag, bool state) {
    cEffect.flags = state ? cEffect.flags | flag : cEffect.flags & ~flag;
}

std::int32_t AudioEffect::getMasterVersion() {
    const std::int32_t version = ToInt32(CallHost(audioMasterVersion));
    return version != 0 ? version : 1;
}

void* AudioEffect::getDirectory() { return reinterpret_cast<void*>(CallHost(audioMasterGetDirectory)); }

VstIntPtr AudioEffect::CallHost(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                                float opt) {
    return audioMaster != nullptr ? audioMaster(&cEffect, opcode, index, value, ptr, opt) : 0;
}

} // namespace vocafade
