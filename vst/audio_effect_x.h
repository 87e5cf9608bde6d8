// SPDX-License-Identifier: MIT
#pragma once

#include "vst/audio_effect.h"

#include <string>

namespace vocafade {

/// What version 2 of the interface adds: names, capabilities, properties, tails and the rest of the opcodes.
/// An operation that is not overridden answers as the interface's base does, mostly with "no".
class AudioEffectX : public AudioEffect {
  public:
    using AudioEffect::AudioEffect;

    VstIntPtr dispatcher(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                         float opt) override;
    /// [main-thread] Asks the host for MIDI when the effect can receive it.
    void resume() override;

    virtual bool canParameterBeAutomated(std::int32_t /*index*/) { return true; } ///< [main-thread]
    virtual bool string2parameter(std::int32_t index, char* text);                ///< [main-thread]
    /// [main-thread] Fills in a parameter's properties; false when it has none.
    virtual bool getParameterProperties(std::int32_t index, VstParameterProperties* properties);
    /// [main-thread] Copies the name of program `index`; false when there is none.
    virtual bool getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text);
    virtual bool getInputProperties(std::int32_t index, VstPinProperties* properties);  ///< [main-thread]
    virtual bool getOutputProperties(std::int32_t index, VstPinProperties* properties); ///< [main-thread]

    virtual bool getEffectName(char* text);               ///< [main-thread]
    virtual bool getVendorString(char* text);             ///< [main-thread]
    virtual bool getProductString(char* text);            ///< [main-thread]
    virtual std::int32_t getVendorVersion() { return 0; } ///< [main-thread]
    /// [main-thread] 1 yes, -1 no, 0 unknown.
    virtual std::int32_t canDo(char* text);
    virtual VstPlugCategory getPlugCategory();                ///< [main-thread]
    virtual std::int32_t getVstVersion() { return 2400; }     ///< [main-thread]
    virtual std::int32_t getTailSize() { return 0; }          ///< [main-thread] samples, 0 unknown, 1 none
    virtual std::int32_t startProcess() { return 0; }         ///< [main-thread]
    virtual std::int32_t stopProcess() { return 0; }          ///< [main-thread]
    virtual bool setBypass(bool onOff);                       ///< [main-thread]
    virtual bool setProcessPrecision(std::int32_t precision); ///< [main-thread] 0 single, 1 double
    virtual void setBlockSizeAndSampleRate(std::int32_t samples, float rate); ///< [main-thread] deprecated

    /// [main-thread] An extension of the interface by some host's maker; 0 for those that are not known. Known
    /// is the content scale, which goes to the editor.
    virtual VstIntPtr vendorSpecific(std::int32_t index, VstIntPtr value, void* ptr, float opt);

    bool beginEdit(std::int32_t index); ///< [any-thread] a user takes hold of a parameter
    bool endEdit(std::int32_t index);   ///< [any-thread] and lets it go
    bool updateDisplay();               ///< [main-thread] asks the host to read names and values again
    /// [main-thread] Asks the host for an editor's window of that size in device pixels; true when it has it.
    bool sizeWindow(std::int32_t width, std::int32_t height);
    /// [main-thread] What the host calls itself, at most 63 bytes; empty when it does not say.
    std::string getHostProductString();
};

} // namespace vocafade
