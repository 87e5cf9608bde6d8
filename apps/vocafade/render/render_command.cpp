// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/render_command.h"

#include "apps/vocafade/render/listing.h"
#include "apps/vocafade/render/options.h"
#include "apps/vocafade/render/renderer.h"
#include "apps/vocafade/render/reporter.h"
#include "apps/vocafade/render/run_songs.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/plugin_finder.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/text.h"
#include "host/host_error.h"

#include <fmt/format.h>
#include <memory>
#include <optional>
#include <system_error>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

RenderSettings MakeSettings(host::Effect& effect, const RenderOptions& options, const fs::path& plugin) {
    RenderSettings settings;
    static_cast<SoundSettings&>(settings) = ResolveSound(effect, options);
    settings.plugin = plugin;
    settings.format = LowerCase(options.format);
    settings.block = options.block;
    settings.doublePrecision = options.doublePrecision;
    settings.keepLatency = options.keepLatency;
    return settings;
}

/// Tries the set-up once, so that what is wrong with it is said once and not for every song.
void CheckSetUp(host::Effect& effect, const RenderSettings& settings) {
    effect.Configure(44100.0, settings.block,
                     settings.doublePrecision ? host::Precision::float64 : host::Precision::float32);
    effect.Start();
    SetUp(effect, settings);
}

void WarnOfBand(host::Effect& effect, Reporter& reporter) {
    if (effect.uniqueId() != kVocafadeId) return;
    if (effect.parameter(kParameterLoFreq) > effect.parameter(kParameterHiFreq))
        reporter.Warning(fmt::format("LoFreq ({} Hz) is above HiFreq ({} Hz), so nothing will be removed",
                                     effect.parameterDisplay(kParameterLoFreq),
                                     effect.parameterDisplay(kParameterHiFreq)));
}

std::vector<double> Weights(const std::vector<RenderJob>& jobs) {
    std::vector<double> weights;
    for (const RenderJob& job : jobs) {
        std::error_code error;
        const auto size = fs::file_size(job.input, error);
        weights.push_back(error ? 0.0 : static_cast<double>(size));
    }
    return weights;
}

int List(host::Effect& effect, const RenderOptions& options, const RenderSettings& settings) {
    if (settings.bank) ApplyBankFile(effect, *settings.bank);
    if (options.listPrograms) PrintText(ProgramListing(effect));
    if (options.listParameters) {
        SetUp(effect, settings);
        PrintText(ParameterListing(effect));
    }
    return kExitFine;
}

} // namespace

int RunRender(int argumentCount, char** arguments) {
    const ParsedOptions parsed = ParseRenderOptions(argumentCount, arguments);
    if (parsed.answer) {
        PrintText(*parsed.answer);
        return kExitFine;
    }
    const RenderOptions& options = parsed.options;
    std::optional<LibrarySilence> silence; // decoders talk of damage on the standard error
    if (options.quiet) silence.emplace();
    const fs::path plugin = FindPlugin(options.plugin);
    auto effect = std::make_unique<host::Effect>(plugin);
    const RenderSettings settings = MakeSettings(*effect, options, plugin);
    if (options.listPrograms || options.listParameters) return List(*effect, options, settings);
    CheckSetUp(*effect, settings);
    const RenderPlan plan = PlanRun(options);
    WatchForInterruption();
    Reporter reporter(options.quiet, Weights(plan.songs));
    WarnOfBand(*effect, reporter);
    effect.reset();
    return RunSongs(plan, settings, options, reporter);
}

} // namespace vocafade::command
