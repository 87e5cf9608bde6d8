// SPDX-License-Identifier: MIT
// Everything at once, for the thread sanitizer: an audio thread that also automates, a main thread that
// handles programs and formats, and a reader of meters, on two instances.
#include "effect/avocafade.h"
#include "tests/support/recording_host.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <atomic>
#include <thread>

namespace vocafade::test {
namespace {

using Threads = WithSettings;

class CountingListener : public EffectListener {
  public:
    void UpdateControl(std::int32_t, float) override { ++updates; }
    void UpdateModify() override { ++updates; }
    std::atomic<int> updates{0};
};

void RunAudio(AVocafade& effect, const std::atomic<bool>& stop) {
    const Samples left = Noise(2000, 1);
    const Samples right = Noise(2000, 2);
    Samples outL(2000);
    Samples outR(2000);
    for (std::size_t block = 1; !stop; block = block % 1999 + 1) {
        float* in[] = {const_cast<float*>(left.data()), const_cast<float*>(right.data())};
        float* out[] = {outL.data(), outR.data()};
        effect.processReplacing(in, out, static_cast<std::int32_t>(block));
        for (std::int32_t i = 0; i < kParameterCount; ++i) {
            effect.setParameter(i, static_cast<float>(block % 100) / 100.0f);
        }
    }
}

void ReadMeters(AVocafade& effect, const std::atomic<bool>& stop) {
    while (!stop) {
        float vu[4];
        effect.GetVU(&vu[0], &vu[1], &vu[2], &vu[3]);
        for (std::int32_t i = 0; i < kParameterCount; ++i) {
            char text[64];
            effect.getParameterDisplay(i, text);
            effect.getParameter(i);
        }
        std::this_thread::yield();
    }
}

TEST_F(Threads, InstancesRunWhileEverythingIsChanged) {
    AVocafade first(SilentHost);
    AVocafade second(SilentHost);
    CountingListener listener;
    std::atomic<bool> stop{false};
    for (AVocafade* effect : {&first, &second}) {
        effect->open();
        effect->setBlockSize(2000);
        effect->SetListener(&listener);
    }
    std::thread workers[] = {
        std::thread([&] { RunAudio(first, stop); }), std::thread([&] { RunAudio(second, stop); }),
        std::thread([&] { ReadMeters(first, stop); }), std::thread([&] { ReadMeters(second, stop); })};
    for (int round = 0; round < 60; ++round) {
        for (AVocafade* effect : {&first, &second}) {
            effect->setProgram(round % 64);
            effect->IsProgramChanged();
            effect->CopyPgFrom((round + 1) % 64);
            effect->setSampleRate(round % 2 == 0 ? 48000.0f : 44100.0f);
            effect->setBlockSize(100 + round * 40);
            effect->suspend();
            effect->resume();
            effect->ProgramToInitial();
            effect->ProgramToFactory();
            if (round % 20 == 0) effect->SaveProgram(round, "while it plays");
        }
    }
    stop = true;
    for (std::thread& worker : workers) {
        worker.join();
    }
    EXPECT_GT(listener.updates, 0);
    EXPECT_EQ(first.getProgram(), 59);
}

} // namespace
} // namespace vocafade::test
