// SPDX-License-Identifier: MIT
// A small effect that halves the sound, with the one fault that `kFault` names (none: it is sound in every way). The
// validator must find each of them, and nothing in the one without.
#include "tests/validate/fault.h"
#include "vst/audio_effect_x.h"
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

bool Has(std::string_view fault) { return kFault == fault; }

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

float sharedGain = 0.5f;

class Faulty : public AudioEffectX {
  public:
    explicit Faulty(audioMasterCallback host) : AudioEffectX(host, 0, 1) {
        setUniqueID(VstId('F', 'l', 't', 'y'));
        setNumInputs(2);
        programsAreChunks();
        if (Has("no-magic")) cEffect.magic = 0;
    }

    void open() override {
        if (Has("signal-handler")) std::signal(kSignal, SIG_IGN);
        if (Has("leaks-descriptor")) LoseDescriptor();
        if (Has("leaks-key")) LoseThreadKey();
        if (Has("leaks-memory")) [[maybe_unused]]
            void* volatile lost = std::malloc(4000);
    } // NOLINT(clang-analyzer-unix.Malloc): the leak is the fault
    void close() override {
        while (Has("hangs"))
            SleepShortly();
        if (Has("crashes-at-close")) Crash();
    }
    bool getEffectName(char* text) override { return std::snprintf(text, 7, "Faulty") > 0; }
    bool getVendorString(char* text) override { return std::snprintf(text, 9, "Vocafade") > 0; }
    void getParameterName(std::int32_t, char* text) override {
        const std::string name = Has("long-names") ? std::string(500, 'x') : "Gain";
        std::memcpy(text, name.c_str(), name.size() + 1);
    }
    void getParameterDisplay(std::int32_t, char* text) override {
        std::snprintf(text, 8, "%.2f", static_cast<double>(state_.gain));
    }
    void setParameter(std::int32_t index, float value) override {
        if (index != 0 || !(value >= 0.0f && value <= 1.0f)) return;
        state_.gain = Has("ignores-ends") ? std::clamp(value, 0.1f, 0.9f) : value;
        if (Has("shares-parameters")) sharedGain = value;
    }
    float getParameter(std::int32_t) override { return Has("shares-parameters") ? sharedGain : state_.gain; }

    std::int32_t getChunk(void** data, bool) override {
        *data = &state_;
        return sizeof state_;
    }
    std::int32_t setChunk(void* bytes, std::int32_t size, bool) override {
        constexpr std::int32_t own = sizeof state_;
        const std::int32_t count = Has("trusts-state") ? own : std::clamp(size, 0, own);
        State state = state_;
        std::memcpy(&state, bytes, static_cast<std::size_t>(count));
        if (!(state.gain >= 0.0f && state.gain <= 1.0f)) state.gain = 0.5f;
        if (!Has("forgets-state")) state_ = state;
        return 0;
    }

    void processReplacing(float** in, float** out, std::int32_t frames) override {
        Misbehave(in, out, frames);
        const float gain = getParameter(0);
        for (std::int32_t i = 0; i < frames; ++i) {
            const float left = in[0][i];
            if (Has("not-in-place")) out[1][i] = 0.0f; // which may be the memory of the input
            const float right = in[1][i];
            out[0][i] = left * gain;
            out[1][i] = right * gain;
            if (Has("keeps-nan")) {
                out[0][i] = memory_ = 0.9f * memory_ + 0.1f * left;
            } else if (!std::isfinite(left) || !std::isfinite(right)) {
                out[0][i] = out[1][i] = 0.0f;
            }
        }
    }

  private:
    void Misbehave(float** in, float** out, std::int32_t frames) {
        if (Has("allocates")) {
            void* volatile memory = std::malloc(static_cast<std::size_t>(frames) + 1);
            std::free(memory);
        }
        if (Has("sleeps")) SleepShortly();
        if (Has("prints")) std::fputs("busy\n", stderr);
        if (Has("writes-inputs") && frames > 0) in[0][0] = 0.0f;
        if (Has("writes-behind") && frames > 0) out[1][frames] = 0.0f;
        if (Has("reads-in-front") && frames > 0) memory_ = in[0][-1];
        if (Has("crashes-at-empty-block") && frames == 0) Crash();
        if (Has("races")) sharedGain = state_.gain;
        if (Has("throws")) throw std::string("no");
        if (Has("slow")) { // at any rate: ten times as long as the block lasts at 48 kHz
            const std::clock_t end = std::clock() + frames * CLOCKS_PER_SEC / 4800;
            while (std::clock() < end) {
            }
        }
    }

    /// The whole state, as hosts save it.
    struct State {
        float gain = 0.5f;
        float unused = 0.0f;
    } state_;
    float memory_ = 0.0f; ///< of a filter, for the fault that keeps NaN
};

} // namespace

extern "C" VOCAFADE_EXPORTED AEffect* VSTPluginMain(audioMasterCallback host) {
    if (host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;
    return (new Faulty(host))->getAeffect();
}
