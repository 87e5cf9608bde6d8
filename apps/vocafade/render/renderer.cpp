// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/renderer.h"

#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/render/audio_output.h"
#include "apps/vocafade/render/file_chunks.h"
#include "apps/vocafade/render/stream.h"
#include "apps/vocafade/shared/audio_input.h"
#include "apps/vocafade/shared/failures.h"

#include <algorithm>
#include <chrono>

namespace vocafade::command {
namespace {

/// The effect's parameter counts as on by its whole-number part, as the engine's switch takes it.
bool IsOff(host::Effect& effect) {
    return effect.uniqueId() == kVocafadeId && static_cast<int>(effect.parameter(kParameterOnOff)) == 0;
}

/// Samples by which what comes out lies behind what went in.
std::int64_t LatencyOf(host::Effect& effect) {
    if (effect.uniqueId() == kVocafadeId) return IsOff(effect) ? 0 : kVocafadeLatency;
    return std::max<std::int64_t>(0, effect.initialDelay());
}

} // namespace

void SetUp(host::Effect& effect, const RenderSettings& settings) {
    if (settings.bank) ApplyBankFile(effect, *settings.bank);
    if (settings.program) effect.setProgram(*settings.program);
    const bool ours = effect.uniqueId() == kVocafadeId;
    if (ours && !settings.bank && !settings.program) Apply(effect, DefaultAssignments());
    Apply(effect, settings.assignments);
}

RenderReport Render(const RenderJob& job, const RenderSettings& settings,
                    const std::function<void(double)>& progress) {
    const auto begin = std::chrono::steady_clock::now();
    AudioInput input(job.input);
    const std::string ending = settings.format.empty() ? EndingOf(job.output) : settings.format;
    const int format = ChooseFormat(input.info(), EndingOf(job.input), ending, input.frames());
    host::Effect effect(settings.plugin);
    if (effect.numInputs() < 2 || effect.numOutputs() < 2) throw Failure("the plug-in is not stereo");
    effect.Configure(input.info().samplerate, settings.block,
                     settings.doublePrecision ? host::Precision::float64 : host::Precision::float32);
    effect.Start();
    SetUp(effect, settings);
    RenderReport report;
    report.passedThrough = IsOff(effect);
    if (effect.uniqueId() == kVocafadeId) report.outputLevel = ShownNumber(effect, kParameterOutput);
    const FileChunks chunks = ReadFileChunks(job.input);
    AudioOutput output(job.output, format, input, chunks);
    const auto carry = settings.doublePrecision ? CarryThrough<double> : CarryThrough<float>;
    const StreamReport stream =
        carry(effect, input, output, {settings.block, settings.keepLatency, LatencyOf(effect)}, progress);
    if (stream.frames == 0) throw Failure("holds no sound that can be read");
    report.songSeconds = static_cast<double>(stream.frames) / input.info().samplerate;
    report.oneInBoth = stream.oneInBoth;
    output.Finish();
    report.format = FormatText(output.format());
    report.announcedSeconds = report.songSeconds / chunks.soundShare;
    report.clipped = output.clipped();
    report.workSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return report;
}

} // namespace vocafade::command
