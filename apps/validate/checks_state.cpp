// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace vocafade::validate {
namespace {

constexpr std::int32_t kBlock = 512;
constexpr std::size_t kMostChunk = std::size_t{64} << 20;

std::vector<char> TakeChunk(Instance& effect, bool programOnly, Report& report) {
    void* data = nullptr;
    report.Trying("taking its {} state", programOnly ? "program's" : "whole");
    const VstIntPtr size = effect.Ask(effGetChunk, programOnly ? 1 : 0, 0, static_cast<void*>(&data));
    if (size < 0 || static_cast<std::size_t>(size) > kMostChunk) {
        report.Fault("its state is said to have {} bytes", size);
        return {};
    }
    if (size > 0 && data == nullptr) {
        report.Fault("its state of {} bytes is nowhere", size);
        return {};
    }
    const auto* bytes = static_cast<const char*>(data);
    return {bytes, bytes + size};
}

/// Hands a state over with nothing behind its last byte, as a host may that maps a file.
void GiveChunk(Instance& effect, const std::vector<char>& chunk, bool programOnly) {
    const GuardedMemory memory(chunk.size(), GuardedMemory::Against::end, "the saved state");
    if (!chunk.empty()) std::memcpy(memory.data(), chunk.data(), chunk.size());
    effect.Ask(effSetChunk, programOnly ? 1 : 0, static_cast<VstIntPtr>(chunk.size()), memory.data());
}

void PlayFinite(Instance& effect, Report& report, const char* situation) {
    Channels<float> in(effect->numInputs, kBlock);
    Channels<float> out(effect->numOutputs, kBlock);
    std::mt19937 random(1);
    in.FillWithNoise(random, 0.5F);
    for (int i = 0; i < 20; ++i)
        effect.Process(in.pointers(), out.pointers(), kBlock);
    if (!out.AreFinite(kBlock)) report.Fault("{}: its output is no number", situation);
}

std::vector<char> Damaged(const std::vector<char>& good, int round, std::mt19937& random) {
    std::vector<char> bytes = good;
    const auto any = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    const auto byte = [&] { return static_cast<char>(any(256)); };
    switch (round % 5) {
    case 0: // cut
        bytes.resize(any(good.size()));
        break;
    case 1: // some bytes changed
        for (std::size_t i = 0; i < 1 + good.size() / 50; ++i)
            bytes[any(bytes.size())] = byte();
        break;
    case 2: // all of them
        std::generate(bytes.begin(), bytes.end(), byte);
        break;
    case 3: // too much
        bytes.resize(good.size() * 2 + any(1000), '\x7f');
        break;
    default: { // a run of the bits that make numbers infinite, or none
        const std::size_t begin = any(bytes.size());
        const std::size_t count = std::min<std::size_t>(bytes.size() - begin, 64);
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), count, '\xff');
        break;
    }
    }
    return bytes;
}

} // namespace

void CheckPrograms(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, kBlock);
    for (std::int32_t i = 0; i < effect->numPrograms; ++i) {
        report.Trying("selecting program {}", i);
        effect.Ask(effBeginSetProgram);
        effect.Ask(effSetProgram, 0, i);
        effect.Ask(effEndSetProgram);
        const VstIntPtr now = effect.Ask(effGetProgram);
        if (now != i) report.Fault("after program {} was selected it says {}", i, now);
        PlayFinite(effect, report, "at one of its programs");
    }
    if (effect->numPrograms == 0) return;
    effect.Ask(effSetProgram, 0, 0);
    const std::string before = effect.Text(effGetProgramName);
    // With room behind it: effects copy as many bytes as a name may have.
    std::array<char, 256> name{};
    std::memcpy(name.data(), "Named", sizeof "Named");
    report.Trying("naming a program");
    effect.Ask(effSetProgramName, 0, 0, name.data());
    const std::string now = effect.Text(effGetProgramName);
    if (now != "Named" && now != before) report.Fault("a program named 'Named' is called '{}'", now);
    if (now == before) report.Remark("its programs cannot be named");
    std::fill(name.begin(), name.end() - 1, 'x');
    report.Trying("naming a program with 255 letters");
    effect.Ask(effSetProgramName, 0, 0, name.data());
    effect.Text(effGetProgramName);
    effect.Off();
}

void CheckStateRoundTrip(Subject& subject, Report& report) {
    Instance first(subject.Object());
    first.Open();
    if (!first.has(effFlagsProgramChunks)) {
        report.Skipped("it keeps no state of its own form; its parameters are its state");
        return;
    }
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    for (const bool programOnly : {false, true}) {
        for (int round = 0; round < 10; ++round) {
            for (std::int32_t i = 0; i < first->numParams; ++i)
                if (first.IsSettable(i)) first.setParameter(i, value(random));
            if (first->numPrograms > 0 && !programOnly)
                first.Ask(effSetProgram, 0,
                          static_cast<VstIntPtr>(random() % static_cast<unsigned>(first->numPrograms)));
            const std::vector<char> chunk = TakeChunk(first, programOnly, report);
            if (chunk.empty()) {
                report.Fault("its {} state is empty", programOnly ? "program's" : "whole");
                return;
            }
            Instance second(subject.Object());
            second.Open();
            report.Trying("restoring its {} state of {} bytes", programOnly ? "program's" : "whole",
                          chunk.size());
            GiveChunk(second, chunk, programOnly);
            for (std::int32_t i = 0; i < first->numParams; ++i) {
                const float saved = first.parameter(i);
                const float restored = second.parameter(i);
                // A switch may keep the number that it was given and restore the one that it means: what it
                // shows tells whether something was lost.
                const bool sameValue = std::fabs(saved - restored) < 1e-3F;
                const bool sameText = first.Text(effGetParamDisplay, i) == second.Text(effGetParamDisplay, i);
                if (first.IsSettable(i) && !sameValue && !sameText)
                    report.Fault("parameter {} was {} when its state was saved, and {} after it was restored",
                                 i, saved, restored);
            }
            if (!programOnly && second.Ask(effGetProgram) != first.Ask(effGetProgram))
                report.Fault("the selected program is not restored");
        }
    }
}

void CheckDamagedState(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, kBlock);
    if (!effect.has(effFlagsProgramChunks)) {
        report.Skipped("it keeps no state of its own form");
        return;
    }
    const std::vector<char> whole = TakeChunk(effect, false, report);
    const std::vector<char> program = TakeChunk(effect, true, report);
    if (whole.empty() || program.empty()) return;
    std::mt19937 random(subject.seed());
    for (int round = 0; round < 1000; ++round) {
        const bool programOnly = round % 2 == 1;
        const std::vector<char> bytes = Damaged(programOnly ? program : whole, round / 2, random);
        report.Trying("restoring a damaged {} state of {} bytes, round {} of seed {}",
                      programOnly ? "program's" : "whole", bytes.size(), round, subject.seed());
        GiveChunk(effect, bytes, programOnly);
        for (std::int32_t i = 0; i < effect->numParams; ++i) {
            effect.parameter(i);
            effect.Text(effGetParamDisplay, i);
        }
        effect.Text(effGetProgramName);
        PlayFinite(effect, report, "after a damaged state");
    }
    report.Trying("restoring the good state after all the damaged ones");
    GiveChunk(effect, whole, false);
    if (TakeChunk(effect, false, report).size() != whole.size())
        report.Remark("its state has another size after damaged ones were restored");
    PlayFinite(effect, report, "after its good state came back");
    effect.Off();
}

} // namespace vocafade::validate
