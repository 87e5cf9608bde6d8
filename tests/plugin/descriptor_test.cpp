// SPDX-License-Identifier: MIT
// The built plug-in, loaded as a host loads it and asked everything that a host can ask.
#include "base/path.h"
#include "host/shared_object.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_folder.h"

#include <map>

namespace vocafade::test {
namespace {

class Plugin : public WithSettings {
  protected:
    ~Plugin() override { Ask(effClose); }

    VstIntPtr Ask(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                  float opt = 0.0f) {
        return effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }
    std::string Text(std::int32_t opcode, std::int32_t index = 0) {
        char text[256] = {};
        Ask(opcode, index, 0, text);
        return text;
    }
    VstIntPtr CanDo(const char* what) { return Ask(effCanDo, 0, 0, const_cast<char*>(what)); }

    RecordingHost host;
    host::SharedObject object{PathOf(VOCAFADE_PLUGIN)};
    AEffect* effect = object.entry()(RecordingHost::Callback);
};

TEST_F(Plugin, RefusesAHostThatDoesNotKnowTheInterface) {
    EXPECT_EQ(object.entry()(nullptr), nullptr);
    host.version = 0;
    EXPECT_EQ(object.entry()(RecordingHost::Callback), nullptr);
}

TEST_F(Plugin, DescribesItself) {
    EXPECT_EQ(effect->magic, VstId('V', 's', 't', 'P'));
    EXPECT_EQ(effect->numPrograms, 64);
    EXPECT_EQ(effect->numParams, 6);
    EXPECT_EQ(effect->numInputs, 2);
    EXPECT_EQ(effect->numOutputs, 2);
    EXPECT_EQ(effect->flags, 0x39);
    EXPECT_EQ(effect->initialDelay, 0);
    EXPECT_EQ(effect->ioRatio, 1.0f);
    EXPECT_EQ(effect->uniqueID, 0x56666451);
    EXPECT_EQ(effect->version, 1);
    EXPECT_NE(effect->process, nullptr);
    EXPECT_NE(effect->processDoubleReplacing, nullptr);
    for (const char reserved : effect->future)
        EXPECT_EQ(reserved, 0);
    EXPECT_EQ(Text(effGetEffectName), "Vocafade");
    EXPECT_EQ(Text(effGetProductString), "Vocafade");
    EXPECT_EQ(Text(effGetVendorString), "VELMORAX Co.,Ltd.");
}

TEST_F(Plugin, SaysWhatItCanDo) {
    for (const char* no : {"sendVstEvents", "sendVstMidiEvent", "receiveVstEvents", "receiveVstMidiEvent",
                           "receiveVstTimeInfo", "offline", "midiProgramNames"}) {
        EXPECT_EQ(CanDo(no), -1) << no;
    }
    EXPECT_EQ(CanDo("bypass"), 1);
    for (const char* unknown : {"Bypass", "bypas", ""})
        EXPECT_EQ(CanDo(unknown), 0) << unknown;
    Ask(effMainsChanged, 0, 1);
    EXPECT_TRUE(host.Calls(audioMasterWantMidi).empty());
}

TEST_F(Plugin, AnswersEveryOpcodeAsTheInterfacesBaseDoes) {
    // What is not 0 without arguments; the rest refuses, or knows nothing of the matter.
    const std::map<std::int32_t, VstIntPtr> answers{
        {effIdentify, VstId('N', 'v', 'E', 'f')},
        {effCanBeAutomated, 1},
        {effGetNumProgramCategories, 1},
        {effConnectInput, 1},
        {effConnectOutput, 1},
        {effGetPlugCategory, 1},
        {effSetBlockSizeAndSampleRate, 1},
        {effGetVendorVersion, 1000},
        {effKeysRequired, 1},
        {effGetVstVersion, 2400},
        {effGetCurrentMidiProgram, -1},
    };
    for (std::int32_t opcode = -3; opcode < 120; ++opcode) {
        if (opcode == effClose) continue;
        const auto known = answers.find(opcode);
        EXPECT_EQ(Ask(opcode), known == answers.end() ? 0 : known->second) << opcode;
    }
    EXPECT_EQ(Ask(effSetBypass, 0, 1), 0) << "not acted on";
    EXPECT_EQ(Ask(effSetTotalSampleToProcess, 0, 1234), 1234);
    char text[64] = "x";
    EXPECT_EQ(Ask(effGetProgramNameIndexed, 64, 0, text), 0);
    EXPECT_EQ(Ask(effGetProgramNameIndexed, 63, 0, text), 1);
    EXPECT_STREQ(text, "Empty");
    VstParameterProperties properties;
    EXPECT_EQ(Ask(effGetParameterProperties, 3, 0, &properties), 1);
    VstPinProperties pin;
    EXPECT_EQ(Ask(effGetInputProperties, 0, 0, &pin), 0);
    void* in = &pin;
    void* out = &pin;
    EXPECT_EQ(Ask(effGetSpeakerArrangement, 0, reinterpret_cast<VstIntPtr>(&in), &out), 0);
    EXPECT_EQ(in, nullptr);
    EXPECT_EQ(out, nullptr);
    Ask(effSetProgram, 0, VstIntPtr{1} << 32);
    Ask(effSetProgram, 0, 70);
    EXPECT_EQ(Ask(effGetProgram), 0);
}

} // namespace
} // namespace vocafade::test
