// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vocafade::validate {
namespace {

const char* NameOf(bool programOnly) { return programOnly ? "program" : "bank"; }

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
    default: { // a run of bytes that read as NaN
        const std::size_t begin = any(bytes.size());
        const std::size_t count = std::min<std::size_t>(bytes.size() - begin, 64);
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), count, '\xff');
        break;
    }
    }
    return bytes;
}

void Programs(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    for (std::int32_t i = 0; i < effect->numPrograms; ++i) {
        report.Trying("selecting program {}", i);
        effect.Ask(effBeginSetProgram);
        effect.Ask(effSetProgram, 0, i);
        effect.Ask(effEndSetProgram);
        const VstIntPtr now = effect.Ask(effGetProgram);
        if (now != i) report.Fault("after program {} was selected effGetProgram answers {}", i, now);
        PlayFinite(effect, report, "at one of its programs");
    }
    if (effect->numPrograms == 0) return;
    effect.Ask(effSetProgram, 0, 0);
    const std::string before = effect.Text(effGetProgramName);
    // With room behind it: effects copy as many bytes as a name may have.
    std::array<char, 256> name{"Named"};
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
const Check kPrograms{"programs", 2, 30, kPlain, "every program can be selected, named and used", Programs};

void State(Subject& subject, Report& report) {
    RawEffect first(subject.Object());
    first.Open();
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    for (const bool programOnly : {false, true}) {
        for (int round = 0; round < 10; ++round) {
            for (const std::int32_t i : first.Settable())
                first.setParameter(i, value(random));
            if (first->numPrograms > 0 && !programOnly)
                first.Ask(effSetProgram, 0,
                          static_cast<VstIntPtr>(random() % static_cast<unsigned>(first->numPrograms)));
            report.Trying("saving a {}", NameOf(programOnly));
            const std::vector<char> state = first.SaveState(programOnly);
            if (state.empty()) throw Hopeless(fmt::format("the saved {} is empty", NameOf(programOnly)));
            RawEffect second(subject.Object());
            second.Open();
            report.Trying("restoring a {} of {} bytes", NameOf(programOnly), state.size());
            second.RestoreState(state, programOnly);
            for (const std::int32_t i : first.Settable()) {
                const float saved = first.parameter(i);
                const float restored = second.parameter(i);
                // A switch may keep the value that it was given and restore the one that it means: what it
                // shows tells whether something was lost.
                if (std::fabs(saved - restored) >= 1e-3f &&
                    first.Text(effGetParamDisplay, i) != second.Text(effGetParamDisplay, i))
                    report.Fault("parameter {} was {} when its state was saved, and {} after it was restored",
                                 i, saved, restored);
            }
            if (!programOnly && second.Ask(effGetProgram) != first.Ask(effGetProgram))
                report.Fault("the selected program is not restored");
        }
    }
}
const Check kState{"state", 3, 30, kNeedsState, "what one instance saves, another one restores", State};

void DamagedState(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    const std::vector<char> bank = effect.SaveState(false);
    const std::vector<char> program = effect.SaveState(true);
    if (bank.empty() || program.empty()) return; // which the check of states tells
    std::mt19937 random(subject.seed());
    for (int round = 0; round < 1000; ++round) {
        const bool programOnly = round % 2 == 1;
        const std::vector<char> bytes = Damaged(programOnly ? program : bank, round / 2, random);
        report.Trying("restoring a damaged {} of {} bytes, round {} of seed {}", NameOf(programOnly),
                      bytes.size(), round, subject.seed());
        effect.RestoreState(bytes, programOnly);
        for (std::int32_t i = 0; i < effect->numParams; ++i) {
            effect.parameter(i);
            effect.Text(effGetParamDisplay, i);
        }
        effect.Text(effGetProgramName);
        PlayFinite(effect, report, "after a damaged state", 6);
    }
    report.Trying("restoring the good state after all the damaged ones");
    effect.RestoreState(bank, false);
    if (effect.SaveState(false).size() != bank.size())
        report.Remark("its state has another size after damaged ones were restored");
    PlayFinite(effect, report, "after its good state was restored");
    effect.Off();
}
const Check kDamagedState{
    "damaged-state", 9, 90, kNeedsState, "saved states that were cut, damaged or made up", DamagedState};

} // namespace
} // namespace vocafade::validate
