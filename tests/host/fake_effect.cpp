// SPDX-License-Identifier: MIT
#include "tests/host/fake_effect.h"

#include "vst/opcodes.h"

#include <cstdlib>
#include <cstring>

namespace {

using namespace vocafade;
using vocafade::host::fake::Log;

Log theLog;

struct Fake {
    AEffect effect{};
    audioMasterCallback host = nullptr;

    VstIntPtr Ask(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                  float opt = 0.0f) {
        return host(&effect, opcode, index, value, ptr, opt);
    }
};

Fake& Self(AEffect* effect) { return *static_cast<Fake*>(effect->object); }

VstIntPtr Dispatch(AEffect* effect, std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                   float) {
    theLog.opcodes.push_back(opcode);
    Fake& self = Self(effect);
    switch (opcode) {
    case effClose:
        delete &self;
        return 0;
    case effGetParamName:
        std::memset(ptr, 'x', 200); // far over the interface's 8, and without an end
        return 0;
    case effGetChunk:
        return value - 1;
    case effVendorSpecific: // does what an editor would
        self.Ask(audioMasterBeginEdit, index);
        self.Ask(audioMasterAutomate, index, 0, nullptr, 0.75f);
        self.Ask(audioMasterEndEdit, index);
        self.Ask(audioMasterUpdateDisplay);
        return self.Ask(audioMasterSizeWindow, 320, 200);
    default:
        return 0;
    }
}

void Process(AEffect* effect, float** in, float** out, std::int32_t frames) {
    for (int c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < frames; ++i)
            out[c][i] = in[c][i] * 0.5f;
    Fake& self = Self(effect);
    const auto* time = reinterpret_cast<const VstTimeInfo*>(self.Ask(audioMasterGetTime));
    theLog.blocks.push_back(
        {static_cast<std::int64_t>(time->samplePos), self.Ask(audioMasterGetCurrentProcessLevel)});
}

/// Asks as an effect does in its constructor: with no descriptor, and with one that the host has not seen
/// yet.
void AskHost(Fake& self) {
    theLog = {};
    const auto note = [](const char* name, VstIntPtr answer) {
        theLog.answers.push_back(std::string(name) + "=" + std::to_string(answer));
    };
    char text[kVstMaxVendorStrLen] = "";
    char time[] = "sendVstTimeInfo";
    char dance[] = "dance";
    note("version", self.host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f));
    note("rate", self.Ask(audioMasterGetSampleRate));
    note("block", self.Ask(audioMasterGetBlockSize));
    note("vendor", self.Ask(audioMasterGetVendorString, 0, 0, text));
    theLog.answers.emplace_back(text);
    note("canTime", self.Ask(audioMasterCanDo, 0, 0, time));
    note("canDance", self.Ask(audioMasterCanDo, 0, 0, dance));
    note("unknown", self.Ask(9999));
    const VstIntPtr folder = self.host(nullptr, audioMasterGetDirectory, 0, 0, nullptr, 0.0f);
    theLog.answers.emplace_back(folder != 0 ? reinterpret_cast<const char*>(folder) : "no folder");
}

} // namespace

AEffect* vocafade::host::fake::Make(audioMasterCallback host) {
    auto* self = new Fake;
    AEffect& effect = self->effect;
    effect.resvd1 = 0x1234; // not what a host would find good
    self->host = host;
    AskHost(*self);
    effect.magic = kEffectMagic;
    effect.dispatcher = Dispatch;
    effect.setParameter = [](AEffect*, std::int32_t, float) {
        std::abort();
    }; // only others than its one are set
    effect.getParameter = [](AEffect*, std::int32_t) { return 0.5f; };
    effect.processReplacing = Process;
    effect.processDoubleReplacing = [](AEffect*, double**, double**, std::int32_t) {};
    effect.numParams = 1;
    effect.numPrograms = 1;
    effect.numInputs = 2;
    effect.numOutputs = 2;
    effect.flags = effFlagsCanReplacing | effFlagsCanDoubleReplacing | effFlagsProgramChunks;
    effect.uniqueID = host::fake::kId;
    effect.object = self;
    return &effect;
}

extern "C" __attribute__((visibility("default"))) Log* FakeLog() { return &theLog; }
