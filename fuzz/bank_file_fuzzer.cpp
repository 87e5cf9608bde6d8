// SPDX-License-Identifier: MIT
// Any bytes as the bank or program file that a host loads (`--bank`): its chunk or values go to the effect, and then a
// host's usual questions.
#include "effect/program.h"
#include "fuzz/support.h"
#include "host/bank_file.h"
#include "host/host_error.h"
#include "tests/support/temp_folder.h"

#include <array>

using namespace vocafade;

namespace {

constexpr std::int32_t kFrames = 1024;

/// One plug-in for the whole run: what one file leaves in it the next one meets.
host::Effect& Plugin() {
    static host::Effect* effect = [] {
        test::SetVariable(test::kConfigurationVariable, "/nonexistent"); // without the user's own bank
        auto* made = new host::Effect(BARE_PLUGIN);
        made->Configure(44100.0, kFrames);
        made->Start();
        return made;
    }();
    return *effect;
}

void CheckValues(const host::BankFile& file) {
    const auto* programs = std::get_if<std::vector<host::ProgramValues>>(&file.content);
    if (programs == nullptr) return;
    for (const host::ProgramValues& program : *programs) {
        fuzz::Require(program.name.size() <= 27, "names end in their field");
        for (const float value : program.values)
            fuzz::Require(value >= 0.0f && value <= 1.0f, "values are normalised");
    }
}

void AskEverything(host::Effect& effect) {
    fuzz::Require(effect.program() >= 0 && effect.program() < effect.numPrograms(), "a program is in use");
    for (std::int32_t i = 0; i < effect.numParameters(); ++i) {
        effect.parameter(i);
        fuzz::Require(!effect.parameterDisplay(i).empty(), "every value is shown");
    }
    for (std::int32_t i = 0; i < effect.numPrograms(); ++i)
        fuzz::Require(effect.programNameAt(i).has_value(), "every program has a name");
    for (const bool programOnly : {false, true}) {
        const std::vector<std::byte> chunk = effect.chunk(programOnly);
        fuzz::Require(chunk.size() == (programOnly ? sizeof(AVocafadeProgram) : sizeof(ProgramSet)),
                      "chunks keep their size");
        effect.setChunk(chunk, programOnly);
        fuzz::Require(effect.chunk(programOnly) == chunk, "chunks come back");
    }
}

void Process(host::Effect& effect) {
    std::array<float, kFrames> in{}, left{}, right{};
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = static_cast<float>(static_cast<int>(i * 37 % 64) - 32) / 64.0f;
    float* inputs[] = {in.data(), in.data()};
    float* outputs[] = {left.data(), right.data()};
    effect.Process(inputs, outputs, kFrames);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    host::Effect& effect = Plugin();
    effect.setProgram(static_cast<std::int32_t>(size % 64)); // which a program file goes to
    try {
        const host::BankFile file = host::ParseBankFile(std::as_bytes(std::span(data, size)));
        CheckValues(file);
        host::ApplyBankFile(effect, file);
    } catch (const host::HostError&) {
        return 0;
    }
    AskEverything(effect);
    Process(effect);
    return 0;
}
