// SPDX-License-Identifier: MIT
// A small effect that halves the sound, with one fault that VOCAFADE_FAULT picks at compile time (none: it is
// sound in every way). The validator must find each of them, and nothing in the one without.
#include "vst/aeffect.h"
#include "vst/opcodes.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>
#endif

namespace {

using namespace vocafade;

constexpr std::string_view kFault = VOCAFADE_FAULT;
constexpr bool Has(std::string_view fault) { return kFault == fault; }

/// The whole state, as hosts save it.
struct State {
    float gain = 0.5f;
    float unused = 0.0f;
};

struct Faulty {
    AEffect effect{};
    State state;
    float memory = 0.0f; ///< of a filter, for the fault that keeps NaN
};

float sharedGain = 0.5f;

Faulty& Self(AEffect* effect) { return *static_cast<Faulty*>(effect->object); }

void OnSignal(int) {}

#if defined(_WIN32)
constexpr int kSignal = SIGTERM;
void LoseDescriptor() {
    for (int i = 0; i < 5; ++i) // of which the validator leaves four to the compiler's libraries
        ::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
}
void LoseThreadKey() { ::FlsAlloc(nullptr); }
void SleepShortly() { ::Sleep(1); }
#define VOCAFADE_EXPORTED __declspec(dllexport)
#else
constexpr int kSignal = SIGUSR1;
// cppcheck-suppress resourceLeak // that is its fault
void LoseDescriptor() { [[maybe_unused]] const int lost = ::open("/dev/null", O_RDONLY); }
void LoseThreadKey() {
    pthread_key_t lost = 0;
    ::pthread_key_create(&lost, nullptr);
}
void SleepShortly() { ::usleep(1); }
#define VOCAFADE_EXPORTED __attribute__((visibility("default")))
#endif

/// Touches what is no address on any system.
void Crash() {
    volatile std::uintptr_t nowhere = std::uintptr_t{1} << 62;
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

double ThreadSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void Put(void* buffer, const char* text) { std::memcpy(buffer, text, std::strlen(text) + 1); }

VstIntPtr TakeState(Faulty& self, const void* bytes, VstIntPtr size) {
    if (Has("trusts-state")) { // reads as much as it would have written itself
        std::memcpy(&self.state, bytes, sizeof self.state);
        return 0;
    }
    const auto count = static_cast<std::size_t>(std::max<VstIntPtr>(size, 0));
    State state = self.state;
    std::memcpy(&state, bytes, std::min(count, sizeof state));
    if (!(state.gain >= 0.0f && state.gain <= 1.0f)) state.gain = 0.5f;
    if (!Has("forgets-state")) self.state = state;
    return 0;
}

VstIntPtr Dispatch(AEffect* effect, std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                   float) {
    Faulty& self = Self(effect);
    switch (opcode) {
    case effOpen:
        if (Has("signal-handler")) std::signal(kSignal, OnSignal);
        if (Has("leaks-descriptor")) LoseDescriptor();
        if (Has("leaks-key")) LoseThreadKey();
        if (Has("leaks-memory")) [[maybe_unused]]
            void* volatile lost = std::malloc(4000);
        return 0; // NOLINT(clang-analyzer-unix.Malloc): the leak is the fault
    case effClose:
        if (Has("hangs"))
            while (true)
                SleepShortly();
        if (Has("crashes-at-close")) Crash();
        delete &self;
        return 1;
    case effGetParamName:
        if (Has("long-names")) {
            std::memset(ptr, 'x', 500);
        } else if (index >= 0 && index < 1) {
            Put(ptr, "Gain");
        }
        return 0;
    case effGetParamDisplay:
        std::snprintf(static_cast<char*>(ptr), 8, "%.2f", static_cast<double>(self.state.gain));
        return 0;
    case effGetEffectName:
        Put(ptr, "Faulty");
        return 1;
    case effGetVendorString:
        Put(ptr, "Vocafade");
        return 1;
    case effCanBeAutomated:
        return 1;
    case effGetVstVersion:
        return 2400;
    case effGetChunk:
        *static_cast<void**>(ptr) = &self.state;
        return sizeof self.state;
    case effSetChunk:
        return TakeState(self, ptr, value);
    default:
        return 0;
    }
}

void Misbehave(Faulty& self, float** in, float** out, std::int32_t frames) {
    if (Has("allocates")) {
        void* volatile memory = std::malloc(static_cast<std::size_t>(frames) + 1);
        std::free(memory);
    }
    if (Has("sleeps")) SleepShortly();
    if (Has("prints")) std::fputs("busy\n", stderr);
    if (Has("writes-inputs") && frames > 0) in[0][0] = 0.0f;
    if (Has("writes-behind") && frames > 0) out[1][frames] = 0.0f;
    if (Has("reads-in-front") && frames > 0) self.memory = in[0][-1];
    if (Has("crashes-at-empty-block") && frames == 0) Crash();
    if (Has("races")) sharedGain = self.state.gain;
    if (Has("throws")) throw std::string("no");
}

void Process(AEffect* effect, float** in, float** out, std::int32_t frames) {
    Faulty& self = Self(effect);
    Misbehave(self, in, out, frames);
    const float gain = Has("shares-parameters") ? sharedGain : self.state.gain;
    for (std::int32_t i = 0; i < frames; ++i) {
        const float left = in[0][i];
        if (Has("not-in-place")) out[1][i] = 0.0f; // before the input was read, which may be the same memory
        const float right = in[1][i];
        out[0][i] = left * gain;
        out[1][i] = right * gain;
        if (Has("keeps-nan")) {
            self.memory = 0.9f * self.memory + 0.1f * left;
            out[0][i] = self.memory;
        } else if (!std::isfinite(left) || !std::isfinite(right)) {
            out[0][i] = out[1][i] = 0.0f;
        }
    }
    if (Has("slow")) { // at any rate: ten times as long as the block lasts at 48 kHz
        const double end = ThreadSeconds() + 10.0 * frames / 48000.0;
        while (ThreadSeconds() < end) {
        }
    }
}

void SetParameter(AEffect* effect, std::int32_t index, float value) {
    if (index != 0 || !(value >= 0.0f && value <= 1.0f)) return;
    Self(effect).state.gain = Has("ignores-ends") ? std::clamp(value, 0.1f, 0.9f) : value;
    if (Has("shares-parameters")) sharedGain = value;
}
float GetParameter(AEffect* effect, std::int32_t index) {
    if (index != 0) return 0.0f;
    return Has("shares-parameters") ? sharedGain : Self(effect).state.gain;
}

} // namespace

extern "C" VOCAFADE_EXPORTED AEffect* VSTPluginMain(audioMasterCallback host) {
    if (host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;
    auto* self = new Faulty;
    AEffect& effect = self->effect;
    effect.magic = Has("no-magic") ? 0 : kEffectMagic;
    effect.dispatcher = Dispatch;
    effect.setParameter = SetParameter;
    effect.getParameter = GetParameter;
    effect.processReplacing = Process;
    effect.numParams = 1;
    effect.numInputs = 2;
    effect.numOutputs = 2;
    effect.flags = effFlagsCanReplacing | effFlagsProgramChunks;
    effect.uniqueID = VstId('F', 'l', 't', 'y');
    effect.version = 1;
    effect.object = self;
    return &effect;
}
