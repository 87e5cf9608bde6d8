// SPDX-License-Identifier: MIT
#include "apps/validate/audio_runner.h"
#include "apps/validate/check.h"

#include <memory>

namespace vocafade::validate {
namespace {

constexpr std::int32_t kBlock = 256;

} // namespace

void CheckThreads(Subject& subject, Report& report) {
    constexpr std::size_t kCount = 8;
    for (int round = 0; round < 3; ++round) {
        report.Trying("{} instances on a thread each, round {}", kCount, round);
        std::vector<std::unique_ptr<Instance>> effects;
        for (std::size_t i = 0; i < kCount; ++i) {
            effects.push_back(std::make_unique<Instance>(subject.Object()));
            effects.back()->Start(i % 2 == 0 ? 44100.0 : 96000.0, kBlock);
        }
        std::vector<std::unique_ptr<AudioRunner>> runners;
        runners.reserve(kCount);
        for (const auto& effect : effects)
            runners.push_back(std::make_unique<AudioRunner>(*effect, kBlock, subject.seed()));
        runners.back()->LetPass(100);
        // Others come and go meanwhile.
        for (int i = 0; i < 10; ++i) {
            report.Trying("another instance comes and goes while {} play, round {}", kCount, round);
            Instance passing(subject.Object());
            passing.Start(48000.0, kBlock);
            runners.front()->LetPass(5);
        }
        for (const auto& runner : runners) {
            runner->Stop();
            if (!runner->wasFinite()) report.Fault("on one of several threads its output is no number");
        }
    }
}

void CheckCallsWhileAudio(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, kBlock);
    AudioRunner audio(effect, kBlock, subject.seed());
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    for (int round = 0; round < 150; ++round) {
        report.Trying("turning and reading parameters while audio runs, round {}", round);
        for (std::int32_t i = 0; i < effect->numParams; ++i) {
            if (effect.IsSettable(i)) effect.setParameter(i, value(random));
            effect.parameter(i);
            effect.Text(effGetParamDisplay, i);
        }
        audio.LetPass(1);
        if (effect->numPrograms > 0) {
            report.Trying("selecting programs while audio runs, round {}", round);
            effect.Ask(effSetProgram, 0, round % effect->numPrograms);
            effect.Text(effGetProgramName);
        }
        audio.LetPass(1);
        if (!effect.has(effFlagsProgramChunks)) continue;
        report.Trying("saving and restoring its state while audio runs, round {}", round);
        void* data = nullptr;
        const VstIntPtr size = effect.Ask(effGetChunk, round % 2, 0, static_cast<void*>(&data));
        if (size <= 0 || data == nullptr) continue;
        std::vector<char> copy(static_cast<const char*>(data), static_cast<const char*>(data) + size);
        audio.LetPass(1);
        effect.Ask(effSetChunk, round % 2, size, copy.data());
    }
    audio.Stop();
    if (!audio.wasFinite()) report.Fault("while the main thread was busy with it, its output was no number");
    const AudioWatch::Counts& counts = audio.counts();
    if (AudioWatch::CountsCalls())
        report.Measured("the audio thread took {} locks in {} blocks, {} were not free; the longest wait was "
                        "{:.0f} microseconds",
                        counts.locks, audio.blocks(), counts.lockWaits, counts.longestLockWait * 1e6);
    if (counts.longestLockWait > 0.05)
        report.Fault("the audio thread waited {:.0f} ms for a lock", counts.longestLockWait * 1e3);
}

} // namespace vocafade::validate
