// SPDX-License-Identifier: MIT
#pragma once

#include "base/critical_section.h"
#include "base/cstring.h"
#include "base/wave_format.h"
#include "dsp/vocafade_manager.h"
#include "effect/editor_interface.h"
#include "effect/identity.h"
#include "effect/parameters.h"
#include "effect/program.h"
#include "effect/program_list.h"
#include "vst/audio_effect_x.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vocafade {

class CFile;

/// What the engine is told of the stream: the wave format and the host's largest block.
struct MediaType {
    tWAVEFORMATEX format;
    std::uint32_t blockSize;
};

/// The effect: six parameters, 64 programs in three sets, the audio path with its meters, and the bank file.
///
/// Threads: the host's audio thread processes and may set parameters; everything else is the main thread's.
/// Two locks exist, the audio lock here and the engine manager's; who holds both has taken the audio lock
/// first. Single values that threads share outside the locks are atomic.
class AVocafade : public AudioEffectX {
  public:
    /// [main-thread] Builds a complete effect at its defaults, switched on, with the editor that `makeEditor`
    /// makes (null for none). The bank file is read by `open`.
    explicit AVocafade(audioMasterCallback audioMaster, EditorFactory makeEditor = nullptr);
    ~AVocafade() override;

    // Life cycle and audio: avocafade_audio.cpp
    void open() override;
    void suspend() override;
    void resume() override;
    void setSampleRate(float rate) override;
    void setBlockSize(std::int32_t samples) override;
    std::int32_t startProcess() override;
    void processReplacing(float** inputs, float** outputs, std::int32_t sampleFrames) override;
    void processDoubleReplacing(double** inputs, double** outputs, std::int32_t sampleFrames) override;

    /// [any-thread] Peaks of the last block, linear, 1 is full scale.
    void GetVU(float* inL, float* inR, float* outL, float* outR);
    /// [any-thread] Puts in readings of a block that was processed elsewhere, for an effect that only shows.
    void ShowVU(float inL, float inR, float outL, float outR);
    /// [any-thread] There is no clip detection: always 0.
    std::int32_t GetClip() const { return 0; }
    /// [any-thread] Advances with every processed block and wraps; a changed value means new meter readings.
    std::uint16_t GetProcessCounter() const { return processCounter_.load(std::memory_order_relaxed); }

    // Parameters: avocafade_parameters.cpp
    void setParameter(std::int32_t index, float value) override;
    float getParameter(std::int32_t index) override;
    void getParameterLabel(std::int32_t index, char* label) override;
    void getParameterDisplay(std::int32_t index, char* text) override;
    void getParameterName(std::int32_t index, char* text) override;
    /// False, with the record cleared, for hosts that misread it (known_hosts.h). The host is asked for its
    /// name once.
    bool getParameterProperties(std::int32_t index, VstParameterProperties* properties) override;
    /// [main-thread] A value typed in display units (dB, Hz, position): sets it, shows it, tells the host.
    void setParameterFromDiaplay(std::int32_t index, float displayValue);
    /// [main-thread] A normalised value from the editor's controls: sets it and tells the host.
    void setParameterFormUI(std::int32_t index, float value);
    /// [any-thread] The internal value, rounded for one decimal place by adding 0.05 away from zero.
    float getParameterDisplayVal(std::int32_t index);

    // Programs and chunks: avocafade_programs.cpp
    void setProgram(std::int32_t program) override;
    void setProgramName(char* name) override;
    void getProgramName(char* name) override;
    bool getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text) override;
    /// [main-thread] The chunk is the current array itself, valid until the effect is closed.
    std::int32_t getChunk(void** data, bool isPreset) override;
    std::int32_t setChunk(void* data, std::int32_t byteSize, bool isPreset) override;
    /// [main-thread] True when the current program's values differ from those it had when it was loaded or
    /// saved.
    bool IsProgramChanged() const;
    void ProgramToInitial();              ///< [main-thread] the current program as it was loaded or saved
    void ProgramToAllInitial();           ///< [main-thread] all programs as they were loaded or saved
    void ProgramToFactory();              ///< [main-thread] the current program as the factory set has it
    void ProgramToAllFactory() {}         ///< [main-thread] empty; see docs/compatibility.md
    void CopyPgFrom(std::int32_t source); ///< [main-thread] copies program `source` over the current one
    /// [main-thread] Record `index` (0 to 63) of the current set.
    const AVocafadeProgram& Program(std::int32_t index) const;
    /// [main-thread] Its name in Shift-JIS, at most 23 bytes, also where chunk or file left no terminator.
    CString ProgramName(std::int32_t index) const;

    /// [main-thread] Fills the current programs from an older program list and its program files; says
    /// nothing. The values sound once a program is selected.
    void Convert(const std::string& listPath = kProgramListPath,
                 const std::string& folder = kProgramFileFolder);

    // The bank file: avocafade_bank.cpp
    /// [main-thread] Fills the factory set from the bank beside the plug-in, if `open` had to look there.
    void SetFactoryProgram();
    /// [main-thread] Stores the current settings in slot `index` (0 to 63) under `name` (Shift-JIS, cut at 23
    /// bytes), makes that slot current and rewrites the user's bank file. A failure to write is told through
    /// the message hook; the settings stay in memory. Another index does nothing.
    void SaveProgram(std::int32_t index, const CString& name);
    static std::uint32_t getDWordFile(CFile* file); ///< [main-thread] four bytes, the most significant first
    static std::uint16_t getWordFile(CFile* file);  ///< [main-thread] two bytes, likewise

    /// Shows a message to the user: a string resource and the path that it is about.
    using MessageHook = std::function<void(std::int32_t stringId, const std::string& path)>;
    /// Number of the message that the bank could not be saved.
    static constexpr std::int32_t kSaveFailedString = 20135;
    /// [main-thread] Null for no messages.
    void SetMessageHook(MessageHook hook) { messageHook_ = std::move(hook); }
    /// [main-thread] Who hears of changes from outside the editor. The listener outlives the effect or is
    /// taken away with null while no other thread calls the effect.
    void SetListener(EffectListener* listener) { listener_.store(listener, std::memory_order_release); }

    // Names and capabilities: avocafade.cpp
    bool getEffectName(char* text) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    std::int32_t getVendorVersion() override { return 1000; }
    std::int32_t canDo(char* text) override;
    VstPlugCategory getPlugCategory() override { return kPlugCategEffect; }

  private:
    struct Meters {
        float inL = 0.0f;
        float inR = 0.0f;
        float outL = 0.0f;
        float outR = 0.0f;
    };

    static bool IsProgram(std::int32_t index) { return index >= 0 && index < kProgramCount; }
    AVocafadeProgram& Current() { return programs_[static_cast<std::size_t>(curProgram.load())]; }
    const AVocafadeProgram& Current() const { return programs_[static_cast<std::size_t>(curProgram.load())]; }

    bool IsOn() const { return onOff_ != 0.0f; } ///< NaN counts as on
    void SetOnOff(float value);
    void ApplyParameter(std::int32_t index, float value);
    void TellEngine(std::int32_t index, float value);
    void StoreParameter(std::int32_t index, float value);
    std::atomic<float>& CachedInternal(std::int32_t index);
    void TellListener(std::int32_t index, float value);
    void TellModified();
    void SelectCurrentAgain();
    // Steps of a block, with the audio lock held.
    void StartBlock();
    void MeasureInput(const float* const* inputs, std::int32_t sampleFrames);
    void ShowInputAsOutput();
    void ProcessAndMeasure(float** inputs, std::int32_t sampleFrames, float** outputs);
    void LoadBank();
    std::string FolderOfPlugin();

    ProgramSet programs_; ///< the current programs; host chunks point into them
    CVocafadeManager engine_;
    ProgramSet initial_; ///< the programs as they stood after `open` or the last save
    ProgramSet factory_;
    CCriticalSection audioLock_; ///< guards the meters and every change of ON/OFF
    std::atomic<float> onOff_;
    std::array<std::atomic<float>, kParameterCount> normalized_; ///< ON/OFF's place is unused
    // Internal values as the display shows them.
    std::atomic<float> loFreqHz_{400.0f};
    std::atomic<float> hiFreqHz_{9000.0f};
    std::atomic<float> position_{50.0f}; ///< not the default: `open` selects a program, which sets it
    std::atomic<float> outputDb_{0.0f};
    std::atomic<float> inputDb_{0.0f};
    MediaType mediaType_{};
    Meters meters_;
    std::atomic<std::uint16_t> processCounter_{0xFFFF};
    std::string pluginFolder_; ///< filled by `open` only when the preferences folder has no bank
    std::atomic<EffectListener*> listener_{nullptr};
    MessageHook messageHook_;
    std::optional<bool> hostMisreadsProperties_; ///< the host is asked when it first wants them
};

} // namespace vocafade
