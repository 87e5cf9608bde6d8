// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeff_editor.h"
#include "vst/aeffect.h"

#include <atomic>
#include <memory>

namespace vocafade {

/// The part of an effect that every version of the interface has: descriptor, life cycle, parameters,
/// programs and the first opcodes. The host holds the descriptor; its function pointers lead back to the
/// instance.
class AudioEffect {
  public:
    AudioEffect(audioMasterCallback audioMaster, std::int32_t numPrograms, std::int32_t numParams);
    virtual ~AudioEffect();
    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;

    /// [main-thread] Answers an opcode of the host.
    virtual VstIntPtr dispatcher(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                                 float opt);
    /// [any-thread] The descriptor for the host; lives as long as the instance.
    virtual AEffect* getAeffect() { return &cEffect; }

    virtual void open() {}    ///< [main-thread] once, after creation
    virtual void close() {}   ///< [main-thread] once, before deletion
    virtual void suspend() {} ///< [main-thread] processing ends
    virtual void resume() {}  ///< [main-thread] processing begins

    virtual void setSampleRate(float rate) { sampleRate = rate; }            ///< [main-thread] Hz
    virtual void setBlockSize(std::int32_t samples) { blockSize = samples; } ///< [main-thread] largest block
    virtual float getSampleRate() { return sampleRate; }                     ///< [main-thread] Hz
    virtual std::int32_t getBlockSize() { return blockSize; }                ///< [main-thread] samples

    /// [audio-thread] Deprecated: adds to the outputs.
    virtual void process(float** inputs, float** outputs, std::int32_t sampleFrames);
    /// [audio-thread] Writes `sampleFrames` samples to each output.
    virtual void processReplacing(float** inputs, float** outputs, std::int32_t sampleFrames) = 0;
    /// [audio-thread] The same in double precision.
    virtual void processDoubleReplacing(double** inputs, double** outputs, std::int32_t sampleFrames);

    virtual void setParameter(std::int32_t index, float value); ///< [any-thread] normalised value
    virtual float getParameter(std::int32_t index);             ///< [any-thread] normalised value
    /// [any-thread] Sets a parameter and tells the host.
    virtual void setParameterAutomated(std::int32_t index, float value);

    virtual std::int32_t getProgram() { return curProgram; }                ///< [any-thread]
    virtual void setProgram(std::int32_t program) { curProgram = program; } ///< [main-thread]
    virtual void setProgramName(char* /*name*/) {}                          ///< [main-thread]
    virtual void getProgramName(char* name) { *name = 0; }                  ///< [main-thread]
    virtual void getParameterLabel(std::int32_t index, char* label);        ///< [main-thread] unit
    virtual void getParameterDisplay(std::int32_t index, char* text);       ///< [main-thread] value
    virtual void getParameterName(std::int32_t index, char* text);          ///< [main-thread]
    virtual float getVu() { return 0.0f; }                                  ///< [main-thread]

    /// [main-thread] Hands out the bank or the program as bytes that stay the effect's; the byte count.
    virtual std::int32_t getChunk(void** data, bool isPreset);
    /// [main-thread] Takes the bytes of a bank or a program.
    virtual std::int32_t setChunk(void* data, std::int32_t byteSize, bool isPreset);

    /// [main-thread] What the descriptor says of the effect; for its constructor.
    virtual void setUniqueID(std::int32_t id) { cEffect.uniqueID = id; }
    virtual void setNumInputs(std::int32_t inputs) { cEffect.numInputs = inputs; }
    virtual void setNumOutputs(std::int32_t outputs) { cEffect.numOutputs = outputs; }
    virtual void setInitialDelay(std::int32_t samples) { cEffect.initialDelay = samples; }
    virtual void programsAreChunks(bool state = true) { SetFlag(effFlagsProgramChunks, state); }
    virtual void canProcessReplacing(bool state = true) { SetFlag(effFlagsCanReplacing, state); }
    virtual void canDoubleReplacing(bool state = true) { SetFlag(effFlagsCanDoubleReplacing, state); }
    virtual void canMono(bool state = true) { SetFlag(effFlagsCanMono, state); }
    virtual void isSynth(bool state = true) { SetFlag(effFlagsIsSynth, state); }

    /// [main-thread] Takes over the editor, which is deleted with the effect; the host learns that there is
    /// one.
    virtual void setEditor(AEffEditor* newEditor);
    virtual AEffEditor* getEditor() { return editor.get(); }

    /// [main-thread] The interface version of the host; 1 when it does not say.
    std::int32_t getMasterVersion();
    /// [main-thread] The host's folder of this plug-in, as text of the host's; null when it has none.
    void* getDirectory();

  protected:
    /// Asks the host; 0 when there is no callback.
    VstIntPtr CallHost(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f);

    audioMasterCallback audioMaster;
    std::unique_ptr<AEffEditor> editor;
    float sampleRate = 44100.0f;
    std::int32_t blockSize = 1024;
    std::int32_t numPrograms;
    std::int32_t numParams;
    std::atomic<std::int32_t> curProgram{0}; ///< a host may automate from its audio thread meanwhile
    AEffect cEffect{};

  private:
    void SetFlag(std::int32_t flag, bool state);

    static VstIntPtr dispatchEffectClass(AEffect* e, std::int32_t opcode, std::int32_t index, VstIntPtr value,
                                         void* ptr, float opt);
    static void setParameterClass(AEffect* e, std::int32_t index, float value);
    static float getParameterClass(AEffect* e, std::int32_t index);
    static void processClass(AEffect* e, float** inputs, float** outputs, std::int32_t sampleFrames);
    static void processClassReplacing(AEffect* e, float** inputs, float** outputs, std::int32_t sampleFrames);
    static void processClassDoubleReplacing(AEffect* e, double** inputs, double** outputs,
                                            std::int32_t sampleFrames);
};

} // namespace vocafade
