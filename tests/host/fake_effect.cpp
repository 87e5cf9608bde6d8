// SPDX-License-Identifier: MIT
// A small VST 2.4 effect that halves the sound and writes down what its host does. FAKE_KIND picks what is
// wrong with it: 0 nothing, 1 it exports only `main`, 2 it refuses, 3 its descriptor is no descriptor, 4 it
// throws, 5 its answers break the rules.
#include "tests/host/fake_effect.h"

#include "vst/aeffect.h"
#include "vst/opcodes.h"

#include <cstring>
#include <mutex>
#include <stdexcept>

namespace {

using namespace vocafade;
using vocafade::host::fake::Log;

std::mutex mutex;
Log theLog;

struct Fake {
    AEffect effect{};
    audioMasterCallback host = nullptr;
    float gain = 0.5f;
    bool writesLog = false;
};

Fake* Self(AEffect* effect) { return static_cast<Fake*>(effect->object); }

VstIntPtr Dispatch(AEffect* effect, std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                   float) {
    {
        const std::lock_guard lock(mutex);
        theLog.opcodes.push_back(opcode);
    }
    Fake* self = Self(effect);
    switch (opcode) {
    case effClose:
        delete self;
        return 0;
    case effGetParamName:
        if (FAKE_KIND == 5) {
            std::memset(ptr, 'x', 200); // far over the interface's 8, and without an end
        } else {
            std::memcpy(ptr, "Gain", sizeof "Gain");
        }
        return 0;
    case effGetChunk:
        if (FAKE_KIND == 5) return value - 1;
        *static_cast<void**>(ptr) = &self->gain;
        return sizeof self->gain;
    case effSetChunk:
        if (value == sizeof self->gain) std::memcpy(&self->gain, ptr, sizeof self->gain);
        return 0;
    case effVendorSpecific: // does what an editor would
        self->host(effect, audioMasterBeginEdit, index, 0, nullptr, 0.0f);
        self->host(effect, audioMasterAutomate, index, 0, nullptr, 0.75f);
        self->host(effect, audioMasterEndEdit, index, 0, nullptr, 0.0f);
        self->host(effect, audioMasterUpdateDisplay, 0, 0, nullptr, 0.0f);
        return self->host(effect, audioMasterSizeWindow, 320, 200, nullptr, 0.0f);
    default:
        return 0;
    }
}

template <typename Sample>
void Process(AEffect* effect, Sample** in, Sample** out, std::int32_t frames) {
    Fake* self = Self(effect);
    for (int c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < frames; ++i)
            out[c][i] = in[c][i] * static_cast<Sample>(self->gain);
    const auto* time =
        reinterpret_cast<const VstTimeInfo*>(self->host(effect, audioMasterGetTime, 0, 0, nullptr, 0.0f));
    const VstIntPtr level = self->host(effect, audioMasterGetCurrentProcessLevel, 0, 0, nullptr, 0.0f);
    const std::lock_guard lock(mutex);
    ++theLog.processCalls;
    theLog.positionSeen = static_cast<std::int64_t>(time->samplePos);
    theLog.levelSeen = level;
}

void SetParameter(AEffect* effect, std::int32_t, float value) { Self(effect)->gain = value; }
float GetParameter(AEffect* effect, std::int32_t) { return Self(effect)->gain; }

/// Asks as an effect does in its constructor: with no descriptor, and with one that the host has not seen
/// yet.
void AskHost(Fake& self) {
    Log log;
    const auto ask = [&](const char* name, std::int32_t opcode, void* ptr) {
        const VstIntPtr answer = self.host(&self.effect, opcode, 0, 0, ptr, 0.0f);
        log.answers.push_back(std::string(name) + "=" + std::to_string(answer));
    };
    char text[kVstMaxVendorStrLen] = "";
    log.answers.push_back("version=" +
                          std::to_string(self.host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f)));
    ask("rate", audioMasterGetSampleRate, nullptr);
    ask("block", audioMasterGetBlockSize, nullptr);
    ask("vendor", audioMasterGetVendorString, text);
    log.answers.push_back(text);
    char time[] = "sendVstTimeInfo";
    ask("canTime", audioMasterCanDo, time);
    char dance[] = "dance";
    ask("canDance", audioMasterCanDo, dance);
    ask("unknown", 9999, nullptr);
    const VstIntPtr folder = self.host(nullptr, audioMasterGetDirectory, 0, 0, nullptr, 0.0f);
    log.answers.emplace_back(folder != 0 ? reinterpret_cast<const char*>(folder) : "no folder");
    const std::lock_guard lock(mutex);
    theLog = log;
}

AEffect* Make(audioMasterCallback host) {
    if (FAKE_KIND == 2) return nullptr;
    if (FAKE_KIND == 4) throw std::runtime_error("no");
    auto* self = new Fake;
    AEffect& effect = self->effect;
    effect.resvd1 = 0x1234; // not what a host would find good
    self->host = host;
    AskHost(*self);
    effect.magic = FAKE_KIND == 3 ? 0 : kEffectMagic;
    effect.dispatcher = Dispatch;
    effect.setParameter = SetParameter;
    effect.getParameter = GetParameter;
    effect.processReplacing = Process<float>;
    effect.processDoubleReplacing = Process<double>;
    effect.numParams = 1;
    effect.numPrograms = 1;
    effect.numInputs = 2;
    effect.numOutputs = 2;
    effect.flags = effFlagsCanReplacing | effFlagsCanDoubleReplacing | effFlagsProgramChunks;
    effect.uniqueID = host::fake::kId;
    effect.object = self;
    if (FAKE_KIND == 3) delete self;
    static AEffect broken{};
    return FAKE_KIND == 3 ? &broken : &effect;
}

} // namespace

extern "C" {
__attribute__((visibility("default"))) Log* FakeLog() { return &theLog; }
#if FAKE_KIND == 1
__attribute__((visibility("default"))) AEffect* OldEntry(audioMasterCallback host) __asm__("main");
AEffect* OldEntry(audioMasterCallback host) { return Make(host); }
#else
__attribute__((visibility("default"))) AEffect* VSTPluginMain(audioMasterCallback host) { return Make(host); }
#endif
}
