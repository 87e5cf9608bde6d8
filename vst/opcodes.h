// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

#include <cstdint>

namespace vocafade {

/// Requests of a host, sent through `AEffect::dispatcher`. Numbers are part of the binary interface.
/// "(deprecated)" marks what version 2.4 keeps only for older hosts.
enum AEffectOpcode : std::int32_t {
    effOpen = 0,
    effClose = 1,          ///< the instance is gone afterwards
    effSetProgram = 2,     ///< value: program number
    effGetProgram = 3,     ///< answers the program number
    effSetProgramName = 4, ///< ptr: text
    effGetProgramName = 5, ///< ptr: buffer of `kVstMaxProgNameLen`
    effGetParamLabel = 6,  ///< index, ptr: buffer
    effGetParamDisplay = 7,
    effGetParamName = 8,
    effGetVu = 9,          ///< (deprecated)
    effSetSampleRate = 10, ///< opt: Hz
    effSetBlockSize = 11,  ///< value: samples
    effMainsChanged = 12,  ///< value: 1 resume, 0 suspend
    effEditGetRect = 13,   ///< ptr: `ERect**`
    effEditOpen = 14,      ///< ptr: native parent window
    effEditClose = 15,
    effEditDraw = 16,  ///< (deprecated) ptr: `ERect*`
    effEditMouse = 17, ///< (deprecated) index: x, value: y
    effEditKey = 18,   ///< (deprecated) value: key
    effEditIdle = 19,
    effEditTop = 20,   ///< (deprecated)
    effEditSleep = 21, ///< (deprecated)
    effIdentify = 22,  ///< (deprecated) answers 'NvEf'
    effGetChunk = 23,  ///< ptr: `void**`, index: 0 bank, 1 program; answers the byte count
    effSetChunk = 24,  ///< ptr: bytes, value: count, index: 0 bank, 1 program
    effProcessEvents = 25,
    effCanBeAutomated = 26,          ///< index
    effString2Parameter = 27,        ///< index, ptr: text
    effGetNumProgramCategories = 28, ///< (deprecated)
    effGetProgramNameIndexed = 29,   ///< index, value: category, ptr: buffer
    effCopyProgram = 30,             ///< (deprecated) index: destination
    effConnectInput = 31,            ///< (deprecated)
    effConnectOutput = 32,           ///< (deprecated)
    effGetInputProperties = 33,      ///< index, ptr: `VstPinProperties*`
    effGetOutputProperties = 34,     ///< index, ptr: `VstPinProperties*`
    effGetPlugCategory = 35,
    effGetCurrentPosition = 36,   ///< (deprecated)
    effGetDestinationBuffer = 37, ///< (deprecated)
    effOfflineNotify = 38,
    effOfflinePrepare = 39,
    effOfflineRun = 40,
    effProcessVarIo = 41,
    effSetSpeakerArrangement = 42,     ///< value: input arrangement, ptr: output arrangement
    effSetBlockSizeAndSampleRate = 43, ///< (deprecated) value: samples, opt: Hz
    effSetBypass = 44,                 ///< value: 1 bypassed
    effGetEffectName = 45,
    effGetErrorText = 46, ///< (deprecated)
    effGetVendorString = 47,
    effGetProductString = 48,
    effGetVendorVersion = 49,
    effVendorSpecific = 50,         ///< index and value name an extension, see `kContentScaleExtension`
    effCanDo = 51,                  ///< ptr: text; answers 1 yes, -1 no, 0 unknown
    effGetTailSize = 52,            ///< 0 default, 1 none
    effIdle = 53,                   ///< (deprecated)
    effGetIcon = 54,                ///< (deprecated)
    effSetViewPosition = 55,        ///< (deprecated)
    effGetParameterProperties = 56, ///< index, ptr: `VstParameterProperties*`
    effKeysRequired = 57,           ///< (deprecated) 0: keys are required, 1: they are not
    effGetVstVersion = 58,          ///< answers 2400
    effEditKeyDown = 59,            ///< index: character, value: virtual key, opt: modifiers
    effEditKeyUp = 60,
    effSetEditKnobMode = 61,
    effGetMidiProgramName = 62,
    effGetCurrentMidiProgram = 63,
    effGetMidiProgramCategory = 64,
    effHasMidiProgramsChanged = 65,
    effGetMidiKeyName = 66,
    effBeginSetProgram = 67,
    effEndSetProgram = 68,
    effGetSpeakerArrangement = 69, ///< value: `VstSpeakerArrangement**` in, ptr: out
    effShellGetNextPlugin = 70,
    effStartProcess = 71,
    effStopProcess = 72,
    effSetTotalSampleToProcess = 73,
    effSetPanLaw = 74,
    effBeginLoadBank = 75,       ///< ptr: `VstPatchChunkInfo*`
    effBeginLoadProgram = 76,    ///< ptr: `VstPatchChunkInfo*`
    effSetProcessPrecision = 77, ///< value: 0 single, 1 double
    effGetNumMidiInputChannels = 78,
    effGetNumMidiOutputChannels = 79,
};

/// Requests of a plug-in, sent through the host's callback.
enum AudioMasterOpcode : std::int32_t {
    audioMasterAutomate = 0, ///< index, opt: normalised value
    audioMasterVersion = 1,  ///< answers 2400
    audioMasterCurrentId = 2,
    audioMasterIdle = 3,
    audioMasterPinConnected = 4, ///< (deprecated)
    audioMasterWantMidi = 6,     ///< (deprecated)
    audioMasterGetTime = 7,      ///< value: wanted `VstTimeInfoFlags`; answers `VstTimeInfo*`
    audioMasterProcessEvents = 8,
    audioMasterSetTime = 9,                      ///< (deprecated)
    audioMasterTempoAt = 10,                     ///< (deprecated)
    audioMasterGetNumAutomatableParameters = 11, ///< (deprecated)
    audioMasterGetParameterQuantization = 12,    ///< (deprecated)
    audioMasterIOChanged = 13,
    audioMasterNeedIdle = 14,   ///< (deprecated)
    audioMasterSizeWindow = 15, ///< index: width, value: height
    audioMasterGetSampleRate = 16,
    audioMasterGetBlockSize = 17,
    audioMasterGetInputLatency = 18,
    audioMasterGetOutputLatency = 19,
    audioMasterGetPreviousPlug = 20,         ///< (deprecated)
    audioMasterGetNextPlug = 21,             ///< (deprecated)
    audioMasterWillReplaceOrAccumulate = 22, ///< (deprecated)
    audioMasterGetCurrentProcessLevel = 23,
    audioMasterGetAutomationState = 24,
    audioMasterOfflineStart = 25,
    audioMasterOfflineRead = 26,
    audioMasterOfflineWrite = 27,
    audioMasterOfflineGetCurrentPass = 28,
    audioMasterOfflineGetCurrentMetaPass = 29,
    audioMasterSetOutputSampleRate = 30,         ///< (deprecated)
    audioMasterGetOutputSpeakerArrangement = 31, ///< (deprecated)
    audioMasterGetVendorString = 32,             ///< ptr: buffer
    audioMasterGetProductString = 33,            ///< ptr: buffer
    audioMasterGetVendorVersion = 34,
    audioMasterVendorSpecific = 35,
    audioMasterSetIcon = 36, ///< (deprecated)
    audioMasterCanDo = 37,   ///< ptr: text
    audioMasterGetLanguage = 38,
    audioMasterOpenWindow = 39,   ///< (deprecated)
    audioMasterCloseWindow = 40,  ///< (deprecated)
    audioMasterGetDirectory = 41, ///< answers the plug-in's folder as text
    audioMasterUpdateDisplay = 42,
    audioMasterBeginEdit = 43, ///< index
    audioMasterEndEdit = 44,   ///< index
    audioMasterOpenFileSelector = 45,
    audioMasterCloseFileSelector = 46,
    audioMasterEditFile = 47,                   ///< (deprecated)
    audioMasterGetChunkFile = 48,               ///< (deprecated)
    audioMasterGetInputSpeakerArrangement = 49, ///< (deprecated)
};

/// `effVendorSpecific` with these as index and value tells in opt how many pixels of the host's window a point
/// has: an extension that one maker of hosts published and others took over.
inline constexpr std::int32_t kContentScaleExtension = VstId('P', 'r', 'e', 'S');
inline constexpr std::int32_t kContentScaleValue = VstId('A', 'e', 'C', 's');

} // namespace vocafade
