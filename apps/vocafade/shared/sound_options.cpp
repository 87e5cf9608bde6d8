// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/sound_options.h"

#include "apps/vocafade/shared/failures.h"

#include <algorithm>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

/// What the command line asks of the parameters, checked against the plug-in.
std::vector<Assignment> ResolveAssignments(host::Effect& effect, const SoundOptions& options) {
    std::vector<Assignment> assignments;
    const bool ours = effect.uniqueId() == kVocafadeId;
    const auto add = [&](std::int32_t index, const std::optional<double>& value, const char* option) {
        if (!value) return;
        if (!ours)
            throw UsageError(fmt::format("{} is for the Vocafade plug-in; use --set NAME=VALUE", option));
        assignments.push_back(AssignDisplay(index, *value, fmt::format("{} {:g}", option, *value)));
    };
    add(kParameterLoFreq, options.loFreq, "--lofreq");
    add(kParameterHiFreq, options.hiFreq, "--hifreq");
    add(kParameterPosition, options.position, "--position");
    add(kParameterInput, options.inputLevel, "--input");
    add(kParameterOutput, options.outputLevel, "--output");
    for (const std::string& text : options.set)
        assignments.push_back(ParseAssignment(effect, text));
    add(kParameterOnOff, options.dry ? std::optional(0.0) : std::nullopt, "--dry");
    return assignments;
}

} // namespace

void AddSoundOptions(CLI::App& app, SoundOptions& options) {
    const auto number = [&](const char* name, std::optional<double>& value, const char* unit,
                            const char* help, std::int32_t index) {
        const std::string initial = LimitText(ShownRangeOf(index).initial);
        app.add_option(name, value, fmt::format("{}, {} (default {})", help, RangeWords(index), initial))
            ->type_name(unit)
            ->group("Sound");
    };
    number("--lofreq", options.loFreq, "HZ", "lower limit of the voice's band", kParameterLoFreq);
    number("--hifreq", options.hiFreq, "HZ", "upper limit of the voice's band", kParameterHiFreq);
    number("--position", options.position, "STEP", "place to empty; 64 is the middle", kParameterPosition);
    number("--input", options.inputLevel, "DB", "input level", kParameterInput);
    number("--output", options.outputLevel, "DB", "output level", kParameterOutput);
    app.add_option(
           "--set", options.set,
           "any parameter by its name, in the unit that it shows; may be repeated (see --list-parameters)")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false) // what follows the value is a song
        ->group("Sound");
    app.add_option("--program", options.program,
                   "start from the saved program N, 1 to 64 (of --bank, or of the user's saved bank)")
        ->type_name("N")
        ->group("Sound");
    app.add_option("--bank", options.bank, "start from a bank or program file (.fxb, .fxp)")
        ->type_name("FILE")
        ->group("Sound");
    app.add_flag("--dry", options.dry, "ON/OFF off: the sound passes through as it is")->group("Sound");
}

void AddPluginOption(CLI::App& app, SoundOptions& options, const char* group) {
    app.add_option("--plugin", options.plugin, "the plug-in to use: Vocafade.so or a bundle folder")
        ->type_name("FILE")
        ->group(group);
}

SoundSettings ResolveSound(host::Effect& effect, const SoundOptions& options) {
    SoundSettings settings;
    settings.assignments = ResolveAssignments(effect, options);
    if (options.program) {
        const int programs = effect.numPrograms();
        if (*options.program < 1 || *options.program > programs)
            throw UsageError(fmt::format("--program {} is out of range: it goes from 1 to {}",
                                         *options.program, programs));
        settings.program = *options.program - 1;
    }
    if (!options.bank.empty()) settings.bank = host::ReadBankFile(options.bank);
    return settings;
}

void SetUp(host::Effect& effect, const SoundSettings& settings) {
    if (settings.bank) ApplyBankFile(effect, *settings.bank);
    if (settings.program) effect.setProgram(*settings.program);
    const bool ours = effect.uniqueId() == kVocafadeId;
    if (ours && !settings.bank && !settings.program) Apply(effect, DefaultAssignments());
    Apply(effect, settings.assignments);
}

bool IsOff(host::Effect& effect) {
    return effect.uniqueId() == kVocafadeId && static_cast<int>(effect.parameter(kParameterOnOff)) == 0;
}

std::int64_t LatencyOf(host::Effect& effect) {
    if (effect.uniqueId() == kVocafadeId) return kVocafadeLatency;
    return std::max<std::int64_t>(0, effect.initialDelay());
}

} // namespace vocafade::command
