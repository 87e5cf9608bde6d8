// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

/// The binary face of a VST 2.4 effect: what a host and a shared object agree on. Nothing here is specific to
/// this plug-in, and the host library shares nothing else with it.
namespace vocafade {

/// A pointer-sized signed integer, as opcodes carry it.
using VstIntPtr = std::intptr_t;

/// Packs four characters into a number, the first one highest.
constexpr std::int32_t VstId(char a, char b, char c, char d) {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(static_cast<unsigned char>(a)) << 24) |
                                     (static_cast<std::uint32_t>(static_cast<unsigned char>(b)) << 16) |
                                     (static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << 8) |
                                     static_cast<std::uint32_t>(static_cast<unsigned char>(d)));
}

/// First field of every descriptor.
inline constexpr std::int32_t kEffectMagic = VstId('V', 's', 't', 'P');

struct AEffect;

/// The host's one entry: what a plug-in asks of it (see `AudioMasterOpcode`).
using audioMasterCallback = VstIntPtr (*)(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                          VstIntPtr value, void* ptr, float opt);
using AEffectDispatcherProc = VstIntPtr (*)(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                            VstIntPtr value, void* ptr, float opt);
using AEffectProcessProc = void (*)(AEffect* effect, float** inputs, float** outputs,
                                    std::int32_t sampleFrames);
using AEffectProcessDoubleProc = void (*)(AEffect* effect, double** inputs, double** outputs,
                                          std::int32_t sampleFrames);
using AEffectSetParameterProc = void (*)(AEffect* effect, std::int32_t index, float parameter);
using AEffectGetParameterProc = float (*)(AEffect* effect, std::int32_t index);

/// Bits of `AEffect::flags`.
enum AEffectFlags : std::int32_t {
    effFlagsHasEditor = 1 << 0,          ///< the editor opcodes are answered
    effFlagsHasClip = 1 << 1,            ///< deprecated
    effFlagsHasVu = 1 << 2,              ///< deprecated
    effFlagsCanMono = 1 << 3,            ///< deprecated
    effFlagsCanReplacing = 1 << 4,       ///< `processReplacing` may be called
    effFlagsProgramChunks = 1 << 5,      ///< programs travel as opaque chunks
    effFlagsIsSynth = 1 << 8,            ///< an instrument
    effFlagsNoSoundInStop = 1 << 9,      ///< silent input gives silent output
    effFlagsExtIsAsync = 1 << 10,        ///< deprecated
    effFlagsExtHasBuffer = 1 << 11,      ///< deprecated
    effFlagsCanDoubleReplacing = 1 << 12 ///< `processDoubleReplacing` may be called
};

/// The descriptor that an entry point returns. The host reads it and calls through it.
struct AEffect {
    std::int32_t magic;                              ///< `kEffectMagic`
    AEffectDispatcherProc dispatcher;                ///< [main-thread] every opcode
    AEffectProcessProc process;                      ///< [audio-thread] deprecated: adds to the outputs
    AEffectSetParameterProc setParameter;            ///< [any-thread]
    AEffectGetParameterProc getParameter;            ///< [any-thread]
    std::int32_t numPrograms;                        ///< programs, each with all parameters
    std::int32_t numParams;                          ///< automatable parameters
    std::int32_t numInputs;                          ///< audio input channels
    std::int32_t numOutputs;                         ///< audio output channels
    std::int32_t flags;                              ///< `AEffectFlags`
    VstIntPtr resvd1;                                ///< the host's
    VstIntPtr resvd2;                                ///< the host's
    std::int32_t initialDelay;                       ///< reported latency in samples
    std::int32_t realQualities;                      ///< deprecated
    std::int32_t offQualities;                       ///< deprecated
    float ioRatio;                                   ///< deprecated
    void* object;                                    ///< the plug-in's instance
    void* user;                                      ///< the host's
    std::int32_t uniqueID;                           ///< four characters, see `VstId`
    std::int32_t version;                            ///< the plug-in's version
    AEffectProcessProc processReplacing;             ///< [audio-thread]
    AEffectProcessDoubleProc processDoubleReplacing; ///< [audio-thread]
    char future[56];                                 ///< zero
};

#if defined(__LP64__) || defined(_WIN64)
static_assert(sizeof(AEffect) == 192);
static_assert(offsetof(AEffect, magic) == 0);
static_assert(offsetof(AEffect, dispatcher) == 8);
static_assert(offsetof(AEffect, process) == 16);
static_assert(offsetof(AEffect, setParameter) == 24);
static_assert(offsetof(AEffect, getParameter) == 32);
static_assert(offsetof(AEffect, numPrograms) == 40);
static_assert(offsetof(AEffect, numParams) == 44);
static_assert(offsetof(AEffect, numInputs) == 48);
static_assert(offsetof(AEffect, numOutputs) == 52);
static_assert(offsetof(AEffect, flags) == 56);
static_assert(offsetof(AEffect, resvd1) == 64);
static_assert(offsetof(AEffect, resvd2) == 72);
static_assert(offsetof(AEffect, initialDelay) == 80);
static_assert(offsetof(AEffect, realQualities) == 84);
static_assert(offsetof(AEffect, offQualities) == 88);
static_assert(offsetof(AEffect, ioRatio) == 92);
static_assert(offsetof(AEffect, object) == 96);
static_assert(offsetof(AEffect, user) == 104);
static_assert(offsetof(AEffect, uniqueID) == 112);
static_assert(offsetof(AEffect, version) == 116);
static_assert(offsetof(AEffect, processReplacing) == 120);
static_assert(offsetof(AEffect, processDoubleReplacing) == 128);
static_assert(offsetof(AEffect, future) == 136);
#endif

/// Sizes of the text buffers that the two sides hand to each other, terminator included.
enum VstStringLengths : std::int32_t {
    kVstMaxProgNameLen = 24,
    kVstMaxParamStrLen = 8, ///< hosts give more in practice
    kVstMaxVendorStrLen = 64,
    kVstMaxProductStrLen = 64,
    kVstMaxEffectNameLen = 32,
    kVstMaxLabelLen = 64,
    kVstMaxShortLabelLen = 8,
    kVstMaxCategLabelLen = 24,
    kVstMaxNameLen = 64,
};

/// The editor's rectangle in pixels.
struct ERect {
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};
static_assert(sizeof(ERect) == 8);

/// Bits of `VstParameterProperties::flags`.
enum VstParameterFlags : std::int32_t {
    kVstParameterIsSwitch = 1 << 0,
    kVstParameterUsesIntegerMinMax = 1 << 1,
    kVstParameterUsesFloatStep = 1 << 2,
    kVstParameterUsesIntStep = 1 << 3,
    kVstParameterSupportsDisplayIndex = 1 << 4,
    kVstParameterSupportsDisplayCategory = 1 << 5,
    kVstParameterCanRamp = 1 << 6,
};

/// What `effGetParameterProperties` fills in.
struct VstParameterProperties {
    float stepFloat;
    float smallStepFloat;
    float largeStepFloat;
    char label[kVstMaxLabelLen];
    std::int32_t flags; ///< `VstParameterFlags`
    std::int32_t minInteger;
    std::int32_t maxInteger;
    std::int32_t stepInteger;
    std::int32_t largeStepInteger;
    char shortLabel[kVstMaxShortLabelLen];
    std::int16_t displayIndex;
    std::int16_t category;
    std::int16_t numParametersInCategory;
    std::int16_t reserved;
    char categoryLabel[kVstMaxCategLabelLen];
    char future[16];
};
static_assert(sizeof(VstParameterProperties) == 152);

/// What `effGetInputProperties` and `effGetOutputProperties` fill in.
struct VstPinProperties {
    char label[kVstMaxLabelLen];
    std::int32_t flags;
    std::int32_t arrangementType;
    char shortLabel[kVstMaxShortLabelLen];
    char future[48];
};
static_assert(sizeof(VstPinProperties) == 128);

/// A key press as hosts pass it on.
struct VstKeyCode {
    std::int32_t character; ///< the ASCII character, 0 when there is none
    unsigned char virt;     ///< the virtual key number, 0 when there is none
    unsigned char modifier; ///< shift 1, alternate 2, command 4, control 8
};

/// What `effBeginLoadBank` and `effBeginLoadProgram` hand over.
struct VstPatchChunkInfo {
    std::int32_t version;
    std::int32_t pluginUniqueID;
    std::int32_t pluginVersion;
    std::int32_t numElements; ///< programs of a bank, parameters of a program
    char future[48];
};
static_assert(sizeof(VstPatchChunkInfo) == 64);

/// Bits of `VstTimeInfo::flags`.
enum VstTimeInfoFlags : std::int32_t {
    kVstTransportChanged = 1 << 0,
    kVstTransportPlaying = 1 << 1,
    kVstTransportCycleActive = 1 << 2,
    kVstTransportRecording = 1 << 3,
    kVstNanosValid = 1 << 8,
    kVstPpqPosValid = 1 << 9,
    kVstTempoValid = 1 << 10,
    kVstBarsValid = 1 << 11,
    kVstCyclePosValid = 1 << 12,
    kVstTimeSigValid = 1 << 13,
    kVstSmpteValid = 1 << 14,
    kVstClockValid = 1 << 15,
};

/// What `audioMasterGetTime` answers.
struct VstTimeInfo {
    double samplePos;   ///< position in samples
    double sampleRate;  ///< in Hz
    double nanoSeconds; ///< system time
    double ppqPos;      ///< position in quarter notes
    double tempo;       ///< beats a minute
    double barStartPos;
    double cycleStartPos;
    double cycleEndPos;
    std::int32_t timeSigNumerator;
    std::int32_t timeSigDenominator;
    std::int32_t smpteOffset;
    std::int32_t smpteFrameRate;
    std::int32_t samplesToNextClock;
    std::int32_t flags; ///< `VstTimeInfoFlags`
};
static_assert(sizeof(VstTimeInfo) == 88);

/// Answers of `effGetPlugCategory`.
enum VstPlugCategory : std::int32_t {
    kPlugCategUnknown = 0,
    kPlugCategEffect = 1,
    kPlugCategSynth = 2,
    kPlugCategAnalysis = 3,
    kPlugCategMastering = 4,
    kPlugCategSpacializer = 5,
    kPlugCategRoomFx = 6,
    kPlugSurroundFx = 7,
    kPlugCategRestoration = 8,
    kPlugCategOfflineProcess = 9,
    kPlugCategShell = 10,
    kPlugCategGenerator = 11,
};

} // namespace vocafade
