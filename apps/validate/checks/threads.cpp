// SPDX-License-Identifier: MIT
#include "apps/validate/audio_runner.h"
#include "apps/validate/check.h"

#include <memory>

namespace vocafade::validate {
namespace {

void Threads(Subject& subject, Report& report) {
    constexpr std::size_t kCount = 8;
    for (int round = 0; round < 3; ++round) {
        report.Trying("{} instances on a thread each, round {}", kCount, round);
        std::vector<std::unique_ptr<RawEffect>> effects;
        for (std::size_t i = 0; i < kCount; ++i) {
            effects.push_back(std::make_unique<RawEffect>(subject.Object()));
            effects.back()->Start(i % 2 == 0 ? 44100.0 : 96000.0, kBlock);
        }
        std::vector<std::unique_ptr<AudioRunner>> runners;
        runners.reserve(kCount);
        for (const auto& effect : effects)
            runners.push_back(std::make_unique<AudioRunner>(*effect, kBlock, subject.seed()));
        runners.back()->LetPass(100);
        for (int i = 0; i < 10; ++i) {
            report.Trying("another instance comes and goes while {} play, round {}", kCount, round);
            RawEffect passing(subject.Object());
            passing.Start(48000.0, kBlock);
            runners.front()->LetPass(5);
        }
        for (const auto& runner : runners) {
            runner->Stop();
            if (!runner->wasFinite()) report.Fault("on one of several threads its output is NaN or infinite");
        }
    }
}
const Check kThreads{"threads", 7, 60, kSeveralThreads, "many instances on many threads", Threads};

void CallsWhileAudio(Subject& subject, Report& report) {
    constexpr int kRounds = 150;
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    AudioRunner audio(effect, kBlock, subject.seed());
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    for (int round = 0; round < kRounds; ++round) {
        report.Trying("setting and reading parameters while audio runs, round {}", round);
        for (const std::int32_t i : effect.Settable()) {
            effect.setParameter(i, value(random));
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
        const bool programOnly = round % 2 == 1;
        const std::vector<char> state = effect.SaveState(programOnly);
        audio.LetPass(1);
        effect.RestoreState(state, programOnly);
    }
    audio.Stop();
    if (!audio.wasFinite()) report.Fault("while the main thread called its output was NaN or infinite");
    const AudioWatch::Counts& counts = audio.counts();
#ifndef VOCAFADE_SANITIZED // which count in the validator's place
    report.Measured(
        "the audio thread took {} locks in {} blocks, {} were not free; the longest wait was {:.0f} "
        "microseconds",
        counts.locks, audio.blocks(), counts.lockWaits, counts.longestLockWait * 1e6);
#endif
    // On a busy machine the main thread may lose the processor while it holds a lock, but not in every tenth
    // round.
    if (counts.longLockWaits > kRounds / 10)
        report.Fault("the audio thread waited {} times for more than {:.0f} ms for a lock",
                     counts.longLockWaits, AudioWatch::kLongLockWait * 1e3);
}
const Check kCallsWhileAudio{
    "calls-while-audio", 7, 60, kSeveralThreads, "the main thread sets, reads and saves while audio runs",
    CallsWhileAudio};

} // namespace
} // namespace vocafade::validate
