// SPDX-License-Identifier: MIT
// Any bytes as the bank or program file that a host loads (`--bank`), given to the effect.
#include "fuzz/support.h"
#include "host/bank_file.h"
#include "host/host_error.h"

using namespace vocafade;

namespace {

/// One plug-in for the whole run: what one file leaves in it the next one meets.
host::Effect& Plugin() {
    static host::Effect* effect = [] {
        // Without the user's own bank. NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
        ::setenv("XDG_CONFIG_HOME", fuzz::MakeFolder().c_str(), 1);
        return new host::Effect(BARE_PLUGIN);
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    host::Effect& effect = Plugin();
    try {
        const host::BankFile file = host::ParseBankFile(std::as_bytes(std::span(data, size)));
        CheckValues(file);
        host::ApplyBankFile(effect, file);
    } catch (const host::HostError&) {
        return 0;
    }
    fuzz::Require(effect.program() >= 0 && effect.program() < effect.numPrograms(), "a program is in use");
    for (std::int32_t i = 0; i < effect.numParameters(); ++i)
        fuzz::Require(!effect.parameterDisplay(i).empty(), "every value is shown");
    return 0;
}
